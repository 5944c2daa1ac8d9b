// SPDX-License-Identifier: GPL-3.0-or-later
//
// Which file a frame goes to. What stands in a file is CSeaBassTable's.
#include "export/FrameSeaBass.h"

#include "export/SeaBassTable.h"
#include "export/TableFiles.h"

#include <algorithm>
#include <map>

namespace qor {

namespace {

class CFrameSeaBass final : public CFrameSink {
  public:
    explicit CFrameSeaBass(const ExportSettings& settings)
        : Settings(settings), Files(settings, ".sb") {}

    OutputResult BeginLog(const ExportedLog& log,
                          std::span<const ExportedInstrument> instruments) override;
    void Write(const ExportedFrame& frame) override { Current.at(&frame.instrument)->Write(frame); }
    void EndLog() override { Current.clear(); }
    /// Nobody reads a file that is not complete.
    void Flush() override {}
    bool Good() const override {
        return std::all_of(Tables.begin(), Tables.end(),
                           [](const auto& table) { return table.second->Good(); });
    }
    OutputResult Finish() override;

  private:
    const ExportSettings Settings;
    CTableFiles Files;
    std::map<std::string, std::unique_ptr<CSeaBassTable>> Tables; ///< by instrument name
    std::map<const CLiveInstrument*, CSeaBassTable*> Current;     ///< of the log that plays
};

OutputResult CFrameSeaBass::BeginLog(const ExportedLog& log,
                                     std::span<const ExportedInstrument> instruments) {
    if (Settings.path.empty() || IsDevice(Settings.path))
        return {OutputState::NeedsFile, Settings.path};
    if (OutputResult result = Files.Prepare(instruments.size()); !result.Good())
        return result;
    const LogSource source = SourceOf(log, Settings);
    for (const ExportedInstrument& instrument : instruments) {
        TableFile file;
        if (OutputResult result = Files.Open(instrument.live->Name(), false, file); !result.Good())
            return result;
        std::unique_ptr<CSeaBassTable>& table = Tables[instrument.live->Name()];
        if (file.isNew)
            table = std::make_unique<CSeaBassTable>(file.path, *file.output, Settings);
        if (OutputResult result = table->BeginLog(source, instrument); !result.Good())
            return result;
        Current[instrument.live] = table.get();
    }
    return {};
}

OutputResult CFrameSeaBass::Finish() {
    std::vector<std::string> unknown;
    for (const auto& [name, table] : Tables)
        if (!table->Finish(unknown))
            return {OutputState::Failed, Settings.path};
    if (OutputResult result = Files.Finish(); !result.Good() || unknown.empty())
        return result;
    std::sort(unknown.begin(), unknown.end());
    unknown.erase(std::unique(unknown.begin(), unknown.end()), unknown.end());
    std::string keys;
    for (const std::string& key : unknown)
        keys += (keys.empty() ? "" : ", ") + key;
    Settings.warn(Settings.path +
                  ": its header has NA where nobody said what the archive requires: " + keys +
                  "; give them with --seabass KEY=VALUE.");
    return {};
}

} // namespace

std::unique_ptr<CFrameSink> MakeFrameSeaBass(const ExportSettings& settings) {
    return std::make_unique<CFrameSeaBass>(settings);
}

} // namespace qor
