// SPDX-License-Identifier: GPL-3.0-or-later
//
// One received frame. It is a record for its owner alone; its memory is used again for the frame
// that comes after it.
#pragma once

#include "base/Bytes.h"
#include "platform/Clock.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace qor {

/// An attached instrument as its resource keeps it and as every frame of it carries it.
struct CFrameInfo {
    std::string instrumentName;
    std::string syncHeader;
    std::string terminator;
    std::string typeName; ///< "BSI", "HOBILABS_HS2_D", ...; empty for a generic instrument
    std::array<std::uint8_t, 12> syncBytes{};
    std::uint8_t syncByteCount = 0;
    bool noSync = false; ///< its telemetry carries no sync header
    std::int32_t frameSize = 0;
    std::uint32_t frameCounter = 0; ///< frames cut for it, this one included
    FrameTime time;                 ///< arrival of the frame's last byte
    std::uint32_t identity = 0;     ///< process-wide number of this attachment; 0 = none
};

class CFrameData {
  public:
    CFrameInfo Info;
    std::vector<std::uint8_t> Bytes;
    std::uint64_t StreamOffset =
        0;              ///< where the first byte stands in the resource's stream or file
    bool Error = false; ///< unusable: no bytes or the wrong length

    /// The number of bytes when the instrument has a terminator, otherwise the declared frame size.
    std::size_t Length() const {
        return Info.terminator.empty() ? static_cast<std::size_t>(Info.frameSize) : Bytes.size();
    }
    ByteSpan Span() const { return Bytes; }
    std::string_view Text() const { return AsText(Bytes); }

    /// Takes the bytes and the instrument's record, reusing this record's memory.
    void Assign(const CFrameInfo& info, ByteSpan bytes, std::uint64_t streamOffset);
    /// Exchanges the two records without copying.
    void Exchange(CFrameData& other);
};

} // namespace qor
