// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/FrameSummary.h"

#include "base/Text.h"
#include "instrument/Calibration.h"

#include <algorithm>

namespace qor {

CFrameSummary::CFrameSummary(const CInstrument& instrument) : Instrument(instrument) {
    for (const CSensor& sensor : instrument.Sensors())
        if (ValueKind kind = KindOfValue(sensor); kind != ValueKind::None)
            Rows.push_back({&sensor, kind == ValueKind::Text, 0, 0.0, 0.0, 0.0, 0.0, {}});
}

void CFrameSummary::LeaveOut(const FrameCheckResult& checks) {
    Checks.Add(checks);
    ++LeftOut;
}

void CFrameSummary::AddFrame(const CLiveInstrument& instrument, const FrameCheckResult& checks) {
    Checks.Add(checks);
    const FrameValues& values = instrument.Values();
    for (Row& row : Rows) {
        auto index = static_cast<std::size_t>(row.sensor->Index);
        if (values.statuses[index] != ConversionStatus::Good)
            continue;
        ++row.count;
        if (row.text) {
            if (ValueText(*row.sensor, instrument.CurrentFrame()->Span(), row.lastText) !=
                ConversionStatus::Good)
                row.lastText.clear();
            continue;
        }
        row.last = values.numbers[index];
        row.least = row.count == 1 ? row.last : std::min(row.least, row.last);
        row.greatest = row.count == 1 ? row.last : std::max(row.greatest, row.last);
        row.sum += row.last;
    }
}

void CFrameSummary::Write(COutput& output) const {
    output.Foreign(Format("%s: %llu frames", Instrument.ShownName().c_str(),
                          static_cast<unsigned long long>(Checks.frames)));
    output.Text(Checks.frames > 0 ? ", " + Checks.Text() : "");
    if (LeftOut > 0)
        output.Text(Format(", %llu frames left out", static_cast<unsigned long long>(LeftOut)));
    output.Char('\n');
    output.Text(Format("  %-20s %-14s %8s %12s %12s %12s %12s\n", "sensor", "units", "values",
                       "least", "mean", "greatest", "last"));
    for (const Row& row : Rows) {
        std::string name =
            row.sensor->Type + (row.sensor->Id.empty() ? "" : "(" + row.sensor->Id + ")");
        output.Foreign(Format("  %-20s %-14s %8llu ", name.c_str(), row.sensor->Units.c_str(),
                              static_cast<unsigned long long>(row.count)));
        if (row.text)
            output.Foreign(Format("%12s %12s %12s %12s", "", "", "", row.lastText.c_str()));
        else if (row.count == 0)
            output.Text(Format("%12s %12s %12s %12s", "-", "-", "-", "-"));
        else
            output.Text(GeneralNumber(row.least, 5, 12) + ' ' +
                        GeneralNumber(row.sum / static_cast<double>(row.count), 5, 12) + ' ' +
                        GeneralNumber(row.greatest, 5, 12) + ' ' + GeneralNumber(row.last, 5, 12));
        output.Char('\n');
    }
}

namespace {

class CFrameSummaries final : public CFrameSink {
  public:
    explicit CFrameSummaries(const ExportSettings& settings)
        : Settings(settings), Out(settings.report) {}

    OutputResult BeginLog(const ExportedLog&,
                          std::span<const ExportedInstrument> instruments) override {
        for (const ExportedInstrument& instrument : instruments)
            Summaries.emplace_back(instrument.live, instrument.live->Definition());
        return Out.Open(Settings.path, Settings.rules);
    }
    void LeaveOut(const ExportedFrame& frame) override {
        for (auto& [owner, summary] : Summaries)
            if (owner == &frame.instrument)
                summary.LeaveOut(frame.checks);
    }
    void Write(const ExportedFrame& frame) override {
        for (auto& [owner, summary] : Summaries)
            if (owner == &frame.instrument)
                summary.AddFrame(frame.instrument, frame.checks);
    }
    void EndLog() override {
        for (const auto& [owner, summary] : Summaries)
            summary.Write(Out);
        Summaries.clear();
    }
    void Flush() override {} // it has its lines at the end
    bool Good() const override { return Out.Good(); }
    OutputResult Finish() override { return Out.Finish(); }

  private:
    const ExportSettings Settings;
    COutput Out;
    std::vector<std::pair<const CLiveInstrument*, CFrameSummary>> Summaries;
};

} // namespace

std::unique_ptr<CFrameSink> MakeFrameSummaries(const ExportSettings& settings) {
    return std::make_unique<CFrameSummaries>(settings);
}

} // namespace qor
