// SPDX-License-Identifier: GPL-3.0-or-later
//
// Names of columns. See ColumnHeads.h.
#include "export/ColumnHeads.h"

#include "base/Text.h"
#include "export/Json.h"

#include <set>

namespace qor {

namespace {

/// Names of columns that every program takes: letters, digits, dots, single underscores. Names that
/// differ only in case are different ones only to some.
void MakeSimple(std::vector<ColumnHead>& heads) {
    std::set<std::string> taken;
    for (ColumnHead& head : heads) {
        std::string& name = head.name;
        std::string simple;
        for (char c : name) {
            const bool safe =
                IsDigit(c) || c == '.' || (ToLower({&c, 1}) >= "a" && ToLower({&c, 1}) <= "z");
            if (safe)
                simple += c;
            else if (!simple.empty() && simple.back() != '_')
                simple += '_';
        }
        if (simple.ends_with('_'))
            simple.pop_back();
        name = simple.empty() ? "column" : simple;
        const std::string stem = name;
        for (int number = 2; !taken.insert(ToLower(name)).second; ++number)
            name = stem + "_" + std::to_string(number);
    }
}

} // namespace

ColumnHead HeadOfSensor(const CSensor& sensor, std::string_view suffix) {
    ColumnHead head{sensor.Type + "_" + sensor.Id, sensor.Type + "(" + sensor.Id + ")",
                    sensor.Units, "number", true};
    if (!suffix.empty())
        head.name.append("_").append(suffix), head.title.append(" ").append(suffix);
    return head;
}

ColumnHead HeadOfProduct(const std::string& label, const std::string& units,
                         std::string_view suffix) {
    ColumnHead head{label, label, units, "number", true};
    if (!suffix.empty())
        head.name.append("_").append(suffix), head.title.append(" ").append(suffix);
    return head;
}

void NameColumns(std::vector<ColumnHead>& heads, bool simple) {
    if (simple)
        return MakeSimple(heads);
    for (ColumnHead& head : heads)
        head.name = head.quantity ? head.title + " [" + head.units + "]" : head.title;
}

void WriteHeads(COutput& output, const std::vector<ColumnHead>& heads, bool safeTexts) {
    const char* separator = "";
    for (const ColumnHead& head : heads) {
        output.Text(separator);
        WriteCsvField(output, head.name, safeTexts);
        separator = ",";
    }
    output.Text("\r\n");
}

void WriteColumnsJson(COutput& output, const std::vector<ColumnHead>& heads, std::string_view url) {
    CJsonWriter json(output);
    json.BeginObject();
    json.Key("@context"), json.Text("http://www.w3.org/ns/csvw");
    json.Key("url"), json.Path(url);
    json.Key("tableSchema"), json.BeginObject();
    json.Key("columns"), json.BeginArray();
    for (const ColumnHead& head : heads) {
        json.BeginObject();
        json.Key("name"), json.Path(head.name);
        json.Key("titles"), json.Path(head.title);
        json.Key("units"), json.Path(head.units);
        json.Key("datatype"), json.Text(head.dataType);
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    json.EndObject();
    json.EndLine();
}

/// Decided: CSV is UTF-8. A text that is none, as from a definition with a Latin-1 sign of degree,
/// is taken byte by byte as in JSON.
void WriteCsvField(COutput& output, std::string_view text, bool safe) {
    if (!IsUtf8(text)) {
        WriteCsvField(output, Utf8Of(text), safe);
        return;
    }
    constexpr std::string_view FormulaStarts = "=+-@\t\r";
    const bool formula = safe && !text.empty() && FormulaStarts.find(text[0]) != text.npos;
    if (!formula && text.find_first_of("\",\r\n") == std::string_view::npos) {
        output.Foreign(text);
        return;
    }
    std::string field = formula ? "\"'" : "\"";
    for (char c : text)
        field += c == '"' ? "\"\"" : std::string(1, c);
    output.Foreign(field + '"');
}

} // namespace qor
