// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/DefinitionJson.h"

namespace qor {

namespace {

void WriteSensor(CJsonWriter& json, const CSensor& sensor) {
    json.BeginObject();
    json.Key("index"), json.Integer(sensor.Index);
    json.Key("type"), json.Text(sensor.Type);
    json.Key("id"), json.Text(sensor.Id);
    json.Key("units"), json.Text(sensor.Units);
    json.Key("offset"), json.Integer(sensor.ByteOffset);
    json.Key("length"), json.Integer(sensor.FieldLength);
    json.Key("variable"), json.Bool(sensor.VariableLength);
    json.Key("variable_index");
    if (sensor.VariableIndex >= 0)
        json.Integer(sensor.VariableIndex);
    else
        json.Null();
    json.Key("data_type"), json.Text(KeywordOf(sensor.Data));
    json.Key("fit_type"), json.Text(KeywordOf(sensor.Fit));
    json.Key("gain_ranges"), json.Integer(sensor.GainRanges);
    json.Key("line"), json.Integer(sensor.LineNumber);
    json.Key("coefficients"), json.BeginArray();
    for (const std::vector<double>& set : sensor.Coefficients) {
        json.BeginArray();
        for (double coefficient : set)
            json.Number(coefficient);
        json.EndArray();
    }
    json.EndArray();
    json.Key("inttime");
    if (sensor.IntegrationTime)
        json.Integer(sensor.IntegrationTime->Index);
    else
        json.Null();
    json.EndObject();
}

} // namespace

void WriteDefinition(CJsonWriter& json, std::string_view file, const CInstrument& instrument,
                     DefinitionStatus status, const DefinitionHints& hints,
                     const std::function<void(const CSensor&)>& progress) {
    json.BeginObject();
    json.Key("file"), json.Path(file);
    json.Key("ok"), json.Bool(status == DefinitionStatus::Success);
    json.Key("status"), json.Code(static_cast<std::uint32_t>(status));
    json.Key("kind"), json.Text(instrument.FileKind());
    json.Key("log"), json.Text(instrument.ParseLog());
    json.Key("instrument"), json.Text(instrument.Name());
    json.Key("serial"), json.Text(instrument.SerialNumber());
    json.Key("sync_header"), json.Text(instrument.SyncHeader());
    json.Key("frame_type"), json.Text(instrument.Type() == FrameType::Fixed ? "Fixed" : "Variable");
    json.Key("frame_size"), json.Integer(instrument.FrameSize());
    json.Key("lines_read"), json.Integer(instrument.LinesRead());
    json.Key("bad_format_lines"), json.Integer(instrument.BadFormatLines());
    json.Key("diagnostics"), json.Integer(instrument.DiagnosticCount());
    json.Key("terminator"), json.Text(instrument.Terminator());
    json.Key("field_delimiter"), json.Text(instrument.FieldDelimiter());
    json.Key("sensors"), json.BeginArray();
    for (const CSensor& sensor : instrument.Sensors()) {
        WriteSensor(json, sensor);
        if (progress)
            progress(sensor);
    }
    json.EndArray();
    json.Key("hints"), json.BeginArray();
    for (const DefinitionHint& hint : hints) {
        json.BeginObject();
        json.Key("line"), json.Integer(hint.line);
        json.Key("text"), json.Text(hint.text);
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
}

namespace {

/// What could not be extracted has a name and nothing to say of itself.
void WriteFailed(CJsonWriter& json, const FailedMember& member) {
    if (member.instrument) {
        WriteDefinition(json, member.name, *member.instrument, member.status);
        return;
    }
    json.BeginObject();
    json.Key("file"), json.Path(member.name);
    json.Key("ok"), json.Bool(false);
    json.Key("status"), json.Null();
    json.EndObject();
}

} // namespace

void WritePackageJson(COutput& output, const LoadedPackage& package,
                      const std::vector<DefinitionHints>& hints) {
    CJsonWriter json(output);
    json.BeginObject();
    json.Key("file"), json.Path(package.path);
    json.Key("ok"), json.Bool(package.ok);
    json.Key("kind"), json.Text("Instrument Package File");
    json.Key("name"), json.Path(package.name);
    json.Key("baud_rate"), json.Text(package.baudRate);
    json.Key("messages"), json.BeginArray();
    for (const std::string& message : package.messages)
        json.Path(message); // a member's name is UTF-8
    json.EndArray();
    json.Key("instruments"), json.BeginArray();
    for (std::size_t i = 0; i < package.members.size(); ++i)
        WriteDefinition(json, package.members[i].name, *package.members[i].instrument,
                        DefinitionStatus::Success, hints[i]);
    json.EndArray();
    json.Key("failed"), json.BeginArray();
    for (const FailedMember& member : package.failed)
        WriteFailed(json, member);
    json.EndArray();
    json.EndObject();
    json.EndLine();
}

} // namespace qor
