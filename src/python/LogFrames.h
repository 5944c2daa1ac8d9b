// SPDX-License-Identifier: GPL-3.0-or-later
//
// The frames of one instrument of a raw log: all at once as columns, or first where they stand and
// then, block by block, what is in them. And the verdict over a log. Plain functions, any thread;
// an index is const once it is made and shared between threads.
#pragma once

#include "export/FrameColumns.h"
#include "python/LogReading.h"

namespace qor {

/// Plays the log once.
ReadFault ReadColumns(const LogCall& call, const std::string& instrument, bool derived,
                      std::unique_ptr<CFrameColumns>& columns);

/// As a line of JSON, without its end.
ReadFault VerdictOf(const LogCall& call, std::string& json);

/// Where the frames of an instrument stand in a log. A value depends on its frame alone, so a block
/// of frames is read and converted without playing what stands before it; derived products, which
/// follow the cast, are not to be had so.
class CFrameIndex {
  public:
    /// Plays the log once.
    ReadFault Make(const LogCall& call, const std::string& instrument);

    /// Times, counts and checks of all frames; no values.
    const CFrameColumns& Plain() const { return *PlainColumns; }
    std::size_t Frames() const { return PlainColumns->Frames(); }
    /// The values of so many frames.
    ReadFault Read(std::size_t first, std::size_t count,
                   std::unique_ptr<CFrameColumns>& columns) const;

  private:
    struct Place {
        std::uint64_t offset;
        std::uint32_t size;
    };

    std::string Path;
    std::unique_ptr<CLogReading> Log; ///< has the definition; its file is closed at the end
    const CQorViewIns* Instrument = nullptr;
    std::vector<Place> Places;
    std::unique_ptr<CFrameColumns> PlainColumns;
};

} // namespace qor
