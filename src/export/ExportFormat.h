// SPDX-License-Identifier: GPL-3.0-or-later
//
// The formats in which frames can be exported, as a table: a further one is a sink and a row. Faces
// offer what stands here.
#pragma once

#include "export/FrameSink.h"

#include <string_view>

namespace qor {

struct ExportFormat {
    std::string_view name;
    std::string_view extension; ///< of its files, with the dot; empty: any
    std::string_view help;
    bool derived; ///< shows derived rows
    bool counts;  ///< shows raw counts where it is asked for them
    bool tables;  ///< makes a file an instrument
    bool qc;      ///< shows what checks of values found
    std::unique_ptr<CFrameSink> (*make)(const ExportSettings& settings);
    /// The sink of means over bins; null: the format has none.
    std::unique_ptr<CFrameSink> (*makeBins)(const ExportSettings& settings);
};

std::span<const ExportFormat> ExportFormats();
/// The sink that the settings ask the format for, bins and checks of values included.
std::unique_ptr<CFrameSink> MakeSink(const ExportFormat& format, const ExportSettings& settings);
/// Null when there is none of the name.
const ExportFormat* FindExportFormat(std::string_view name);
/// The format whose extension the file has, in any case; else the first.
const ExportFormat* ExportFormatOf(std::string_view path);

} // namespace qor
