// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/FrameTrial.h"

#include "base/Text.h"
#include "instrument/Calibration.h"
#include "instrument/RawValue.h"
#include "telemetry/AttachRequest.h"
#include "telemetry/RawLogFormat.h"

#include <algorithm>
#include <limits>
#include <tuple>

namespace qor {

namespace {

constexpr std::size_t SampleSize = 1U << 20;
constexpr const char* StreamName = "trial";

bool HasField(const CSensor& sensor) {
    return sensor.VariableLength || sensor.FieldLength > 0;
}

TriedField DescribeField(const CSensor& sensor, ByteSpan frame) {
    TriedField tried;
    tried.sensor = &sensor;
    ByteSpan field;
    tried.status = FieldOf(sensor, frame, field);
    tried.located = tried.status == ConversionStatus::Good;
    if (!tried.located)
        return tried;
    tried.offset = static_cast<std::size_t>(field.data() - frame.data());
    tried.bytes = AsText(field);
    double number = 0.0;
    if (RawNumber(sensor, frame, number) == ConversionStatus::Good)
        tried.raw = number;
    std::string text;
    if (KindOfValue(sensor) == ValueKind::Text) {
        tried.status = ValueText(sensor, frame, text);
        if (tried.status == ConversionStatus::Good)
            tried.text = std::move(text);
        return tried;
    }
    tried.status = CalibratedValue(sensor, frame, false, number);
    if (tried.status == ConversionStatus::Good)
        tried.number = number;
    return tried;
}

/// Behind the header records of a raw log.
ByteSpan WithoutRecords(ByteSpan bytes) {
    while (BeginsWith(bytes, HeaderRecordStart))
        bytes = bytes.subspan(std::min(bytes.size(), HeaderRecordSize));
    return bytes;
}

} // namespace

CFrameTrial::CFrameTrial(const CInstrument& instrument)
    : Instrument(instrument), Sync(Nobody, StreamName, StreamSource::ReportingPort),
      Plan(instrument) {
    for (const CSensor& sensor : instrument.Sensors())
        if (HasField(sensor) && KindOfValue(sensor) != ValueKind::None)
            Valued.push_back(static_cast<std::size_t>(sensor.Index));
    Checks.SetUp(instrument, instrument.ShownName(), StreamName, Nobody);
}

/// A raw log is read as playing reads it, anything else as a port of its own, where an instrument
/// without a sync header is found too.
void CFrameTrial::Start() {
    Started = true;
    const bool log = BeginsWith(Sample, HeaderRecordStart);
    Sync.Restart(StreamName, log ? StreamSource::File : StreamSource::ReportingPort);
    Sync.SetMaxFrameDepth(std::numeric_limits<std::int32_t>::max()); // they are taken at once
    const AttachRequest request = MakeAttachRequest(Instrument);
    if (Sync.Attach(request) == CommResult::Success) // else no frame comes, and that is said
        std::ignore = Sync.SetAcquisition(request.instrumentName, true);
    Sync.Append(Sample);
}

void CFrameTrial::Take(ByteSpan bytes) {
    Result.bytes += bytes.size();
    const std::size_t room = SampleSize - Sample.size();
    const ByteSpan sampled = bytes.first(std::min(room, bytes.size()));
    Sample.insert(Sample.end(), sampled.begin(), sampled.end());
    if (Started)
        Sync.Append(bytes);
    else if (Sample.size() >= HeaderRecordStart.size()) {
        Start();
        Sync.Append(bytes.subspan(sampled.size()));
    }
    Process();
}

void CFrameTrial::Process() {
    if (!Started)
        return;
    bool more = true;
    while (more) {
        more = Sync.RunPass().moreReady;
        CFrameData frame;
        while (Sync.Frames().Pop(frame))
            TakeFrame(frame);
    }
}

void CFrameTrial::TakeFrame(const CFrameData& frame) {
    Checks.Check(frame.Span());
    Plan.Convert(frame.Span(), false, Values);
    if (std::ranges::any_of(
            Valued, [&](std::size_t i) { return Values.statuses[i] != ConversionStatus::Good; }))
        ++Result.unconverted;
    const std::size_t length = frame.Bytes.size();
    Result.shortest = Result.frames == 0 ? length : std::min(Result.shortest, length);
    Result.longest = std::max(Result.longest, length);
    if (++Result.frames == 1)
        Result.first = Describe(frame);
}

TriedFrame CFrameTrial::Describe(const CFrameData& frame) const {
    TriedFrame tried{frame.StreamOffset, frame.Bytes, {}};
    for (const CSensor& sensor : Instrument.Sensors())
        if (HasField(sensor))
            tried.fields.push_back(DescribeField(sensor, frame.Span()));
    return tried;
}

/// Whether a fixed frame, in a raw log with its time tag, is as long as the way from header to
/// header.
std::string CFrameTrial::Doubt() const {
    if (Result.discarded == 0 || Instrument.Type() == FrameType::Variable)
        return {};
    const ByteSpan bytes = WithoutRecords(Sample);
    const std::size_t tag = bytes.size() < Sample.size() ? TimeTagSize : 0;
    const HeaderTrace trace = TraceHeader(Instrument.SyncHeader(), bytes);
    const std::size_t usual = trace.IsWhole() ? UsualDistance(trace) : 0;
    const auto size = static_cast<std::size_t>(Instrument.FrameSize());
    if (usual == 0 || usual == size || usual == size + tag)
        return {};
    const std::string facts = Format(
        "The sync headers stand %zu bytes apart, and a frame of the definition has %zu%s: ", usual,
        size, tag == 0 ? "" : ", with its time tag 7 more");
    return usual < size + tag
               ? facts + "it swallows the beginning of the next one; is a length too "
                         "large, or a field not sent?"
               : facts + "what lies between belongs to fields that the definition lacks, "
                         "or to another instrument.";
}

FrameTrialResult CFrameTrial::Finish(std::uint64_t lineErrors) {
    if (!Started)
        Start();
    Process();
    Sync.EndOfStream();
    Process();
    Result.discarded = Sync.Figures().bytesDiscarded;
    // The first frame only sets the counter.
    if (Checks.CounterIndex >= 0 && Result.frames > 1)
        Result.dropped = Checks.DroppedCount;
    if (Checks.ChecksumIndex >= 0 && Result.frames > 0)
        Result.checksumErrors = Checks.ChecksumErrorCount;
    Result.unreadable = Checks.ValueErrorCount;
    const ByteSpan bytes = WithoutRecords(Sample);
    if (Result.frames == 0)
        Result.nearest = NearestMissOf(Instrument, bytes, lineErrors, Sample.size() - bytes.size());
    else
        Result.doubt = Doubt();
    return std::move(Result);
}

} // namespace qor
