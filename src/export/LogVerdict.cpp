// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/LogVerdict.h"

#include "base/Text.h"
#include "instrument/RawValue.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace qor {

namespace {

constexpr std::int64_t CounterRange = 256;
/// Steps of the clock are noted within a second, frames may come seldom.
constexpr double StepTolerance = 5.0;

/// Text that follows "missing before the one at byte 7".
std::string AtTime(const FrameTime& time) {
    return time.known ? " (" + TimeText(time) + ")" : "";
}

std::string StepText(const std::string& name, const TagStep& step, bool back) {
    const double seconds = SecondsOf(step.to) - SecondsOf(step.from);
    const std::string times = " from " + TimeText(step.from) + " to " + TimeText(step.to);
    if (back)
        return Format("the time tag of %s behind byte %llu runs back,", name.c_str(),
                      Printed(step.offset)) +
               times + ".";
    return Format("no frame of %s comes for %.3f s before byte %llu,", name.c_str(), seconds,
                  Printed(step.offset)) +
           times + ".";
}

void WriteCount(CJsonWriter& json, const char* key, std::uint64_t count) {
    json.Key(key), json.Integer(static_cast<std::int64_t>(count));
}

} // namespace

/// Kept: as the frame checks have it, a counter wraps behind 255; one that is larger goes on.
std::uint64_t CMissingFrames::Take(std::optional<std::int64_t> counter) {
    if (!counter) {
        ++Silent;
        return 0;
    }
    const std::int64_t silent = std::exchange(Silent, 0);
    const std::optional<std::int64_t> before = std::exchange(Last, counter);
    if (!before)
        return 0;
    From = *before;
    const bool wraps = From >= 0 && *counter >= 0 && From < CounterRange && *counter < CounterRange;
    const std::int64_t between = *counter - From - 1 - silent;
    if (wraps)
        return static_cast<std::uint64_t>((between % CounterRange + CounterRange) % CounterRange);
    return between >= 0 ? static_cast<std::uint64_t>(between) : 1;
}

bool LogVerdict::Whole() const {
    return std::ranges::all_of(faults,
                               [](const LogFault& fault) { return fault.kind == "no-manifest"; });
}

void CLogCheck::Note(const CQorViewIns& instrument, const FrameCheckResult& checks) {
    const CFrameData& frame = *instrument.Live.CurrentFrame();
    Facts.Note(frame);
    Checked*& found = CheckedOf[instrument.Id];
    if (!found)
        found = &Instruments[instrument.Name()];
    Checked& one = *found;
    if (checks.checksCounter)
        NoteCounter(one, instrument, checks);
    if (!checks.checksumError && !checks.valueError)
        return;
    if (++one.damaged <= MostPlaces)
        Verdict.faults.push_back(
            {"checksum", frame.StreamOffset, frame.Bytes.size(),
             Format("the frame of %s at byte %llu has %s.", instrument.Name().c_str(),
                    Printed(frame.StreamOffset),
                    checks.checksumError ? "a checksum error"
                                         : "a counter or checksum that cannot be read")});
}

void CLogCheck::NoteCounter(Checked& one, const CQorViewIns& instrument,
                            const FrameCheckResult& checks) {
    const CFrameData& frame = *instrument.Live.CurrentFrame();
    const CSensor* const sensor = instrument.Definition().Sensor(instrument.Checks.CounterIndex);
    RawValue raw;
    const bool says = sensor && !checks.checksumError &&
                      RawOf(*sensor, frame.Span(), raw) == ConversionStatus::Good;
    const std::int64_t counter = raw.integer;
    const std::uint64_t missing = one.counter.Take(says ? std::optional(counter) : std::nullopt);
    one.missing += missing;
    if (missing == 0 || ++one.gaps > MostPlaces)
        return;
    Verdict.faults.push_back(
        {"missing-frames",
         frame.StreamOffset,
         {},
         Format("%llu frames of %s are missing before the one at byte %llu", Printed(missing),
                instrument.Name().c_str(), Printed(frame.StreamOffset)) +
             AtTime(frame.Info.time) +
             Format(": its counter says %lld after %lld.", static_cast<long long>(counter),
                    static_cast<long long>(one.counter.Before()))});
}

void CLogCheck::AddRest(std::string_view kind, std::uint64_t count, std::size_t named,
                        const std::string& what) {
    if (count > named)
        Verdict.faults.push_back(
            {kind,
             {},
             {},
             Format("the same at %llu more places, of ", Printed(count - named)) + what + "."});
}

void CLogCheck::AddInstrument(const PlayFacts::Instrument& instrument) {
    const Checked one = Instruments[instrument.name];
    Verdict.instruments.push_back({instrument.name, instrument.frames,
                                   instrument.dropped ? std::optional(one.missing) : std::nullopt,
                                   instrument.checksumErrors});
    AddRest("missing-frames", one.gaps, MostPlaces, instrument.name);
    AddRest("checksum", one.damaged, MostPlaces, instrument.name);
    const CTagSteps* const steps = Facts.StepsOf(instrument.name);
    if (!steps)
        return;
    AddSteps(instrument.name, steps->Backwards(), "time-backwards");
    AddSteps(instrument.name, steps->Gaps(), "time-gap");
}

