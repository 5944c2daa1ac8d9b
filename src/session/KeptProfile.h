// SPDX-License-Identifier: GPL-3.0-or-later
//
// A profile store that outlives the program: read once when the program starts, written back when
// something has changed. Used by the thread that commands the document. Two programs that write the
// same store: the last one wins.
#pragma once

#include "platform/File.h"
#include "session/ProfileStore.h"

#include <memory>
#include <set>
#include <string>
#include <string_view>

namespace qor {

class CKeptProfileStore : public CMemoryProfileStore {
  public:
    /// Writes back what has changed since it was loaded or last written. After a load that failed
    /// it refuses with that cause, so that settings which could not be read are not replaced.
    FileCause Flush();

    /// Why the store could not be read; None after a load that went well.
    FileCause LoadCause() const { return Cause; }

    void WriteText(const std::string& section, const std::string& key,
                   const std::string& value) override;

  protected:
    using Places = std::set<std::pair<std::string, std::string>>;

    /// The store was read, with this outcome; `Values` are what was found.
    FileCause Loaded(FileCause cause);
    virtual FileCause Save(const Places& changed) = 0;

  private:
    FileCause Cause = FileCause::InvalidFile; ///< until loaded
    Places Changed;
};

/// The settings of the program for this user, loaded: `qorview.ini` in the settings folder, on
/// Windows the registry unless that folder holds them (see platform/SettingsFolder.h).
std::unique_ptr<CKeptProfileStore> OpenProgramProfile();

/// The text with every byte that has a meaning in its place as "%XX": control bytes, "%", those of
/// `reserved`; blanks at either end, since readers trim.
std::string EscapeProfileText(std::string_view text, std::string_view reserved);
std::string UnescapeProfileText(std::string_view text);

} // namespace qor
