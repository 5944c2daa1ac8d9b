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

} // namespace

void PlayFacts::NoteTime(const FrameTime& time) {
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
}

bool PlayFacts::HasChecksumErrors() const {
    return std::ranges::any_of(
        instruments, [](const Instrument& one) { return one.checksumErrors.value_or(0) > 0; });
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
    }
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
    output.Text(path + "\n");
    output.Text(Format("  size              %llu bytes\n",
                       static_cast<unsigned long long>(log.BytesRead())));
    if (!log.Header().IsRawLog())
        output.Text("  no header: a plain capture, not a raw log\n");
    for (const HeaderRecord& record : log.Header().records)
        output.Text(Format("  %-17s %s\n", record.tag.c_str(), record.value.c_str()));
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
