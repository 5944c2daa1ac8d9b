// SPDX-License-Identifier: GPL-3.0-or-later
//
// A definition or package as a form shows it before it is added: its name, what is in it, what
// keeps it from being used, and the speed that it asks for. Reads the file. No state.
#pragma once

#include <string>

namespace qor {

struct PickedFile {
    std::string path;
    std::string name;  ///< without its folder
    std::string text;  ///< "cast.sip: ctd, ed, lu", UTF-8
    std::string fault; ///< why nothing would come of it, as one sentence
    std::string note;  ///< what would be told when it is added
    std::string speed; ///< of a package; empty: it names none
};

PickedFile PickFile(const std::string& path);

} // namespace qor
