// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/CalibrationDiff.h"

#include "base/Text.h"
#include "instrument/Calibration.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace qor {

namespace {

std::string NameOf(const CSensor& sensor) {
    return sensor.Type + "(" + sensor.Id + ")";
}

std::string CoefficientText(const CSensor& sensor) {
    std::string text;
    for (const std::vector<double>& set : sensor.Coefficients) {
        text += text.empty() ? "" : ";";
        for (const double coefficient : set) {
            text += text.empty() ? "" : " ";
            text += ShortestNumber(coefficient);
        }
    }
    return text;
}

struct SensorField {
    std::string_view name;
    std::string (*text)(const CSensor& sensor);
    bool isPlace = false; ///< says where the field stands, not what it means
};
constexpr std::string_view CoefficientField = "coefficients";
constexpr SensorField SensorFields[] = {
    {"units", [](const CSensor& s) { return s.Units; }},
    {"data_type", [](const CSensor& s) { return std::string(KeywordOf(s.Data)); }},
    {"fit_type", [](const CSensor& s) { return std::string(KeywordOf(s.Fit)); }},
    {"length",
     [](const CSensor& s) {
         return s.VariableLength ? std::string("V") : std::to_string(s.FieldLength);
     }},
    {CoefficientField, CoefficientText},
    {"inttime",
     [](const CSensor& s) { return s.IntegrationTime ? NameOf(*s.IntegrationTime) : ""; }},
    {"offset",
     [](const CSensor& s) { return s.VariableLength ? "" : std::to_string(s.ByteOffset); }, true},
    {"variable_index",
     [](const CSensor& s) { return s.VariableIndex < 0 ? "" : std::to_string(s.VariableIndex); },
     true},
};

struct DefinitionField {
    std::string_view name;
    std::string (*text)(const CInstrument& instrument);
};
constexpr DefinitionField DefinitionFields[] = {
    {"instrument", [](const CInstrument& i) { return i.Name(); }},
    {"serial", [](const CInstrument& i) { return i.SerialNumber(); }},
    {"sync_header", [](const CInstrument& i) { return i.SyncHeader(); }},
    {"frame_type",
     [](const CInstrument& i) {
         return std::string(i.Type() == FrameType::Fixed ? "Fixed" : "Variable");
     }},
    {"frame_size", [](const CInstrument& i) { return std::to_string(i.FrameSize()); }},
    {"terminator", [](const CInstrument& i) { return i.Terminator(); }},
    {"field_delimiter", [](const CInstrument& i) { return i.FieldDelimiter(); }},
};

template <class Row, std::size_t Count, class Thing>
std::vector<FieldChange> ChangesOf(const Row (&rows)[Count], const Thing& before,
                                   const Thing& after) {
    std::vector<FieldChange> changes;
    for (const Row& row : rows) {
        FieldChange change{row.name, row.text(before), row.text(after)};
        if (change.before != change.after)
            changes.push_back(std::move(change));
    }
    return changes;
}

bool IsPlace(const FieldChange& change) {
    return std::ranges::any_of(SensorFields, [&change](const SensorField& field) {
        return field.isPlace && field.name == change.field;
    });
}

/// What tells a sensor from the others: which of its type and id it is.
class CSensorKeys {
  public:
    std::string Next(const CSensor& sensor) {
        const std::string name = ToLower(NameOf(sensor));
        return name + '\n' + std::to_string(++Seen[name]);
    }

