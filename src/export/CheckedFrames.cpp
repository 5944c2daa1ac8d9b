// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frames that wait for what their checks find. See CheckedFrames.h.
#include "export/CheckedFrames.h"

#include "instrument/Calibration.h"

#include <map>

namespace qor {

namespace {

/// The names that rules may give a value, the most general first. What frames are counted and
/// checked by is no measurement: only its own name speaks of it.
std::vector<std::string> NamesOf(const CSensor& sensor) {
    std::vector<std::string> names = {sensor.Type, sensor.Type + "(" + sensor.Id + ")"};
    if (!IsNamedFrameCounter(sensor) && !IsNamedChecksum(sensor))
        names.insert(names.begin(), std::string(EveryValue));
    return names;
}

/// Of its current frame, in seconds; none where that has no time.
std::optional<double> TimeOf(const CLiveInstrument& instrument) {
    const FrameTime& time = instrument.CurrentFrame()->Info.time;
    return time.known ? std::optional(SecondsOf(time)) : std::nullopt;
}

/// One instrument: the frame that waits, and the tests of its values.
class CCheckedInstrument {
  public:
    CCheckedInstrument(const ExportedInstrument& instrument, const ExportSettings& settings);

    const CLiveInstrument& Waiting() const { return Frame; }
    /// The depth of its frames is that sensor's of the carrier, which lives as long.
    void TakeDepthFrom(const CCheckedInstrument& carrier, int sensor) {
        Carrier = &carrier;
        DepthSensor = static_cast<std::size_t>(sensor);
    }
    /// Takes a frame; the one before it has to be out.
    void Take(const ExportedFrame& frame);
    /// A frame that is left out: of others' frames it may still say the depth.
    void PassOver(const ExportedFrame& frame);
    /// What the frame that comes next says of spikes in the one that waits.
    void LookAhead(const ExportedFrame& next);
    /// Hands on the frame that waits, if one does.
    void WriteTo(CFrameSink& sink);

  private:
    struct Value {
        const CSensor* sensor = nullptr; ///< null: a product
        std::size_t place = 0;           ///< index of the sensor, or place of the row
        CQcTests tests;
    };
    static std::optional<double> ValueIn(const CLiveInstrument& instrument,
                                         std::span<const DerivedRow> derived, const Value& value);
    QcFlag TestTime(std::optional<double> seconds);
    QcFlag& FlagOf(const Value& value) {
        return (value.sensor ? Found.sensors : Found.products)[value.place];
    }
    void Reject();

    CLiveInstrument Frame; ///< that waits
    CFrameData Copy;       ///< its memory is used again
    FrameCheckResult Checks;
    std::vector<DerivedRow> Derived;
    std::optional<double> Depth;
    const CCheckedInstrument* Carrier = nullptr; ///< of the depth; null: none
    std::size_t DepthSensor = 0;
    QcFlag DepthFlag = QcFlag::NotEvaluated; ///< of a carrier's latest frame, also one left out
    FrameQc Found;
    bool IsWaiting = false;

    const double Gap; ///< seconds
    const bool Rejects;
    std::optional<double> LastSeconds;
    std::vector<Value> Values;
};

CCheckedInstrument::CCheckedInstrument(const ExportedInstrument& instrument,
                                       const ExportSettings& settings)
    : Frame(instrument.live->Definition()),
      Gap(settings.qc->GapOf(instrument.live->Name())
              .value_or(static_cast<double>(instrument.live->Patience()) / 1000.0)),
      Rejects(settings.rejects) {
    const QcLimits& limits = *settings.qc;
    Frame.Immersed = instrument.live->Immersed;
    Frame.FrameRate = instrument.live->FrameRate;
    const auto& sensors = Frame.Definition().Sensors();
    for (const CSensor& sensor : sensors)
        if (KindOfValue(sensor) == ValueKind::Number)
            Values.push_back({&sensor, static_cast<std::size_t>(sensor.Index),
                              CQcTests(limits.RulesOf(NamesOf(sensor)))});
    for (std::size_t i = 0; i < instrument.derived.size(); ++i) {
        const DerivedRow& row = instrument.derived[i];
        const std::string names[] = {std::string(EveryValue), row.label};
        const QcRules watched = settings.ranges ? settings.ranges(instrument, row) : QcRules();
        Values.push_back({nullptr, i, CQcTests(limits.RulesOf(names, watched))});
    }
    Found.sensors.assign(sensors.size(), QcFlag::NotEvaluated);
    Found.products.assign(instrument.derived.size(), QcFlag::NotEvaluated);
}

std::optional<double> CCheckedInstrument::ValueIn(const CLiveInstrument& instrument,
                                                  std::span<const DerivedRow> derived,
                                                  const Value& value) {
    if (!value.sensor)
        return value.place < derived.size() ? derived[value.place].value : std::nullopt;
    return instrument.Values().statuses[value.place] == ConversionStatus::Good
               ? std::optional(instrument.Values().numbers[value.place])
               : std::nullopt;
}

void CCheckedInstrument::Take(const ExportedFrame& frame) {
    Copy = *frame.instrument.CurrentFrame();
    Frame.Take(Copy);
    Checks = frame.checks;
    Derived.assign(frame.derived.begin(), frame.derived.end());
    Depth = frame.depth;
    const std::optional<double> seconds = TimeOf(Frame);
    Found.time = TestTime(seconds);
    for (Value& value : Values)
        FlagOf(value) = value.tests.Take(ValueIn(Frame, Derived, value), seconds);
    if (Carrier == this)
        DepthFlag = Found.sensors[DepthSensor];
    // Decided: where another instrument measures the depth, its latest frame counts as far as it is
    // checked when this one's comes: whether that was a spike only the next one tells.
    else if (Rejects && Carrier && Carrier->DepthFlag == QcFlag::Bad)
        Depth.reset();
    IsWaiting = true;
}

/// The tests of the frames that are written go on as if this one had not been.
void CCheckedInstrument::PassOver(const ExportedFrame& frame) {
    for (const Value& value : Values)
        if (Carrier == this && value.sensor && value.place == DepthSensor)
            DepthFlag = CQcTests(value.tests)
                            .Take(ValueIn(frame.instrument, {}, value), TimeOf(frame.instrument));
}

QcFlag CCheckedInstrument::TestTime(std::optional<double> seconds) {
    QcFlag flag = seconds ? QcFlag::NotEvaluated : QcFlag::Missing;
    if (seconds && LastSeconds)
        flag = *seconds - *LastSeconds > Gap ? QcFlag::Bad : QcFlag::Good;
    if (seconds)
        LastSeconds = seconds;
    return flag;
}

void CCheckedInstrument::LookAhead(const ExportedFrame& next) {
    if (!IsWaiting)
        return;
    for (Value& value : Values) {
        QcFlag& flag = FlagOf(value);
        flag = Worse(flag, value.tests.SpikeBefore(ValueIn(next.instrument, next.derived, value)));
    }
}

void CCheckedInstrument::Reject() {
    for (const Value& value : Values)
        if (FlagOf(value) != QcFlag::Bad)
            continue;
        else if (value.sensor)
            Frame.Reject(*value.sensor);
        else
            Derived[value.place].value.reset(),
                Derived[value.place].status = ConversionStatus::Rejected;
    if (Carrier == this && Found.sensors[DepthSensor] == QcFlag::Bad)
        Depth.reset();
}

void CCheckedInstrument::WriteTo(CFrameSink& sink) {
    if (!IsWaiting)
        return;
    IsWaiting = false;
    if (Rejects)
        Reject();
    sink.Write({Frame, Checks, Derived, Depth, &Found});
}

class CCheckedFrames final : public CFrameSink {
  public:
    CCheckedFrames(const ExportSettings& settings, std::unique_ptr<CFrameSink> behind)
        : Settings(settings), LooksAhead(settings.qc->LooksAhead()), Behind(std::move(behind)) {}

