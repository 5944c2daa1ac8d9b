// SPDX-License-Identifier: GPL-3.0-or-later
//
// The profile store in a settings file: sections in brackets, lines of "key=value". A reader sees
// the old file or the new one, never a half.
#pragma once

#include "session/KeptProfile.h"

#include <string>
#include <string_view>

namespace qor {

class CFileProfileStore : public CKeptProfileStore {
  public:
    /// Reads the file. A missing file or folder is an empty store and no failure.
    FileCause Load(const std::string& path);

  protected:
    FileCause Save(const Places& changed) override;

  private:
    void Parse(std::string_view text);
    std::string Compose() const;

    std::string Path;
};

} // namespace qor