  private:
    std::map<std::string, int> Seen;
};

std::optional<SensorChange> ChangeOf(const SensorPair& pair) {
    if (!pair.before || !pair.after)
        return SensorChange{pair.before ? "gone" : "added", pair.before, pair.after, {}};
    SensorChange change{"changed", pair.before, pair.after,
                        ChangesOf(SensorFields, *pair.before, *pair.after)};
    if (change.fields.empty())
        return {};
    if (std::ranges::all_of(change.fields, IsPlace))
        change.kind = "moved";
    return change;
}

void WriteFields(COutput& output, const std::string& begin,
                 const std::vector<FieldChange>& fields) {
    for (const FieldChange& field : fields) {
        output.Foreign(begin + std::string(field.field) + ": " + Printable(field.before) + " -> " +
                       Printable(field.after));
        output.Char('\n');
    }
}

void WriteSets(CJsonWriter& json, const CSensor& sensor) {
    json.BeginArray();
    for (const std::vector<double>& set : sensor.Coefficients) {
        json.BeginArray();
        for (const double coefficient : set)
            json.Number(coefficient);
        json.EndArray();
    }
    json.EndArray();
}

void WriteFields(CJsonWriter& json, const std::vector<FieldChange>& fields,
                 const SensorChange* sensor) {
    json.BeginArray();
    for (const FieldChange& field : fields) {
        const bool sets = sensor && field.field == CoefficientField;
        json.BeginObject();
        json.Key("field"), json.Text(field.field);
        json.Key("before"), sets ? WriteSets(json, *sensor->before) : json.Text(field.before);
        json.Key("after"), sets ? WriteSets(json, *sensor->after) : json.Text(field.after);
        json.EndObject();
    }
    json.EndArray();
}

void WriteIndex(CJsonWriter& json, const char* key, const CSensor* sensor) {
    json.Key(key);
    sensor ? json.Integer(sensor->Index) : json.Null();
}

std::string PercentText(std::optional<double> share) {
    return share ? GeneralNumber(*share * 100.0, 3) + " %" : "none";
}

void WriteValues(COutput& output, const DiffReport& report) {
    output.Foreign("values of " + std::to_string(report.values->Frames()) + " frames in " +
                   report.log);
    output.Char('\n');
    for (const CValueChanges::Sensor& sensor : report.values->Sensors()) {
        if (sensor.changes.Largest().value_or(0.0) == 0.0 && sensor.lost + sensor.gained == 0)
            continue;
        std::string line = "  " + NameOf(*sensor.pair.before) + ": largest change " +
                           PercentText(sensor.changes.Largest()) + ", median " +
                           PercentText(sensor.changes.Median());
        if (sensor.lost + sensor.gained > 0)
            line += Format("; %llu values lost, %llu gained",
                           static_cast<unsigned long long>(sensor.lost),
                           static_cast<unsigned long long>(sensor.gained));
        output.Foreign(line);
        output.Char('\n');
    }
}

void WriteValues(CJsonWriter& json, const DiffReport& report) {
    json.Key("file"), json.Path(report.log);
    json.Key("frames"), json.Integer(static_cast<std::int64_t>(report.values->Frames()));
    json.Key("values"), json.BeginArray();
    for (const CValueChanges::Sensor& sensor : report.values->Sensors()) {
        json.BeginObject();
        json.Key("type"), json.Text(sensor.pair.before->Type);
        json.Key("id"), json.Text(sensor.pair.before->Id);
        json.Key("values"), json.Integer(static_cast<std::int64_t>(sensor.changes.Count()));
        json.Key("largest"), json.NumberOrNull(sensor.changes.Largest());
        json.Key("median"), json.NumberOrNull(sensor.changes.Median());
        json.Key("lost"), json.Integer(static_cast<std::int64_t>(sensor.lost));
        json.Key("gained"), json.Integer(static_cast<std::int64_t>(sensor.gained));
        json.EndObject();
    }
    json.EndArray();
}

} // namespace

std::vector<SensorPair> PairSensors(const CInstrument& before, const CInstrument& after) {
    std::map<std::string, const CSensor*> others;
    CSensorKeys ofAfter, ofBefore, again;
    for (const CSensor& sensor : after.Sensors())
        others[ofAfter.Next(sensor)] = &sensor;
    std::vector<SensorPair> pairs;
    for (const CSensor& sensor : before.Sensors()) {
        const auto found = others.extract(ofBefore.Next(sensor));
        pairs.push_back({&sensor, found.empty() ? nullptr : found.mapped()});
    }
    for (const CSensor& sensor : after.Sensors())
        if (others.contains(again.Next(sensor)))
            pairs.push_back({nullptr, &sensor});
    return pairs;
}

