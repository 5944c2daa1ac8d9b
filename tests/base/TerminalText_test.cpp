// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/TerminalText.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

TEST(TerminalText, ShowsWhatATerminalWouldObey) {
    const struct {
        std::string_view text, lines, line;
    } cases[] = {
        {"\x1b]0;x\a\x1b[2J", "\\x1b]0;x\\x07\\x1b[2J", "\\x1b]0;x\\x07\\x1b[2J"},
        {"a\tb\r\nc\n", "a\tb\r\nc\n", "a\\x09b\\x0d\\x0ac\\x0a"},
        {"a\rb\r", "a\\x0db\\x0d", "a\\x0db\\x0d"},
        {{"\0\x7f", 2}, "\\x00\\x7f", "\\x00\\x7f"},
        {"\x9b 31m\xc2\x9b\xc2\xa0", "\\x9b 31m\\xc2\\x9b\xc2\xa0", "\\x9b 31m\\xc2\\x9b\xc2\xa0"},
        {"\xe2\x80\xae\xe2\x81\xa6\xe2\x80\xaf", "\\xe2\\x80\\xae\\xe2\\x81\\xa6\xe2\x80\xaf",
         "\\xe2\\x80\\xae\\xe2\\x81\\xa6\xe2\x80\xaf"},
        {"20 \xc2\xb0"
         "C \xf0\x9f\x8c\x8a \\x1b",
         "20 \xc2\xb0"
         "C \xf0\x9f\x8c\x8a \\x1b",
         "20 \xc2\xb0"
         "C \xf0\x9f\x8c\x8a \\x1b"},
        {"\xb0\xc2", "\\xb0\\xc2", "\\xb0\\xc2"}, // the next piece may begin with 0x9b
        {"\xc0\x9b\xe0\x82\x9b", "\\xc0\\x9b\\xe0\\x82\\x9b", "\\xc0\\x9b\\xe0\\x82\\x9b"},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.lines);
        EXPECT_EQ(TerminalText(one.text, TerminalLayout::Lines), one.lines);
        EXPECT_EQ(TerminalText(one.text, TerminalLayout::OneLine), one.line);
    }
}

} // namespace
} // namespace qor
