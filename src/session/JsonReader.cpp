// SPDX-License-Identifier: GPL-3.0-or-later
//
// From bytes to the tree. The library finds the tokens; the tree is ours, so that depth, number of
// values and names are bounded while it grows, and numbers keep their text.
#include "session/JsonValue.h"

#include "base/Text.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace qor {

namespace {

/// What the library calls while it reads; a false ends the reading.
class CTreeBuilder {
  public:
    CTreeBuilder(std::string_view bytes, const JsonLimits& limits) : Bytes(bytes), Limits(limits) {}

    JsonValue Root;
    std::string Fault;

    bool null() { return Put({}); }
    bool boolean(bool truth) { return Put(JsonValue::Truth(truth)); }
    bool number_integer(std::int64_t number) { return PutNumber(std::to_string(number)); }
    bool number_unsigned(std::uint64_t number) { return PutNumber(std::to_string(number)); }
    bool number_float(double, const std::string& text) {
        std::string plain = text;
        // The library reads with the locale's own decimal point.
        for (char& c : plain)
            if (!IsDigit(c) && c != '+' && c != '-' && c != 'e' && c != 'E')
                c = '.';
        return PutNumber(std::move(plain));
    }
    bool string(std::string& text) { return Put(JsonValue::Text(std::move(text))); }
    bool binary(nlohmann::json::binary_t&) { return false; } // never in a text
    bool start_object(std::size_t) { return Open(JsonValue::Object()); }
    bool start_array(std::size_t) { return Open(JsonValue::Array()); }
    bool end_array() { return Close(); }
    bool key(std::string& name) {
        Stack.back().names.push_back(std::move(name));
        return true;
    }
    bool end_object() {
        std::vector<std::string_view> names(Stack.back().names.begin(), Stack.back().names.end());
        std::ranges::sort(names);
        const auto twice = std::ranges::adjacent_find(names);
        if (twice != names.end())
            return Refuse(Place() + "the member " + Quoted(*twice) + " stands twice; keep one.");
        return Close();
    }
    bool parse_error(std::size_t position, const std::string&,
                     const nlohmann::json::exception& error) {
        const std::string_view before = Bytes.substr(0, position > 0 ? position - 1 : 0);
        const auto line = std::ranges::count(before, '\n') + 1;
        const std::size_t lineBegin = before.rfind('\n') + 1; // npos + 1 is 0
        return Refuse(Format("line %lld, column %zu: ", static_cast<long long>(line),
                             before.size() - lineBegin + 1) +
                      Cause(error) + '.');
    }

  private:
    /// The library's sentence without its label and the token, which may be of any length.
    static std::string Cause(const nlohmann::json::exception& error) {
        constexpr int NumberOverflow = 406;
        if (error.id == NumberOverflow)
            return "a number is beyond the range of numbers";
        std::string_view text = error.what();
        text = text.substr(0, text.find("; last read"));
        const std::size_t dash = text.find(" - ");
        return "this is no JSON: " +
               std::string(dash == std::string_view::npos ? "syntax error" : text.substr(dash + 3));
    }

    bool PutNumber(std::string text) {
        JsonValue value;
        value.kind = JsonValue::Kind::Number;
        value.text = std::move(text);
        return Put(std::move(value));
    }

    bool Put(JsonValue value) {
        if (!Count())
            return false;
        (Stack.empty() ? Root : Stack.back().elements.emplace_back()) = std::move(value);
        return true;
    }

    bool Open(JsonValue container) {
        if (Stack.size() >= Limits.depth)
            return Refuse(Format("nested deeper than %zu levels.", Limits.depth));
        if (!Count())
            return false;
        Stack.push_back(std::move(container));
        return true;
    }

    bool Close() {
        JsonValue done = std::move(Stack.back());
        Stack.pop_back();
        (Stack.empty() ? Root : Stack.back().elements.emplace_back()) = std::move(done);
        return true;
    }

    bool Count() {
        return ++Values <= Limits.values || Refuse(Format("more than %zu values.", Limits.values));
    }

    /// Where the innermost open container stands, with a colon; nothing for the outermost.
    std::string Place() const {
        std::string place;
        for (std::size_t i = 0; i + 1 < Stack.size(); ++i)
            place = Stack[i].kind == JsonValue::Kind::Object
                        ? MemberPlace(place, Stack[i].names.back())
                        : ElementPlace(place, Stack[i].elements.size());
        return place.empty() ? place : place + ": ";
    }

    bool Refuse(std::string fault) {
        Fault = std::move(fault);
        return false;
    }

    const std::string_view Bytes;
    const JsonLimits& Limits;
    std::vector<JsonValue> Stack; ///< the containers that are open
    std::size_t Values = 0;
};

} // namespace

JsonReading ReadJson(std::string_view bytes, const JsonLimits& limits) {
    if (bytes.size() > limits.bytes)
        return {{}, Format("larger than %zu bytes.", limits.bytes)};
    CTreeBuilder builder(bytes, limits);
    if (nlohmann::json::sax_parse(bytes.begin(), bytes.end(), &builder))
        return {std::move(builder.Root), {}};
    return {{}, std::move(builder.Fault)};
}

} // namespace qor
