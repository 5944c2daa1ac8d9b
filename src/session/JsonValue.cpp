// SPDX-License-Identifier: GPL-3.0-or-later
//
// The tree, the places in it, and its one written form. See JsonValue.h.
#include "session/JsonValue.h"

#include "base/Text.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

constexpr std::size_t LongestQuote = 48;
constexpr std::size_t Columns = 100;

bool IsPlainWord(std::string_view name) {
    const auto plain = [](char c) {
        return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' ||
               c == '_';
    };
    return !name.empty() && name.size() <= LongestQuote && std::ranges::all_of(name, plain);
}

void AppendEscaped(std::string& out, std::string_view text) {
    out += '"';
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            (out += '\\') += c;
        else if (byte >= 0x20 && byte != 0x7F)
            out += c;
        else
            out += c == '\n'   ? "\\n"
                   : c == '\r' ? "\\r"
                   : c == '\t' ? "\\t"
                               : Format("\\u%04x", byte);
    }
    out += '"';
}

/// Writes values that fit on the rest of a line as one line, others in several.
class CJsonLayout {
  public:
    explicit CJsonLayout(std::string& out) : Out(out) {}

    void Value(const JsonValue& value, std::size_t indent, bool inLines) {
        const std::size_t column = Out.size() - LineBegin;
        if (!inLines && OneLine(value, column + 1 < Columns ? Columns - 1 - column : 0))
            return; // one column is left for a comma
        if (value.kind != JsonValue::Kind::Array && value.kind != JsonValue::Kind::Object) {
            Scalar(value);
            return;
        }
        const bool object = value.kind == JsonValue::Kind::Object;
        Out += object ? '{' : '[';
        for (std::size_t i = 0; i < value.elements.size(); ++i) {
            if (i > 0)
                Out += ',';
            NewLine(indent + 2);
            if (object)
                Name(value.names[i]);
            Value(value.elements[i], indent + 2, false);
        }
        if (!value.elements.empty())
            NewLine(indent);
        Out += object ? '}' : ']';
    }

  private:
    void NewLine(std::size_t indent) {
        Out += '\n';
        LineBegin = Out.size();
        Out.append(indent, ' ');
    }

    void Name(const std::string& name) {
        AppendEscaped(Out, name);
        Out += ": ";
    }

    void Scalar(const JsonValue& value) {
        switch (value.kind) {
        case JsonValue::Kind::Truth:
            Out += value.truth ? "true" : "false";
            return;
        case JsonValue::Kind::Number:
            Out += value.text;
            return;
        case JsonValue::Kind::Text:
            AppendEscaped(Out, value.text);
            return;
        case JsonValue::Kind::Null:
        case JsonValue::Kind::Array:
        case JsonValue::Kind::Object:
            break;
        }
        Out += "null";
    }

    /// Appends the value as one line of at most so many bytes; false, and nothing appended, when it
    /// does not fit.
    bool OneLine(const JsonValue& value, std::size_t room) {
        const std::size_t begin = Out.size();
        if (AppendInline(value, begin + room))
            return true;
        Out.resize(begin);
        return false;
    }

    bool AppendInline(const JsonValue& value, std::size_t end) {
        if (value.kind != JsonValue::Kind::Array && value.kind != JsonValue::Kind::Object) {
            if (value.text.size() > Columns)
                return false;
            Scalar(value);
            return Out.size() <= end;
        }
        const bool object = value.kind == JsonValue::Kind::Object;
        Out += object ? '{' : '[';
        for (std::size_t i = 0; i < value.elements.size(); ++i) {
            Out += i > 0 ? ", " : object ? " " : "";
            if (object && value.names[i].size() > Columns)
                return false;
            if (object)
                Name(value.names[i]);
            if (Out.size() > end || !AppendInline(value.elements[i], end))
                return false;
        }
        Out += object ? value.elements.empty() ? "}" : " }" : "]";
        return Out.size() <= end;
    }

    std::string& Out;
    std::size_t LineBegin = 0;
};

} // namespace

JsonValue JsonValue::Of(Kind kind, std::string text) {
    JsonValue value;
    value.kind = kind;
    value.text = std::move(text);
    return value;
}

JsonValue JsonValue::Truth(bool truth) {
    JsonValue value = Of(Kind::Truth);
    value.truth = truth;
    return value;
}

JsonValue JsonValue::Number(double number) {
    constexpr double MostPlain = 1e15; // beyond, zeros would stand for digits
    if (std::floor(number) == number && std::abs(number) < MostPlain)
        return Of(Kind::Number, std::to_string(static_cast<std::int64_t>(number)));
    return Of(std::isfinite(number) ? Kind::Number : Kind::Text, ShortestNumber(number));
}

void JsonValue::Add(std::string name, JsonValue value) {
    names.push_back(std::move(name));
    elements.push_back(std::move(value));
}

const JsonValue* JsonValue::Member(std::string_view name) const {
    const auto found = std::ranges::find(names, name);
    return found == names.end() ? nullptr
                                : &elements[static_cast<std::size_t>(found - names.begin())];
}

std::optional<double> JsonValue::AsNumber() const {
    return kind == Kind::Number ? WholeNumber(text) : std::nullopt;
}

std::string MemberPlace(const std::string& object, std::string_view name) {
    if (!IsPlainWord(name))
        return object + '[' + Quoted(name) + ']';
    return object.empty() ? std::string(name) : object + '.' + std::string(name);
}

std::string ElementPlace(const std::string& array, std::size_t index) {
    return array + '[' + std::to_string(index) + ']';
}

std::string Quoted(std::string_view text) {
    std::size_t end = std::min(text.size(), LongestQuote);
    while (end < text.size() && end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end; // not within a character
    std::string quoted;
    AppendEscaped(quoted, text.substr(0, end));
    return end < text.size() ? quoted + "..." : quoted;
}

std::string WriteJson(const JsonValue& value) {
    std::string text;
    CJsonLayout(text).Value(value, 0, value.kind == JsonValue::Kind::Object);
    return text + '\n';
}

} // namespace qor
