// SPDX-License-Identifier: GPL-3.0-or-later
//
// The profile store in a settings file: sections in brackets, lines of "key=value". Read once when
// the program starts, written back as a whole; a reader sees the old file or the new one, never a
// half. Used by the thread that commands the document. Two programs that write the same file: the
// last one wins.
#pragma once

#include "platform/File.h"
#include "session/ProfileStore.h"

#include <string>
#include <string_view>

namespace qor {

class CFileProfileStore : public CMemoryProfileStore {
  public:
    /// Reads the file. A missing file or folder is an empty store and no failure. After any other
    /// failure the store is empty and Flush refuses, so that settings which could not be read are
    /// not replaced.
    FileCause Load(const std::string& path);

    /// Writes the file when something has changed since Load or the last Flush.
    FileCause Flush();

    void WriteText(const std::string& section, const std::string& key,
                   const std::string& value) override;

  private:
    void Parse(std::string_view text);
    std::string Compose() const;

    std::string Path;
    FileCause LoadCause = FileCause::InvalidFile; ///< until Load
    bool Changed = false;
};

} // namespace qor
