// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/LogFacts.h"

#include "base/Text.h"
#include "export/FrameText.h"

#include <algorithm>

namespace qor {

namespace {

std::optional<std::uint64_t> CountIf(bool checked, std::uint64_t count) {
    return checked ? std::optional(count) : std::nullopt;
}

/// Of the discarded bytes that were kept.
double ShareOf(const UnnamedFrames& frames, const PlayFacts& play) {
    return static_cast<double>(frames.bytes) /
           static_cast<double>(std::max<std::size_t>(play.discarded.Sample().size(), 1));
}

void WriteUnnamed(CJsonWriter& json, const PlayFacts& play) {
    json.Key("unnamed"), json.BeginArray();
    for (const UnnamedFrames& frames : play.unnamed) {
        json.BeginObject();
        json.Key("begins"), json.Text(frames.begin);
        json.Key("size"), json.Integer(static_cast<std::int64_t>(frames.size));
        json.Key("share"), json.Number(ShareOf(frames, play));
        json.EndObject();
    }
    json.EndArray();
}

} // namespace

std::string TimeText(const FrameTime& time) {
    return FormatTime("%Y-%m-%dT%H:%M:%S", LocalCalendar(time)) +
           Format(".%03d", static_cast<int>(time.milliseconds));
}

void WriteFaults(CJsonWriter& json, const std::vector<LogFault>& faults) {
    json.Key("faults"), json.BeginArray();
    for (const LogFault& fault : faults) {
        json.BeginObject();
        json.Key("kind"), json.Text(fault.kind);
        json.Key("offset"), json.CountOrNull(fault.offset);
        json.Key("length"), json.CountOrNull(fault.length);
        json.Key("text"), json.Path(fault.text);
        json.EndObject();
    }
    json.EndArray();
}

void PlayFacts::Note(const CFrameData& frame) {
    const FrameTime& time = frame.Info.time;
    Seen*& found = seenOf[frame.Info.identity];
    if (!found)
        found = &seen[frame.Info.instrumentName];
    Seen& one = *found;
    one.last.assign(frame.Text());
    one.steps.Take(time, frame.StreamOffset, frame.Bytes.size());
    if (!time.known)
        return;
    if (!firstTag.known)
        firstTag = time;
    lastTag = time;
}

void PlayFacts::Count(const SessionSnapshot& snapshot) {
    for (const ResourceStatus& resource : snapshot.resources) {
        bytesDiscarded += resource.figures.bytesDiscarded;
        for (const InstrumentFigures& figures : resource.instruments)
            instruments.push_back({figures.name, figures.frames,
                                   CountIf(figures.checksCounter, figures.dropped),
                                   CountIf(figures.checksSum, figures.checksumErrors)});
    }
    std::vector<std::string> named;
    for (const auto& [name, one] : seen)
        named.push_back(one.last);
    unnamed = FindUnnamedFrames(discarded, named);
}

std::uint64_t PlayFacts::TornTail(std::uint64_t size) const {
    const std::optional<std::uint64_t>& torn = discarded.Torn();
    return torn ? size - std::min(*torn, size) : 0;
}

const CTagSteps* PlayFacts::StepsOf(const std::string& instrument) const {
    const auto found = seen.find(instrument);
    return found == seen.end() ? nullptr : &found->second.steps;
}

std::string PlayFacts::TornSentence() const {
    return Format("its end is torn: %s, begun at byte %llu, is not complete.",
                  discarded.TornWhat().c_str(), Printed(discarded.Torn().value_or(0)));
}

void PlayFacts::AddFaults(const CRawLogReader& log, std::vector<LogFault>& faults) const {
    const auto add = [&](std::string_view kind, std::string text) {
        faults.push_back({kind, {}, {}, std::move(text)});
    };
    for (const Instrument& one : instruments) {
        if (const std::uint64_t count = one.dropped.value_or(0); count > 0)
            add("missing-frames", Format("%llu frames of %s are missing, by its frame counter.",
                                         Printed(count), one.name.c_str()));
        if (const std::uint64_t count = one.checksumErrors.value_or(0); count > 0)
            add("checksum", Format("%llu frames of %s have a checksum error.", Printed(count),
                                   one.name.c_str()));
    }
    for (const auto& [name, one] : seen) {
        const TagSteps& back = one.steps.Backwards();
        if (back.count == 0)
            continue;
        const TagStep& first = back.first.front();
        faults.push_back(
            {"time-backwards",
             first.offset,
             {},
             Format("the time tags of %s run backwards %llu times, first at byte %llu, from ",
                    name.c_str(), Printed(back.count), Printed(first.offset)) +
                 TimeText(first.from) + " to " + TimeText(first.to) + "."});
    }
    const std::optional<std::uint64_t>& torn = discarded.Torn();
    const std::uint64_t tail = TornTail(log.BytesRead());
    if (const std::uint64_t count = bytesDiscarded - std::min(tail, bytesDiscarded); count > 0)
        faults.push_back(
            {"discarded",
             discarded.First(),
             {},
             Format("%llu bytes belong to no frame of the instruments named; the first stand at "
                    "byte %llu.",
                    Printed(count), Printed(discarded.First()))});
    if (torn && !log.HeaderIsTorn())
        faults.push_back({"torn-end", torn, tail, TornSentence()});
}

std::vector<LogFault> FaultsOf(const CRawLogReader& log, const PlayFacts* play) {
    std::vector<LogFault> faults;
    if (log.HeaderIsTorn())
        faults.push_back({"torn-header", log.Header().size, log.BytesRead() - log.Header().size,
                          Format("its header is torn: the file ends in it, at byte %llu.",
                                 Printed(log.BytesRead()))});
    if (log.Header().malformed > 0)
        faults.push_back({"torn-header", 0, log.Header().size,
                          Format("%llu records of its header are damaged and say nothing.",
                                 Printed(log.Header().malformed))});
    if (play)
        play->AddFaults(log, faults);
    return faults;
}

std::vector<std::string> UnnamedSentences(const PlayFacts& play) {
    std::vector<std::string> sentences;
    for (const UnnamedFrames& frames : play.unnamed)
        sentences.push_back(
            Format("about %.0f %% of the %llu bytes discarded look like frames that begin with "
                   "\"%s\" (%zu bytes each): name the definition of their instrument with -d.",
                   100.0 * ShareOf(frames, play), Printed(play.bytesDiscarded),
                   Printable(frames.begin).c_str(), frames.size));
    return sentences;
}

void WriteLogJson(COutput& output, const std::string& path, const CRawLogReader& log,
                  const PlayFacts* play) {
    CJsonWriter json(output);
    auto time = [&](const char* key, const FrameTime& value) {
        json.Key(key), WriteTimeValue(json, output, value);
    };
    json.BeginObject();
    json.Key("file"), json.Path(path);
    json.Key("size"), json.Integer(static_cast<std::int64_t>(log.BytesRead()));
    json.Key("raw_log"), json.Bool(log.Header().IsRawLog());
    json.Key("header"), json.BeginArray();
    for (const HeaderRecord& record : log.Header().records) {
        json.BeginArray();
        json.Text(record.tag);
        json.Text(record.value);
        json.EndArray();
    }
    json.EndArray();
    json.Key("time_stamps"), json.Integer(static_cast<std::int64_t>(log.Times().timeStamps));
    time("first_time_stamp", log.Times().firstTimeStamp);
    time("last_time_stamp", log.Times().lastTimeStamp);
    time("first_time_tag", play ? play->firstTag : log.Times().firstTag);
    time("last_time_tag", play ? play->lastTag : log.Times().lastTag);
    if (play) {
        json.Key("instruments"), json.BeginArray();
        for (const PlayFacts::Instrument& instrument : play->instruments) {
            json.BeginObject();
            json.Key("instrument"), json.Text(instrument.name);
            json.Key("frames"), json.Integer(static_cast<std::int64_t>(instrument.frames));
            json.Key("dropped"), json.CountOrNull(instrument.dropped);
            json.Key("checksum_errors"), json.CountOrNull(instrument.checksumErrors);
            json.EndObject();
        }
        json.EndArray();
        json.Key("bytes_discarded"), json.Integer(static_cast<std::int64_t>(play->bytesDiscarded));
        WriteUnnamed(json, *play);
    }
    WriteFaults(json, FaultsOf(log, play));
    json.EndObject();
    json.EndLine();
}

void WriteLogText(COutput& output, const std::string& path, const CRawLogReader& log,
                  const PlayFacts* play) {
    auto time = [&](const char* label, const FrameTime& value) {
        if (!value.known)
            return;
        output.Text(label);
        WriteTime(output, value);
        output.Char('\n');
    };
    output.Foreign(path);
    output.Char('\n');
    output.Text(Format("  size              %llu bytes\n",
                       static_cast<unsigned long long>(log.BytesRead())));
    if (!log.Header().IsRawLog())
        output.Text("  no header: a plain capture, not a raw log\n");
    for (const HeaderRecord& record : log.Header().records) {
        output.Foreign(Format("  %-17s %s", record.tag.c_str(), record.value.c_str()));
        output.Char('\n');
    }
    output.Text(Format("  time stamps       %llu\n",
                       static_cast<unsigned long long>(log.Times().timeStamps)));
    time("  first time stamp  ", log.Times().firstTimeStamp);
    time("  last time stamp   ", log.Times().lastTimeStamp);
    time("  first time tag    ", play ? play->firstTag : log.Times().firstTag);
    time("  last time tag     ", play ? play->lastTag : log.Times().lastTag);
    if (!play)
        return;
    for (const PlayFacts::Instrument& instrument : play->instruments)
        output.Text(Format("  %-17s %llu frames, ", instrument.name.c_str(),
                           static_cast<unsigned long long>(instrument.frames)) +
                    CheckedCount(instrument.dropped.has_value(), instrument.dropped.value_or(0),
                                 "dropped") +
                    ", " +
                    CheckedCount(instrument.checksumErrors.has_value(),
                                 instrument.checksumErrors.value_or(0), "checksum errors") +
                    "\n");
    output.Text(Format("  bytes discarded   %llu\n",
                       static_cast<unsigned long long>(play->bytesDiscarded)));
}

} // namespace qor
