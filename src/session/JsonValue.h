// SPDX-License-Identifier: GPL-3.0-or-later
//
// A JSON text as a tree, for files that people and other programs write: sessions. Reading is
// bounded in time and memory whatever the bytes are; writing has one fixed form, so that the same
// tree gives the same bytes. Results in JSON Lines are not made here. Plain values, any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

struct JsonValue {
    enum class Kind : std::uint8_t { Null, Truth, Number, Text, Array, Object };

    Kind kind = Kind::Null;
    bool truth = false;
    std::string text;                ///< of a text, in UTF-8; of a number, as it is written
    std::vector<std::string> names;  ///< of an object's members, no two alike
    std::vector<JsonValue> elements; ///< of an array; the values of an object's members

    bool operator==(const JsonValue&) const = default;

    static JsonValue Array() { return Of(Kind::Array); }
    static JsonValue Object() { return Of(Kind::Object); }
    static JsonValue Text(std::string text) { return Of(Kind::Text, std::move(text)); }
    static JsonValue Truth(bool truth);
    /// Whole numbers in plain digits, others with the fewest that read back. One that is not finite
    /// has no place in JSON and becomes a text, which no reader takes for a number.
    static JsonValue Number(double number);

    /// Adds a member to an object, whatever members it has.
    void Add(std::string name, JsonValue value);
    /// The member of that name, or null.
    const JsonValue* Member(std::string_view name) const;
    /// Of a number.
    std::optional<double> AsNumber() const;

  private:
    static JsonValue Of(Kind kind, std::string text = {});
};

/// Where a value stands, as messages say it: "resources[0].instruments". A name that is no plain
/// word stands in brackets and quotes.
std::string MemberPlace(const std::string& object, std::string_view name);
std::string ElementPlace(const std::string& array, std::size_t index);

/// The text in double quotes for a message of one line: control characters escaped, cut to a few
/// dozen bytes.
std::string Quoted(std::string_view text);

struct JsonLimits {
    std::size_t bytes = std::size_t{16} << 20;
    std::size_t depth = 64;       ///< of arrays and objects
    std::size_t values = 100'000; ///< of the whole tree
};

/// What a text holds, or why it was refused: one line that says where.
struct JsonReading {
    JsonValue value;
    std::string fault; ///< empty: read
};
/// Refused too: two members of one name in an object, numbers beyond double's range.
JsonReading ReadJson(std::string_view bytes, const JsonLimits& limits = {});

/// The value in lines of at most 100 columns where that is possible, indented by two blanks, the
/// members in their order; ends in LF. An outermost object has each member on lines of its own.
std::string WriteJson(const JsonValue& value);

} // namespace qor
