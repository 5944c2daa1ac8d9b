// SPDX-License-Identifier: GPL-3.0-or-later
//
// All frames of an instrument as columns in memory, by their layout: what other programs compute
// with. One thread at a time; who gets the columns owns them.
#pragma once

#include "export/FrameCells.h"

#include <array>

namespace qor {

class CFrameColumns {
  public:
    /// The values of a variable, frame by frame and in it channel by channel.
    struct Column {
        std::vector<double> numbers = {};
        std::string bytes = {};              ///< of texts of a width, each filled up with NULs
        std::vector<std::string> texts = {}; ///< of texts of any length
        std::vector<signed char> statuses = {};
    };

    CFrameColumns(FrameLayout layout, const FrameStyle& style, std::optional<int> utcOffset);

    /// So many frames will come, as far as is known.
    void Reserve(std::size_t frames);
    void Take(const ExportedFrame& frame) {
        TakePlain(frame);
        TakeValues(frame);
    }
    /// Of these the frame's time, count and checks, or only its values.
    void TakePlain(const ExportedFrame& frame);
    void TakeValues(const ExportedFrame& frame);
    /// After the last frame: the times of the first and the last one join the attributes.
    void Finish();

    const FrameLayout& Layout() const { return Shape; }
    std::size_t Frames() const { return Seconds.size(); }

    std::vector<double> Seconds; ///< see ShownSeconds
    std::vector<std::int32_t> Counts;
    std::array<std::vector<signed char>, 3> Flags;
    std::vector<Column> Columns; ///< one for each of the layout's variables

  private:
    void TakeChannels(const FrameVariable& variable, const CLiveInstrument& live, Column& column);

    FrameLayout Shape;
    const FrameStyle Style;
    const std::optional<int> UtcOffset;
    std::string Cell;
};

} // namespace qor
