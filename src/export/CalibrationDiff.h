// SPDX-License-Identifier: GPL-3.0-or-later
//
// What differs between two definitions of an instrument, sensor by sensor, and by how much the
// values of played frames differ with them. Who has the definitions loaded, and plays a log, feeds
// it; it prints itself as text and as JSON. One thread; the definitions live longer.
#pragma once

#include "export/Json.h"
#include "instrument/ConversionPlan.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// A field as it is in the one definition and in the other.
struct FieldChange {
    std::string_view field;
    std::string before, after;
};

/// A sensor that is not the same in both; null where it is not there.
struct SensorChange {
    std::string_view kind; ///< "added", "gone", "changed", "moved" (nothing but its place)
    const CSensor *before = nullptr, *after = nullptr;
    std::vector<FieldChange> fields;
};

struct CalibrationDiff {
    std::vector<FieldChange> definition;
    std::vector<SensorChange> sensors; ///< in the order of the first definition, then those added

    bool Alike() const { return definition.empty() && sensors.empty(); }
};

/// The sensors of both that are one: of one type and id (without case), the first with the first.
struct SensorPair {
    const CSensor *before = nullptr, *after = nullptr;
};
std::vector<SensorPair> PairSensors(const CInstrument& before, const CInstrument& after);

/// Comments and line numbers are no difference.
CalibrationDiff CompareCalibrations(const CInstrument& before, const CInstrument& after);

/// The relative changes of one sensor's values, in bounded memory.
class CRelativeChanges {
  public:
    void Take(double before, double after);

    std::uint64_t Count() const { return Taken; }
    /// Of the changes' sizes; empty when there was none that is relative to something.
    std::optional<double> Largest() const { return Most; }
    /// Exact up to `MostKept` values, then of every second, fourth and so on.
    std::optional<double> Median() const;

    static constexpr std::size_t MostKept = 4096;

  private:
    std::uint64_t Taken = 0, Stride = 1;
    std::optional<double> Most;
    std::vector<double> Kept;
};

class CValueChanges {
  public:
    CValueChanges(const CInstrument& before, const CInstrument& after);
    CValueChanges(const CValueChanges&) = delete;
    CValueChanges& operator=(const CValueChanges&) = delete;

    /// A frame with its values by the first definition.
    void Take(ByteSpan frame, bool immersed, const FrameValues& before);

    struct Sensor {
        SensorPair pair;
        CRelativeChanges changes;
        std::uint64_t lost = 0, gained = 0; ///< values with the one definition only
    };
    const std::vector<Sensor>& Sensors() const { return Numbers; } ///< those that have numbers
    std::uint64_t Frames() const { return FrameCount; }

  private:
    CConversionPlan Plan;
    FrameValues After;
    std::vector<Sensor> Numbers;
    std::uint64_t FrameCount = 0;
};

/// What was compared, for both forms of print; `values` is null when no log was played.
struct DiffReport {
    std::string before, after, log; ///< paths
    const CalibrationDiff& diff;
    const CValueChanges* values = nullptr;
};
void WriteDiffText(COutput& output, const DiffReport& report);
/// One line.
void WriteDiffJson(COutput& output, const DiffReport& report);

} // namespace qor
