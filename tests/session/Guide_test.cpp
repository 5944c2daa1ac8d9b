// SPDX-License-Identifier: GPL-3.0-or-later
//
// The definitions that the guide shows, tried on the bytes and held to the values that it shows.
#include "session/FrameTrial.h"

#include "base/Text.h"
#include "fakes/DefinedInstrument.h"
#include "instrument/DefinitionVerdict.h"

#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <sstream>

using namespace qor;
using testing::IsEmpty;

namespace {

/// What the guide shows of an instrument, by the kind of the block.
using Blocks = std::map<std::string, std::string>;

/// The blocks whose first line has a kind and a name, by that name.
std::map<std::string, Blocks> ReadGuide() {
    std::ifstream guide(QORVIEW_SOURCE_DIR "/docs/file-formats.md");
    std::map<std::string, Blocks> found;
    std::string line;
    std::string* block = nullptr;
    while (std::getline(guide, line)) {
        if (line.ends_with('\r'))
            line.pop_back();
        if (line.starts_with("```")) {
            std::istringstream words(line.substr(3));
            std::string kind, name;
            block = words >> kind >> name ? &found[name][kind] : nullptr;
        } else if (block) {
            *block += line + "\n";
        }
    }
    return found;
}

std::string BytesOf(const Blocks& blocks) {
    std::string bytes;
    if (const auto text = blocks.find("text"); text != blocks.end()) {
        std::istringstream lines(text->second);
        for (std::string line; std::getline(lines, line);)
            bytes += DecodeEscapes(line);
        return bytes;
    }
    std::istringstream digits(blocks.at("hex"));
    for (std::string pair; digits >> pair;)
        bytes += DecodeEscapes("\\x" + pair);
    return bytes;
}

/// The value with as many decimals as the guide shows.
std::string ShownAs(const TriedField& field, const std::string& shown) {
    if (field.text)
        return "\"" + Printable(*field.text) + "\"";
    if (!field.number)
        return "none";
    const std::size_t point = shown.find('.');
    return FixedNumber(*field.number,
                       point == std::string::npos ? 0 : static_cast<int>(shown.size() - point - 1));
}

TEST(Guide, DefinitionsGiveTheValuesThatItShows) {
    const std::map<std::string, Blocks> guide = ReadGuide();
    ASSERT_GE(guide.size(), 6u);
    for (const auto& [name, blocks] : guide) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(blocks.contains("definition") && blocks.contains("values"));
        const auto instrument = Define(blocks.at("definition"));
        EXPECT_EQ(instrument->DiagnosticCount(), 0) << instrument->ParseLog();
        for (const DefinitionHint& mistake : MistakesIn(*instrument, blocks.at("definition")))
            ADD_FAILURE() << mistake.line << ": " << mistake.text;
        CFrameTrial trial(*instrument);
        trial.Take(AsBytes(BytesOf(blocks)));
        const FrameTrialResult result = trial.Finish();
        ASSERT_TRUE(result.first) << result.nearest->cause;
        EXPECT_TRUE(result.Passed());
        EXPECT_TRUE(result.discarded == 0 || instrument->SyncHeader().empty());
        std::istringstream values(blocks.at("values"));
        std::string sensor, shown;
        for (const TriedField& field : result.first->fields) {
            ASSERT_TRUE(values >> sensor >> std::ws && std::getline(values, shown));
            EXPECT_EQ(field.sensor->Type + "(" + field.sensor->Id + ")", sensor);
            EXPECT_EQ(ShownAs(field, shown), shown) << sensor;
        }
        EXPECT_FALSE(values >> sensor) << "a value of no field: " << sensor;
    }
}

} // namespace
