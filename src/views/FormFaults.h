// SPDX-License-Identifier: GPL-3.0-or-later
//
// What is wrong with the fields of a dialog, so that a face can say it beside each and open OK only
// when it would work. Plain values; the functions that find the faults stand with their forms.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qor {

class FormFaults {
  public:
    /// Notes what is wrong with a field; nothing when the text is empty, and only the first fault
    /// of a field.
    void Add(std::string_view field, std::string text) {
        if (!text.empty() && Of(field).empty())
            List.push_back({std::string(field), std::move(text)});
    }
    /// OK would work.
    bool Ok() const { return List.empty(); }
    /// What is wrong with a field, as one sentence, or nothing.
    std::string Of(std::string_view field) const {
        for (const Fault& fault : List)
            if (fault.field == field)
                return fault.text;
        return {};
    }

  private:
    struct Fault {
        std::string field;
        std::string text;
    };
    std::vector<Fault> List;
};

} // namespace qor
