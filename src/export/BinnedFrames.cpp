// SPDX-License-Identifier: GPL-3.0-or-later
//
// The life of bins. See BinnedFrames.h.
#include "export/BinnedFrames.h"

#include <cmath>

namespace qor {

OutputResult CBinnedFrames::BeginLog(const ExportedLog& log,
                                     std::span<const ExportedInstrument> instruments) {
    Log = log;
    UtcOffset = UtcOffsetOf(log);
    for (const ExportedInstrument& instrument : instruments) {
        Instruments.push_back(
            std::make_unique<CFrameBins>(*Settings.bins, instrument, Settings.style.degrees));
        Gathering[instrument.live] = Instruments.back().get();
    }
    return Open(log, instruments);
}

void CBinnedFrames::Write(const ExportedFrame& frame) {
    if (Full || Gathering.at(&frame.instrument)->Take(frame, UtcOffset))
        return;
    Full = true;
    Settings.report(Log.path + ": its bins of " + frame.instrument.Definition().ShownName() +
                    " are too many to be kept; give --bin a wider span, or --from and --to.");
}

void CBinnedFrames::EndLog() {
    if (!Full) {
        for (const auto& bins : Instruments)
            WriteBins(Log, *bins);
        SayLeftOut();
    }
    Gathering.clear();
    Instruments.clear();
}

void CBinnedFrames::SayLeftOut() const {
    std::uint64_t count = 0;
    for (const auto& bins : Instruments)
        count += bins->LeftOut();
    if (count > 0)
        Settings.warn(Log.path + ": " + std::to_string(count) +
                      (count == 1 ? " frame is" : " frames are") + " in no bin, for want of a " +
                      (Settings.bins->IsTime() ? "time." : "pressure."));
}

OutputResult CBinnedFrames::Finish() {
    return Full ? OutputResult{OutputState::Failed, Settings.path} : FinishOutputs();
}

void WriteCentre(COutput& output, const BinSpan& span, double bin, bool utc) {
    if (!span.IsTime())
        return output.Number(span.Centre(bin));
    const auto milliseconds = static_cast<std::int64_t>(std::llround(span.Centre(bin) * 1000.0));
    FrameTime time;
    time.known = true;
    time.seconds = milliseconds / 1000 - (milliseconds % 1000 < 0 ? 1 : 0);
    time.milliseconds =
        static_cast<decltype(time.milliseconds)>(milliseconds - time.seconds * 1000);
    WriteTime(output, time, utc ? std::optional(0) : std::nullopt);
}

} // namespace qor
