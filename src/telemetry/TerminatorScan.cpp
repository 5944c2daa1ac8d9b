// SPDX-License-Identifier: GPL-3.0-or-later
//
// Finding a terminator: memory search for its first byte, then byte by byte.
#include "telemetry/TerminatorScan.h"

#include <cstring>

namespace qor {

bool CTerminatorScan::Find(ByteSpan frame, std::string_view terminator) {
    while (!Done && Position < frame.size()) {
        if (Matched == 0) {
            const void* first =
                std::memchr(frame.data() + Position, terminator[0], frame.size() - Position);
            if (first == nullptr) {
                Position = frame.size();
                return false;
            }
            Position =
                static_cast<std::size_t>(static_cast<const std::uint8_t*>(first) - frame.data());
            if (BeginsWith(frame.subspan(Position), terminator)) { // the usual case at once
                Position += terminator.size();
                Done = true;
                break;
            }
        }
        bool agrees = frame[Position] == static_cast<std::uint8_t>(terminator[Matched]);
        Matched = agrees ? Matched + 1 : 0;
        ++Position;
        Done = Matched == terminator.size();
    }
    return Done;
}

} // namespace qor
