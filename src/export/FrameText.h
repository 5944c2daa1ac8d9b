// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frames as rows of CSV and as lines of JSON: what `decode` prints. Each writer belongs to one
// output and is called for one frame at a time, while that frame is the instrument's current one.
#pragma once

#include "export/Json.h"
#include "instrument/FrameChecks.h"
#include "products/LiveInstrument.h"

#include <string>
#include <vector>

namespace qor {

/// How values are shown.
enum class ValueView { Calibrated, RawCounts, HexCounts };

/// "2005-05-03T14:23:05.250", the local time of a stamp; nothing when it is not known.
void WriteTime(COutput& output, const FrameTime& time);

/// The same as a JSON text; null when it is not known.
void WriteTimeValue(CJsonWriter& json, COutput& output, const FrameTime& time);

/// The CSV table of one instrument: a header row, then a row a frame with a column for every sensor
/// that has a value.
class CFrameCsv {
  public:
    CFrameCsv(COutput& output, const CInstrument& instrument, ValueView view);
    /// The header row and a frame's row, without their line end: the caller may add columns.
    void WriteHeader();
    void WriteFrame(const CLiveInstrument& instrument);
    void EndRow() { Out.Text("\r\n"); }

  private:
    struct Column {
        const CSensor* sensor;
        bool text;
    };
    COutput& Out;
    ValueView View;
    std::vector<Column> Columns;
    std::string Cell;
};

/// One JSON object a frame.
class CFrameJson {
  public:
    CFrameJson(COutput& output, std::string file, ValueView view)
        : Out(output), Json(output), File(std::move(file)), View(view) {}

    /// Opens the object and writes every field but `derived`.
    void BeginFrame(const CLiveInstrument& instrument, const FrameCheckResult& checks);
    void EndFrame();
    /// For the fields that the caller adds between the two.
    CJsonWriter& Writer() { return Json; }

  private:
    void WriteValues(const CLiveInstrument& instrument);

    COutput& Out;
    CJsonWriter Json;
    std::string File;
    ValueView View;
    std::string Text;
    std::vector<std::pair<std::int32_t, ConversionStatus>> Failed;
};

/// A text as an RFC 4180 field: in quotes where it needs them.
void WriteCsvField(COutput& output, std::string_view text);

} // namespace qor
