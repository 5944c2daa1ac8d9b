// SPDX-License-Identifier: GPL-3.0-or-later
//
// The profile store in this user's registry: a section is a key below the store's own ("View1\Line"
// one within another), texts are its values. Names there have no case.
#pragma once

#include "session/KeptProfile.h"

#include <string>

namespace qor {

class CRegistryProfileStore : public CKeptProfileStore {
  public:
    /// Reads the key and all below it; a missing key is an empty store and no failure.
    FileCause Load(const std::string& root);

  protected:
    FileCause Save(const Places& changed) override;

  private:
    std::string Root;
};

} // namespace qor
