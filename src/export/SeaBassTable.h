// SPDX-License-Identifier: GPL-3.0-or-later
//
// One instrument's frames as a SeaBASS file. Its header says what only the last frame tells, so
// rows go into a file of their own beside, and behind the header at the end. Used by FrameSeaBass,
// on its thread.
#pragma once

#include "export/LogSource.h"
#include "export/SeaBassHeader.h"
#include "products/Position.h"

namespace qor {

class CSeaBassTable {
  public:
    /// `path` is that of the file, which `out` writes.
    CSeaBassTable(std::string path, COutput& out, const ExportSettings& settings);

    /// Not good when the log cannot go on in this file.
    OutputResult BeginLog(const LogSource& source, const ExportedInstrument& instrument);
    void Write(const ExportedFrame& frame);
    bool Good() const { return !IsLocal && Rows.Good(); }
    /// Writes header and rows into the file; `unknown` gets the header's keys that nobody said.
    bool Finish(std::vector<std::string>& unknown);

  private:
    struct Column {
        std::string field;
        std::string_view units;
        int sensor = -1, product = -1; ///< index of one of them
        bool degrees = false;          ///< a coordinate that is sent as a text
        bool operator==(const Column&) const = default;
    };
    std::vector<Column> ColumnsOf(const ExportedInstrument& instrument,
                                  std::vector<std::string>& lacking) const;
    std::optional<Column> ColumnOf(const CSensor& sensor, bool immersed) const;
    void RefuseLocalTimes(const std::string& log);
    void WriteTimeOf(const FrameTime& time);
    std::optional<double> ValueOf(const ExportedFrame& frame, const Column& column) const;
    void Extend(const Column& column, double value);
    std::string Header(std::vector<std::string>& unknown) const;
    bool CopyRows();

    const std::string Path;
    COutput& Out;
    const ExportSettings Settings;
    COutput Rows;
    LogSource Source;
    std::vector<std::string> Logs, Calibrations;
    std::vector<Column> Columns;
    std::vector<std::string> Lacking; ///< sensors and products that are not in the file, and why
    bool Begun = false;
    bool IsLocal = false;                    ///< its times cannot be told as GMT, which is reported
    std::optional<std::int64_t> First, Last; ///< seconds of UTC
    std::optional<GeoPosition> Least, Most;
};

} // namespace qor