/// What a known step of the clock has to do with a step of the tags, as a sentence.
std::string CLogCheck::Cause(const TagStep& step) const {
    const auto local = [](const FrameTime& time) {
        return SecondsOf(time) + time.utcOffsetMinutes * 60.0;
    };
    const double size = local(step.to) - local(step.from);
    for (const ClockStep& known : KnownSteps) {
        const double seconds = static_cast<double>(known.milliseconds) / 1000.0;
        if (std::abs(size - seconds) > StepTolerance ||
            std::abs(local(known.after) - local(step.to)) > StepTolerance)
            continue;
        return Format(known.ofZone ? " Local time was changed by %.3f s then, by its manifest."
                                   : " The system clock was set by %.3f s then, by its manifest.",
                      seconds);
    }
    return {};
}

void CLogCheck::AddSteps(const std::string& name, const TagSteps& steps, std::string_view kind) {
    for (const TagStep& step : steps.first)
        Verdict.faults.push_back({kind, step.offset, step.length,
                                  StepText(name, step, kind == "time-backwards") + Cause(step)});
    AddRest(kind, steps.count, steps.first.size(), name);
}

/// What is discarded of a torn end is the torn end's.
void CLogCheck::AddBytes(const CRawLogReader& log) {
    const CDiscardedBytes& bytes = Facts.discarded;
    const std::uint64_t tail = Facts.TornTail(Verdict.size), whole = Verdict.size - tail;
    for (const BytePiece& piece : bytes.Places())
        if (piece.offset < whole) {
            const std::uint64_t length = std::min(piece.length, whole - piece.offset);
            Verdict.faults.push_back(
                {"discarded", piece.offset, length,
                 Format("%llu bytes from byte %llu on belong to no frame of the instruments named.",
                        Printed(length), Printed(piece.offset))});
        }
    AddRest("discarded", bytes.Pieces(), bytes.Places().size(), "bytes that belong to no frame");
    for (const BytePiece& header : bytes.LaterHeaders())
        Verdict.faults.push_back(
            {"torn-header", header.offset, header.length,
             Format("another header stands at byte %llu: a second log was joined to the first.",
                    Printed(header.offset))});
    AddRest("torn-header", bytes.LaterHeaderCount(), bytes.LaterHeaders().size(), "headers");
    if (tail > 0 && !log.HeaderIsTorn())
        Verdict.faults.push_back({"torn-end", bytes.Torn(), tail, Facts.TornSentence()});
}

LogVerdict CLogCheck::Finish(const CRawLogReader& log, std::uint64_t size,
                             const SessionSnapshot& snapshot) {
    Facts.Count(snapshot);
    Verdict.size = size;
    Verdict.bytes = Facts.discarded.Named();
    Verdict.discarded = Facts.discarded.Total();
    for (const PlayFacts::Instrument& instrument : Facts.instruments)
        AddInstrument(instrument);
    AddBytes(log);
    if (size == 0)
        Verdict.faults.push_back({"torn-header", 0, 0, "it is empty: it has not even a header."});
    for (LogFault& fault : FaultsOf(log, nullptr))
        Verdict.faults.push_back(std::move(fault));
    std::ranges::stable_sort(Verdict.faults, {}, [](const LogFault& fault) {
        return fault.offset.value_or(std::numeric_limits<std::uint64_t>::max());
    });
    return std::move(Verdict);
}

void WriteVerdictText(COutput& output, const std::string& path, const LogVerdict& verdict) {
    output.Foreign(path);
    const auto faults = std::ranges::count_if(
        verdict.faults, [](const LogFault& fault) { return fault.kind != "no-manifest"; });
    output.Text(verdict.Whole() ? ": whole\n"
                                : Format(": %lld faults\n", static_cast<long long>(faults)));
    for (const LogFault& fault : verdict.faults) {
        output.Text("  " + std::string(fault.kind) + ": ");
        output.Foreign(fault.text);
        output.Char('\n');
    }
}

void WriteVerdictJson(COutput& output, const std::string& path, const LogVerdict& verdict) {
    CJsonWriter json(output);
    json.BeginObject();
    json.Key("file"), json.Path(path);
    json.Key("ok"), json.Bool(verdict.Whole());
    json.Key("bytes"), json.BeginObject();
    WriteCount(json, "header", verdict.bytes.header);
    WriteCount(json, "frames", verdict.bytes.frames);
    WriteCount(json, "tags", verdict.bytes.tags);
    WriteCount(json, "stamps", verdict.bytes.stamps);
    WriteCount(json, "discarded", verdict.discarded);
    json.EndObject();
    WriteCount(json, "size", verdict.size);
    json.Key("instruments"), json.BeginObject();
    for (const LogVerdict::Instrument& instrument : verdict.instruments) {
        json.Name(instrument.name), json.BeginObject();
        WriteCount(json, "frames", instrument.frames);
        json.Key("missing"), json.CountOrNull(instrument.missing);
        json.Key("checksum_errors"), json.CountOrNull(instrument.checksumErrors);
        json.EndObject();
    }
    json.EndObject();
    WriteFaults(json, verdict.faults);
    json.EndObject();
    json.EndLine();
}

} // namespace qor
