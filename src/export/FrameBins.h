// SPDX-License-Identifier: GPL-3.0-or-later
//
// One instrument's frames of a log gathered in bins: how many there are, and of each number the
// mean, the standard deviation and the count. Bins that no frame came to are not there. Pure; one
// thread.
#pragma once

#include "export/FrameVariables.h"

#include <map>

namespace qor {

/// Mean and deviation of numbers that come one by one, without the loss of digits that sums of
/// squares have.
class CBinNumbers {
  public:
    void Add(double value) {
        ++Numbers;
        const double before = value - Average;
        Average += before / static_cast<double>(Numbers);
        Squares += before * (value - Average);
    }
    std::uint64_t Count() const { return Numbers; }
    std::optional<double> Mean() const;
    /// Of the sample (n - 1); none of fewer than two.
    std::optional<double> Deviation() const;

  private:
    std::uint64_t Numbers = 0;
    double Average = 0.0, Squares = 0.0;
};

/// What is averaged: a sensor's numbers, the degrees of its text, or a product.
struct BinColumn {
    FrameOrigin of = FrameOrigin::Sensors;
    const CSensor* sensor = nullptr; ///< null: a product
    std::size_t place = 0;           ///< of the sensor or product among theirs
};

struct FrameBin {
    std::uint64_t frames = 0;
    std::vector<CBinNumbers> columns = {};
};

class CFrameBins {
  public:
    /// Numbers that are kept at once, about a gigabyte: a day of seconds of five hundred sensors.
    static constexpr std::size_t MostNumbers = 45'000'000;

    /// Takes a log's instrument, which lives longer, and keeps at most so many numbers.
    CFrameBins(const BinSpan& span, const ExportedInstrument& instrument, bool degrees,
               std::size_t most = MostNumbers);

    const std::vector<BinColumn>& Columns() const { return What; }
    const std::vector<DerivedRow>& Products() const { return Rows; }
    const CLiveInstrument& Instrument() const { return Live; }

    /// False when there is no more room for a further bin; then nothing has changed. `utcOffset` as
    /// in TimeWindow.
    bool Take(const ExportedFrame& frame, std::optional<int> utcOffset);
    /// Frames that have no time, or no depth, and so no bin.
    std::uint64_t LeftOut() const { return Placeless; }
    /// By their numbers (BinSpan), in order.
    const std::map<double, FrameBin>& Bins() const { return Gathered; }

  private:
    const BinSpan Span;
    const std::size_t Most;
    const CLiveInstrument& Live;
    const std::vector<DerivedRow> Rows;
    std::vector<BinColumn> What;
    std::map<double, FrameBin> Gathered;
    std::uint64_t Placeless = 0;
    std::string Scratch;
};

} // namespace qor
