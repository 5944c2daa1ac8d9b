// SPDX-License-Identifier: GPL-3.0-or-later
//
// A file and a folder of its own for every test of files.
#pragma once

#include "fakes/TempFolder.h"
#include "platform/File.h"

#include <gtest/gtest.h>

namespace qor {

struct OpeningCase {
    std::string path;
    FileCause reading, creating;
};

class AFile : public testing::Test {
  protected:
    template <std::size_t Count> void ExpectCauses(const OpeningCase (&cases)[Count]) {
        for (const OpeningCase& row : cases) {
            EXPECT_EQ(File.OpenForReading(row.path), row.reading) << row.path;
            EXPECT_FALSE(File.IsOpen());
            EXPECT_EQ(File.CreateExclusive(row.path), row.creating) << row.path;
            File.Close();
        }
    }

    CTempFolder Temp;
    const std::string Folder = Temp.Path;
    CFile File;
};

} // namespace qor
