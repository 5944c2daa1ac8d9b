// SPDX-License-Identifier: GPL-3.0-or-later
//
// Cuts the text of a definition file, which arrives in pieces of any size, into lines, and the
// lines into tokens. A line that ends in the piece it began in is never copied; of a longer one
// only what counts is kept, so a comment without end takes no memory. Knows nothing of sensors.
// Decided: a line ends in LF and the CRs before it, or in the CRs before the file's end; so a file
// reads the same on every system, also one whose line ends were translated twice.
#pragma once

#include "base/Text.h"

#include <string>
#include <string_view>

namespace qor {

class CDefinitionLines {
  public:
    /// Calls take(line) for every line that ends in this piece. The line comes without leading
    /// white space and comment, and is empty when nothing else stood in it. Stops with false when
    /// take returns false.
    template <class Take> bool Feed(std::string_view piece, Take&& take) {
        while (!piece.empty()) {
            const std::size_t end = piece.find('\n');
            const std::string_view part = piece.substr(0, end);
            if (end == std::string_view::npos) {
                Keep(part);
                return true;
            }
            piece.remove_prefix(end + 1);
            if (!(LineBegun ? EndLine(part, take) : take(Meaning(part))))
                return false;
        }
        return true;
    }

    /// Calls take for a last line that has no line end.
    template <class Take> bool Finish(Take&& take) { return !LineBegun || EndLine({}, take); }

  private:
    static std::string_view Meaning(std::string_view line) {
        line = TrimLeft(line);
        const std::size_t comment = line.find('#');
        return comment == std::string_view::npos ? WithoutLineEnd(line) : line.substr(0, comment);
    }

    static std::string_view WithoutLineEnd(std::string_view line) {
        while (line.ends_with('\r'))
            line.remove_suffix(1);
        return line;
    }

    void Keep(std::string_view part) {
        LineBegun = true;
        if (InComment)
            return;
        if (Kept.empty())
            part = TrimLeft(part);
        const std::size_t comment = part.find('#');
        InComment = comment != std::string_view::npos;
        Kept.append(part.substr(0, comment));
    }

    template <class Take> bool EndLine(std::string_view part, Take&& take) {
        constexpr std::size_t WorthKeeping = 65536;
        Keep(part);
        const bool goOn = take(InComment ? std::string_view(Kept) : WithoutLineEnd(Kept));
        Kept.clear();
        if (Kept.capacity() > WorthKeeping)
            Kept.shrink_to_fit();
        LineBegun = InComment = false;
        return goOn;
    }

    std::string Kept; ///< of a line that began in an earlier piece
    bool LineBegun = false;
    bool InComment = false;
};

/// Cuts the next token off the front of the text; empty when there is none left. Tokens are
/// separated by blanks and tabs.
inline std::string_view NextToken(std::string_view& text) {
    constexpr auto separates = [](char c) { return c == ' ' || c == '\t'; };
    const char* const end = text.data() + text.size();
    const char* first = text.data();
    while (first != end && separates(*first))
        ++first;
    const char* last = first;
    while (last != end && !separates(*last))
        ++last;
    text = {last, static_cast<std::size_t>(end - last)};
    return {first, static_cast<std::size_t>(last - first)};
}

} // namespace qor
