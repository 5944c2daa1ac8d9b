// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/FrameLines.h"

#include <optional>

namespace qor {

namespace {

class CFrameLines final : public CFrameSink {
  public:
    explicit CFrameLines(const ExportSettings& settings)
        : Settings(settings), Out(settings.report) {}

    OutputResult BeginLog(const ExportedLog& log, std::span<const ExportedInstrument>) override {
        Line.emplace(Out, log.path, log.StyleOf(Settings.style));
        return Out.Open(Settings.path, Settings.rules);
    }
    void Write(const ExportedFrame& frame) override {
        Line->WriteFrame(frame.instrument, frame.checks, frame.derived, {}, frame.qc);
    }
    void EndLog() override { Line.reset(); }
    void Flush() override { Out.Flush(); }
    bool Good() const override { return Out.Good(); }
    OutputResult Finish() override { return Out.Finish(); }

  private:
    const ExportSettings Settings;
    COutput Out;
    std::optional<CFrameJson> Line;
};

} // namespace

std::unique_ptr<CFrameSink> MakeFrameLines(const ExportSettings& settings) {
    return std::make_unique<CFrameLines>(settings);
}

} // namespace qor
