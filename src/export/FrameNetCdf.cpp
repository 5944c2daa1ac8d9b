// SPDX-License-Identifier: GPL-3.0-or-later
//
// Which file a frame goes to. What stands in a file is CNetCdfTable's.
#include "export/FrameNetCdf.h"

#include "export/NetCdfTable.h"
#include "export/TableFiles.h"

#include <map>
#include <utility>

namespace qor {

namespace {

class CFrameNetCdf final : public CFrameSink {
  public:
    explicit CFrameNetCdf(const ExportSettings& settings)
        : Settings(settings), Files(settings, ".nc") {}

    OutputResult BeginLog(const ExportedLog& log,
                          std::span<const ExportedInstrument> instruments) override;
    void Write(const ExportedFrame& frame) override {
        CNetCdfTable& table = *Current.at(&frame.instrument);
        if (!table.Write(frame))
            Fail(table);
    }
    void EndLog() override { Current.clear(); }
    /// Nobody reads a file that is not complete.
    void Flush() override {}
    bool Good() const override { return Usable && Files.Good(); }
    OutputResult Finish() override;

  private:
    void Fail(const CNetCdfTable& table) {
        if (std::exchange(Usable, false))
            Settings.report(table.Path() + ": " + table.FaultText());
    }

    const ExportSettings Settings;
    CTableFiles Files;
    std::map<std::string, std::unique_ptr<CNetCdfTable>> Tables; ///< by instrument name
    std::map<const CLiveInstrument*, CNetCdfTable*> Current;     ///< of the log that plays
    bool Usable = true;
};

OutputResult CFrameNetCdf::BeginLog(const ExportedLog& log,
                                    std::span<const ExportedInstrument> instruments) {
    if (!CNetCdfFile::IsThere())
        return {OutputState::NotBuilt, Settings.path};
    if (Settings.path.empty() || IsDevice(Settings.path))
        return {OutputState::NeedsFile, Settings.path};
    if (OutputResult result = Files.Prepare(instruments.size()); !result.Good())
        return result;
    const LogSource source = SourceOf(log, Settings);
    for (const ExportedInstrument& instrument : instruments) {
        TableFile file;
        if (OutputResult result = Files.Open(instrument.live->Name(), false, file); !result.Good())
            return result;
        std::unique_ptr<CNetCdfTable>& table = Tables[instrument.live->Name()];
        if (file.isNew)
            table =
                std::make_unique<CNetCdfTable>(file.path, file.output->HandOver(), Settings.style);
        if (!table->BeginLog(source, instrument)) {
            Fail(*table);
            return {OutputState::Failed, table->Path()};
        }
        Current[instrument.live] = table.get();
    }
    return {};
}

OutputResult CFrameNetCdf::Finish() {
    for (const auto& [name, table] : Tables)
        if (Usable && !table->Close())
            Fail(*table);
    return Usable ? Files.Finish() : OutputResult{OutputState::Failed, Settings.path};
}

} // namespace

std::unique_ptr<CFrameSink> MakeFrameNetCdf(const ExportSettings& settings) {
    return std::make_unique<CFrameNetCdf>(settings);
}

} // namespace qor