    OutputResult BeginLog(const ExportedLog& log,
                          std::span<const ExportedInstrument> instruments) override;
    void Write(const ExportedFrame& frame) override;
    void LeaveOut(const ExportedFrame& frame) override {
        Checked.at(&frame.instrument)->PassOver(frame);
        Behind->LeaveOut(frame);
    }
    void EndLog() override;
    void Flush() override { Behind->Flush(); }
    bool Good() const override { return Behind->Good(); }
    OutputResult Finish() override { return Behind->Finish(); }

  private:
    const ExportSettings Settings;
    const bool LooksAhead;
    const std::unique_ptr<CFrameSink> Behind;
    std::vector<std::unique_ptr<CCheckedInstrument>> Instruments; ///< in the log's order
    std::map<const CLiveInstrument*, CCheckedInstrument*> Checked;
};

OutputResult CCheckedFrames::BeginLog(const ExportedLog& log,
                                      std::span<const ExportedInstrument> instruments) {
    std::vector<ExportedInstrument> shown(instruments.begin(), instruments.end());
    for (ExportedInstrument& instrument : shown) {
        Instruments.push_back(std::make_unique<CCheckedInstrument>(instrument, Settings));
        Checked[instrument.live] = Instruments.back().get();
        instrument.live = &Instruments.back()->Waiting();
    }
    for (const ExportedInstrument& instrument : instruments)
        if (const auto carrier = Checked.find(instrument.depthCarrier); carrier != Checked.end())
            Checked[instrument.live]->TakeDepthFrom(*carrier->second, instrument.depthSensor);
    return Behind->BeginLog(log, shown);
}

void CCheckedFrames::Write(const ExportedFrame& frame) {
    CCheckedInstrument& instrument = *Checked.at(&frame.instrument);
    if (LooksAhead) {
        instrument.LookAhead(frame);
        instrument.WriteTo(*Behind);
    }
    instrument.Take(frame);
    if (!LooksAhead)
        instrument.WriteTo(*Behind);
}

void CCheckedFrames::EndLog() {
    for (const auto& instrument : Instruments)
        instrument->WriteTo(*Behind);
    Behind->EndLog();
    Checked.clear();
    Instruments.clear();
}

} // namespace

std::unique_ptr<CFrameSink> MakeCheckedFrames(const ExportSettings& settings,
                                              std::unique_ptr<CFrameSink> behind) {
    return std::make_unique<CCheckedFrames>(settings, std::move(behind));
}

std::vector<std::string> CheckedNames(std::span<const ExportedInstrument> instruments) {
    std::vector<std::string> names;
    for (const ExportedInstrument& instrument : instruments) {
        for (const CSensor& sensor : instrument.live->Definition().Sensors())
            if (KindOfValue(sensor) == ValueKind::Number)
                for (std::string& name : NamesOf(sensor))
                    names.push_back(std::move(name));
        for (const DerivedRow& row : instrument.derived)
            names.push_back(row.label);
    }
    return names;
}

std::vector<std::string> NamesOf(std::span<const ExportedInstrument> instruments) {
    std::vector<std::string> names;
    for (const ExportedInstrument& instrument : instruments)
        names.push_back(instrument.live->Name());
    return names;
}

} // namespace qor