CalibrationDiff CompareCalibrations(const CInstrument& before, const CInstrument& after) {
    CalibrationDiff diff;
    diff.definition = ChangesOf(DefinitionFields, before, after);
    for (const SensorPair& pair : PairSensors(before, after))
        if (std::optional<SensorChange> change = ChangeOf(pair))
            diff.sensors.push_back(std::move(*change));
    return diff;
}

/// A change from nothing is relative to nothing.
void CRelativeChanges::Take(double before, double after) {
    const double change = before == after ? 0.0 : std::abs((after - before) / before);
    if (!std::isfinite(change))
        return;
    Most = std::max(Most.value_or(0.0), change);
    if (Taken++ % Stride != 0)
        return;
    if (Kept.size() == MostKept) {
        for (std::size_t i = 0; i < MostKept / 2; ++i)
            Kept[i] = Kept[2 * i];
        Kept.resize(MostKept / 2);
        Stride *= 2;
        if ((Taken - 1) % Stride != 0)
            return;
    }
    Kept.push_back(change);
}

std::optional<double> CRelativeChanges::Median() const {
    if (Kept.empty())
        return {};
    std::vector<double> sorted = Kept;
    std::sort(sorted.begin(), sorted.end());
    const std::size_t middle = sorted.size() / 2;
    return sorted.size() % 2 != 0 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2.0;
}

CValueChanges::CValueChanges(const CInstrument& before, const CInstrument& after) : Plan(after) {
    for (const SensorPair& pair : PairSensors(before, after))
        if (pair.before && pair.after && KindOfValue(*pair.before) == ValueKind::Number &&
            KindOfValue(*pair.after) == ValueKind::Number)
            Numbers.push_back({pair, {}, 0, 0});
}

void CValueChanges::Take(ByteSpan frame, bool immersed, const FrameValues& before) {
    ++FrameCount;
    Plan.Convert(frame, immersed, After);
    for (Sensor& sensor : Numbers) {
        const auto from = static_cast<std::size_t>(sensor.pair.before->Index);
        const auto to = static_cast<std::size_t>(sensor.pair.after->Index);
        const bool was = before.statuses[from] == ConversionStatus::Good;
        const bool is = After.statuses[to] == ConversionStatus::Good;
        if (was && is)
            sensor.changes.Take(before.numbers[from], After.numbers[to]);
        sensor.lost += was && !is;
        sensor.gained += is && !was;
    }
}

void WriteDiffText(COutput& output, const DiffReport& report) {
    const CalibrationDiff& diff = report.diff;
    output.Foreign(report.before + " -> " + report.after);
    output.Text(diff.Alike()
                    ? ": alike\n"
                    : Format(": %zu differences\n", diff.definition.size() + diff.sensors.size()));
    WriteFields(output, "  ", diff.definition);
    for (const SensorChange& sensor : diff.sensors) {
        const std::string name = NameOf(sensor.before ? *sensor.before : *sensor.after);
        if (sensor.fields.empty()) {
            output.Foreign("  " + name + ": " + std::string(sensor.kind));
            output.Char('\n');
        }
        WriteFields(output, "  " + name + ": ", sensor.fields);
    }
    if (report.values)
        WriteValues(output, report);
}

void WriteDiffJson(COutput& output, const DiffReport& report) {
    CJsonWriter json(output);
    json.BeginObject();
    json.Key("before"), json.Path(report.before);
    json.Key("after"), json.Path(report.after);
    json.Key("alike"), json.Bool(report.diff.Alike());
    json.Key("definition"), WriteFields(json, report.diff.definition, nullptr);
    json.Key("sensors"), json.BeginArray();
    for (const SensorChange& change : report.diff.sensors) {
        const CSensor& sensor = change.before ? *change.before : *change.after;
        json.BeginObject();
        json.Key("kind"), json.Text(change.kind);
        json.Key("type"), json.Text(sensor.Type);
        json.Key("id"), json.Text(sensor.Id);
        WriteIndex(json, "index_before", change.before);
        WriteIndex(json, "index_after", change.after);
        json.Key("fields"), WriteFields(json, change.fields, &change);
        json.EndObject();
    }
    json.EndArray();
    if (report.values)
        WriteValues(json, report);
    json.EndObject();
    json.EndLine();
}

} // namespace qor
