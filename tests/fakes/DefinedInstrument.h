// SPDX-License-Identifier: GPL-3.0-or-later
//
// Instruments from definition text written in a test.
#pragma once

#include "instrument/DefinitionReader.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace qor {

/// Loads the text as if it were the file "test.cal"; the test fails when the load does.
inline std::unique_ptr<CInstrument> Define(const std::string& text) {
    auto instrument = std::make_unique<CInstrument>();
    CDefinitionReader reader(*instrument, "test.cal");
    reader.Begin("test.cal");
    reader.Feed(text);
    EXPECT_EQ(reader.Finish(), DefinitionStatus::Success) << instrument->ParseLog();
    return instrument;
}

/// A fixed frame that begins with "HDR" (3 bytes), then the lines.
inline std::unique_ptr<CInstrument> DefineFixed(const std::string& lines) {
    return Define("INSTRUMENT HDR '' 3 AS 0 NONE\n" + lines);
}

/// A delimited frame that begins with "$TXT", then the lines, then CR LF.
inline std::unique_ptr<CInstrument> DefineDelimited(const std::string& lines) {
    return Define("VLF_INSTRUMENT $TXT '' 4 AS 0 NONE\n" + lines +
                  "TERMINATOR NONE '\\x0D\\x0A' 2 AS 0 DELIMITER\n");
}

} // namespace qor
