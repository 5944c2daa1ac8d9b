// SPDX-License-Identifier: GPL-3.0-or-later
//
// Instrument packages: a zip archive with a properties file and the definitions of instruments that
// work together. This room reads one; CPackageList keeps those of the session. Any thread, no lock:
// what was read belongs to the caller.
#pragma once

#include "base/MessageSink.h"
#include "instrument/Instrument.h"
#include "session/UserService.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// The keys of "Properties.txt".
struct PackageProperties {
    std::string name;
    std::string baudRate = "19200";
    bool baudRateFound = false;
};

/// Reads the lines of "Properties.txt".
PackageProperties ParseProperties(std::string_view text);

/// A definition of the package that was loaded.
struct PackageMember {
    std::string name; ///< the member's name, in UTF-8 with "/" between its parts
    std::unique_ptr<CInstrument> instrument;
    std::string text = {}; ///< of the definition, where it was asked for
};

/// A member that gave no instrument.
struct FailedMember {
    std::string name;
    DefinitionStatus status = DefinitionStatus::NoError; ///< what loading gave, once extracted
    /// As far as it was read, with its parse log; null when the member could not be extracted.
    std::unique_ptr<CInstrument> instrument;
};

/// What reading a package gave.
struct LoadedPackage {
    bool ok = false; ///< the properties could be read and some instrument was loaded
    std::string path;
    std::string name; ///< that of the properties or, where they have none, the file's
    std::string baudRate = "19200";
    std::vector<std::string> messages;  ///< for the operator, in order
    std::vector<PackageMember> members; ///< in archive order
    std::vector<FailedMember> failed;   ///< in archive order; each is the subject of a message
};

/// Bounds of what a package may hold. A package beyond the first three is refused; of the
/// definitions those that go beyond theirs cannot be extracted.
struct PackageLimits {
    static constexpr std::uint64_t ArchiveBytes = 64U << 20;
    static constexpr std::size_t Members = 1024;
    static constexpr std::uint64_t DirectoryBytes = 2U << 20; ///< the archive's own directory

    static constexpr std::uint64_t PropertiesBytes = 1U << 20;
    static constexpr std::uint64_t DefinitionBytes = 16U << 20;
    static constexpr std::uint64_t AllDefinitionsBytes = 32U << 20; ///< that are inflated
    /// Bytes of all definitions outside of comments: what loading them takes memory for.
    static constexpr std::uint64_t AllContentBytes = 1U << 20;
    static constexpr std::uint64_t LineBytes = 1U << 20;
};

/// Reads a package file and tells nobody. Definitions are loaded as they are inflated; nothing is
/// written to the disk.
LoadedPackage ReadPackage(const std::string& path);
/// The same; members keep their definitions' texts, for whoever judges those.
LoadedPackage ReadPackageTexts(const std::string& path);

/// The same; then shows the messages to the user and sends the parse logs of definitions that
/// failed to the sink. Not under a lock.
LoadedPackage LoadPackage(const std::string& path, CUserService& user, CMessageSink& sink);

} // namespace qor
