// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/FrameTables.h"

#include "export/TableFiles.h"

#include <map>

namespace qor {

namespace {

class CFrameTables final : public CFrameSink {
  public:
    explicit CFrameTables(const ExportSettings& settings)
        : Settings(settings), Files(settings, ".csv") {}

    OutputResult BeginLog(const ExportedLog& log,
                          std::span<const ExportedInstrument> instruments) override;
    void Write(const ExportedFrame& frame) override {
        Tables.at(&frame.instrument)
            .WriteFrame(frame.instrument, frame.checks, frame.derived, frame.qc);
    }
    /// The next log brings instruments of its own: the tables of the same name go on.
    void EndLog() override { Tables.clear(); }
    void Flush() override { Files.Flush(); }
    bool Good() const override { return Files.Good(); }
    OutputResult Finish() override { return Files.Finish(); }

  private:
    const ExportSettings Settings;
    CTableFiles Files;
    std::map<const CLiveInstrument*, CFrameCsv> Tables;
};

OutputResult CFrameTables::BeginLog(const ExportedLog& log,
                                    std::span<const ExportedInstrument> instruments) {
    if (OutputResult result = Files.Prepare(instruments.size()); !result.Good())
        return result;
    for (const ExportedInstrument& instrument : instruments) {
        TableFile file;
        if (OutputResult result =
                Files.Open(instrument.live->Name(), Settings.style.described, file);
            !result.Good())
            return result;
        CFrameCsv rows(*file.output, instrument.live->Definition(), log.path,
                       log.StyleOf(Settings.style));
        if (file.isNew)
            rows.WriteHeader(instrument.derived);
        if (file.description)
            rows.WriteColumns(*file.description, instrument.derived, FileNameIn(file.path));
        Tables.emplace(instrument.live, std::move(rows));
    }
    return {};
}

} // namespace

std::unique_ptr<CFrameSink> MakeFrameTables(const ExportSettings& settings) {
    return std::make_unique<CFrameTables>(settings);
}

} // namespace qor
