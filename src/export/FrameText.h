// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frames as rows of CSV and as lines of JSON. Each writer belongs to one output and is called for
// one frame at a time, while that frame is the instrument's current one.
#pragma once

#include "export/ColumnHeads.h"
#include "export/Json.h"
#include "export/QcFlags.h"
#include "instrument/FrameChecks.h"
#include "products/DerivedRows.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qor {

/// How values are shown.
enum class ValueView { Calibrated, RawCounts, HexCounts };

/// What a frame's row or line shows, and how.
struct FrameStyle {
    ValueView view = ValueView::Calibrated;
    bool derived = false;     ///< with the products computed from frames
    bool flags = false;       ///< rows have columns for what the checks found; lines always do
    bool qc = false;          ///< with what the checks of values found
    bool files = false;       ///< rows name their log
    bool simpleNames = false; ///< of columns: "ED_412.5", without units
    bool described = false;   ///< a file beside the table says what its columns are
    int digits = 0;           ///< significant ones of calibrated values and products; 0: all
    std::optional<int> utcOffset =
        {};                 ///< minutes that the log's times are ahead of UTC, which is shown
    bool degrees = false;   ///< positions in degrees too, beside their texts
    bool safeTexts = false; ///< texts in rows are none that a spreadsheet would compute
};

/// A sensor's value in the current frame: a number, a text, or the status that says why there is
/// none.
struct ShownValue {
    ConversionStatus status = ConversionStatus::Good;
    bool isText = false;
    double number = 0.0;
};
/// `text` receives the value when it is a text; its memory is used again.
ShownValue ValueOf(const CLiveInstrument& instrument, const CSensor& sensor, ValueView view,
                   std::string& text);
/// The number that so many significant digits tell; all of them for 0.
double Rounded(double value, int digits);

/// What a check found; nothing where the instrument has nothing to check it by.
struct FrameFlag {
    std::string_view name;
    std::optional<bool> value;
};
std::array<FrameFlag, 3> FlagsOf(const FrameCheckResult& checks);

/// Seconds since 1970 of the shown calendar, the nearest double to the stamp's milliseconds;
/// `utcOffset` as for WriteTime. None when the time is not known.
std::optional<double> ShownSeconds(const FrameTime& time, std::optional<int> utcOffset);
/// "2005-05-03T14:23:05.250", the local time of a stamp; nothing when it is not known.
void WriteTime(COutput& output, const FrameTime& time);
/// With an offset the UTC of local times that are ahead by so many minutes, with a "Z".
void WriteTime(COutput& output, const FrameTime& time, std::optional<int> utcOffset);

/// The same as a JSON text; null when it is not known.
void WriteTimeValue(CJsonWriter& json, COutput& output, const FrameTime& time,
                    std::optional<int> utcOffset = {});

/// The CSV table of one instrument: a header row, then a row a frame with a column for every sensor
/// that has a value, then the derived rows.
class CFrameCsv {
  public:
    /// `file` is the path of the log.
    CFrameCsv(COutput& output, const CInstrument& instrument, const std::string& file,
              const FrameStyle& style);
    void WriteHeader(std::span<const DerivedRow> derived);
    /// `qc`: what the checks of values found; null where the style shows none.
    void WriteFrame(const CLiveInstrument& instrument, const FrameCheckResult& checks,
                    std::span<const DerivedRow> derived, const FrameQc* qc = nullptr);
    /// What the columns are, as JSON that describes the table in the file `url` to other programs.
    void WriteColumns(COutput& output, std::span<const DerivedRow> derived,
                      std::string_view url) const;

  private:
    std::vector<ColumnHead> Heads(std::span<const DerivedRow> derived) const;
    void AddQcHeads(std::vector<ColumnHead>& heads, std::span<const DerivedRow> derived) const;
    struct Column {
        const CSensor* sensor;
        bool text;
        bool degrees; ///< followed by a column of them
    };
    void WriteSensors(const CLiveInstrument& instrument);
    void WriteQc(const FrameQc& qc);
    void WriteValue(const CLiveInstrument& instrument, const Column& column);

    COutput& Out;
    std::string File;
    FrameStyle Style;
    std::vector<Column> Columns;
    std::string Cell;
};

/// One JSON object a frame.
class CFrameJson {
  public:
    CFrameJson(COutput& output, std::string file, const FrameStyle& style)
        : Out(output), Json(output), File(std::move(file)), Style(style) {}

    /// `offset`: in the log, where that is not the place in the stream that the frame was cut from.
    void WriteFrame(const CLiveInstrument& instrument, const FrameCheckResult& checks,
                    std::span<const DerivedRow> derived, std::optional<std::uint64_t> offset = {},
                    const FrameQc* qc = nullptr);

  private:
    void WriteValues(const CLiveInstrument& instrument);
    void WriteDegrees(const CLiveInstrument& instrument);
    void WriteDerived(std::span<const DerivedRow> derived);
    void WriteQc(const FrameQc& qc, std::span<const DerivedRow> derived);

    COutput& Out;
    CJsonWriter Json;
    std::string File;
    FrameStyle Style;
    std::string Text;
    std::vector<std::pair<std::int32_t, ConversionStatus>> Failed;
};

} // namespace qor
