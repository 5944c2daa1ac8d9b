// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/ExportFormat.h"

#include "export/BinNetCdf.h"
#include "export/BinText.h"
#include "export/CheckedFrames.h"
#include "export/FrameLines.h"
#include "export/FrameNetCdf.h"
#include "export/FrameSeaBass.h"
#include "export/FrameSummary.h"
#include "export/FrameTables.h"
#include "session/FileKind.h"

#include <algorithm>

namespace qor {

namespace {

/// All the work and no results.
class CNoFrames final : public CFrameSink {
  public:
    explicit CNoFrames(const ExportSettings& settings) : Settings(settings), Out(settings.report) {}

    OutputResult BeginLog(const ExportedLog&, std::span<const ExportedInstrument>) override {
        return Out.Open(Settings.path, Settings.rules);
    }
    void Write(const ExportedFrame&) override {}
    void EndLog() override {}
    void Flush() override {}
    bool Good() const override { return Out.Good(); }
    OutputResult Finish() override { return Out.Finish(); }

  private:
    const ExportSettings Settings;
    COutput Out;
};

std::unique_ptr<CFrameSink> MakeNoFrames(const ExportSettings& settings) {
    return std::make_unique<CNoFrames>(settings);
}

constexpr ExportFormat Formats[] = {
    {"csv", ".csv", "a table an instrument", true, true, true, true, MakeFrameTables,
     MakeBinTables},
    {"jsonl", ".jsonl", "an object a frame", true, true, false, true, MakeFrameLines, MakeBinLines},
    {"netcdf", ".nc", "a CF file an instrument", true, true, true, true, MakeFrameNetCdf,
     MakeBinNetCdf},
    {"seabass", ".sb", "a text of the archive's fields an instrument", true, false, true, false,
     MakeFrameSeaBass, nullptr},
    {"summary", "", "for people", false, true, false, false, MakeFrameSummaries, nullptr},
    {"none", "", "", false, true, false, false, MakeNoFrames, nullptr},
};

} // namespace

std::span<const ExportFormat> ExportFormats() {
    return Formats;
}

std::unique_ptr<CFrameSink> MakeSink(const ExportFormat& format, const ExportSettings& settings) {
    std::unique_ptr<CFrameSink> sink = (settings.bins ? format.makeBins : format.make)(settings);
    return settings.qc ? MakeCheckedFrames(settings, std::move(sink)) : std::move(sink);
}

const ExportFormat* FindExportFormat(std::string_view name) {
    const auto* found = std::ranges::find(Formats, name, &ExportFormat::name);
    return found == std::end(Formats) ? nullptr : found;
}

const ExportFormat* ExportFormatOf(std::string_view path) {
    const std::string extension = "." + ExtensionOf(path);
    const auto* found = std::ranges::find(Formats, extension, &ExportFormat::extension);
    return found == std::end(Formats) ? Formats : found;
}

} // namespace qor
