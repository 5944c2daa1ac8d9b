// SPDX-License-Identifier: GPL-3.0-or-later
//
// The bytes of a definition file before they are lines: a UTF-8 byte order mark in front is
// skipped, and 0x1A bytes at the very end, which old editors leave there, are dropped. Stands
// between the definition reader and its lines; pieces of any size, no copy of them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace qor {

/// How a definition's characters are written, as far as its first bytes tell.
enum class TextEncoding : std::uint8_t {
    Bytes,      ///< a byte a character, or UTF-8
    MarkedUtf8, ///< UTF-8 behind a byte order mark
    Utf16,      ///< nothing that the reader understands
};
inline constexpr std::string_view Utf8Mark = "\xEF\xBB\xBF";
TextEncoding EncodingOf(std::string_view text);

class CDefinitionBytes {
  public:
    /// Passes on what counts of the piece: take(text) may be called several times, and ends the
    /// matter with false, which Feed returns.
    template <class Take> bool Feed(std::string_view piece, Take&& take) {
        if (Begun)
            return Pass(piece, take);
        const std::size_t wanted = EncodingBytes - Beginning.size();
        Beginning += piece.substr(0, wanted);
        if (Beginning.size() < EncodingBytes)
            return true;
        return Begin(take) && Pass(piece.substr(std::min(wanted, piece.size())), take);
    }

    /// Passes on what was held back of a text that has ended.
    template <class Take> bool Finish(Take&& take) { return Begun || Begin(take); }

    /// Known once the text has begun or ended.
    TextEncoding Encoding() const { return Seen; }

  private:
    static constexpr std::size_t EncodingBytes = 4;
    static constexpr char EndMark = '\x1A';

    template <class Take> bool Begin(Take&& take) {
        Begun = true;
        Seen = EncodingOf(Beginning);
        const std::size_t skipped = Seen == TextEncoding::MarkedUtf8 ? Utf8Mark.size() : 0;
        return Pass(std::string_view(Beginning).substr(skipped), take);
    }

    template <class Take> bool Pass(std::string_view piece, Take&& take) {
        const std::size_t last = piece.find_last_not_of(EndMark);
        const std::size_t text = last == std::string_view::npos ? 0 : last + 1;
        if (text > 0) { // what was held back did not end the file
            const std::string held(std::min<std::size_t>(EndMarks, 4096), EndMark);
            for (; EndMarks > 0; EndMarks -= std::min<std::uint64_t>(EndMarks, held.size()))
                if (!take(std::string_view(held).substr(0, EndMarks)))
                    return false;
            if (!take(piece.substr(0, text)))
                return false;
        }
        EndMarks += piece.size() - text;
        return true;
    }

    std::string Beginning; ///< the first bytes, until there are enough of them
    TextEncoding Seen = TextEncoding::Bytes;
    bool Begun = false;
    std::uint64_t EndMarks = 0; ///< held back: the file may end behind them
};

} // namespace qor
