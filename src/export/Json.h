// SPDX-License-Identifier: GPL-3.0-or-later
//
// JSON Lines: one object a line, written as it is built. The writer places the commas; the caller
// opens and closes. Own code because numbers must have the fewest digits and instrument texts are
// bytes that become code points.
#pragma once

#include "export/Output.h"

#include <optional>

namespace qor {

class CJsonWriter {
  public:
    explicit CJsonWriter(COutput& output) : Out(output) {}

    void BeginObject() { Open('{'); }
    void EndObject() { Close('}'); }
    void BeginArray() { Open('['); }
    void EndArray() { Close(']'); }
    /// Ends the line of a finished object.
    void EndLine();

    /// The key of the next value; an ASCII literal.
    void Key(std::string_view name);
    /// The same of 8-bit text.
    void Name(std::string_view bytes);
    /// 8-bit text: each byte 0x00..0xFF becomes the code point U+0000..U+00FF.
    void Text(std::string_view bytes);
    /// A path: UTF-8 as it is when it is that, else as Text.
    void Path(std::string_view path);
    void Number(double value) { Separate(), Out.Number(value); }
    void Integer(std::int64_t value) { Separate(), Out.Integer(value); }
    void Bool(bool value) { Separate(), Out.Text(value ? "true" : "false"); }
    /// A number that was not counted is null.
    void CountOrNull(std::optional<std::uint64_t> count) {
        count ? Integer(static_cast<std::int64_t>(*count)) : Null();
    }
    void BoolOrNull(std::optional<bool> value) { value ? Bool(*value) : Null(); }
    void Null() { Separate(), Out.Text("null"); }
    /// A status code as "0x3000000e".
    void Code(std::uint32_t code);
    /// The caller wrote a value of its own behind a key.
    void ValueWritten() { NeedsComma = true; }
    /// A number that has to be finite, or null.
    void NumberOrNull(std::optional<double> value);

  private:
    void Open(char bracket);
    void Close(char bracket);
    void Separate();
    void Escaped(std::string_view bytes, bool utf8);

    COutput& Out;
    bool NeedsComma = false;
};

} // namespace qor
