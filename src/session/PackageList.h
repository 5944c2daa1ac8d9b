// SPDX-License-Identifier: GPL-3.0-or-later
//
// The packages of the session: adding and removing them, and the lock on the list while the session
// is in calibration mode. The instruments belong to the document; a package knows them by name.
// Operations are called on the thread that commands the document, without the document's lock (they
// show messages); what displays read is under it.
#pragma once

#include "session/Package.h"
#include "session/SessionState.h"

#include <memory>
#include <string>
#include <vector>

namespace qor {

class CQorViewDoc;
struct AddedInstrument;

/// A member of a package that the document did not take.
struct RefusedMember {
    std::string name;
    CommResult comm = CommResult::Success;
};

class CPackageList {
  public:
    /// The document that it is a part of.
    explicit CPackageList(CQorViewDoc& doc) : Doc(doc) {}

    /// Reads a package file and adds its instruments to a resource. None, and nothing added, when
    /// no instrument came of it; the operator was told.
    PackageId AddPackage(const std::string& path, ResourceId resource);

    /// The same for a package that has been read, so that its resource can be brought up at its
    /// speed first (PackagePort). Members that were not taken join `refused` when given.
    PackageId AddPackage(LoadedPackage loaded, ResourceId resource,
                         const PackageSettings& settings = {},
                         std::vector<RefusedMember>* refused = nullptr);

    /// Adds a file by its extension: a package, or the definition of a single instrument. False
    /// when it was not added; the operator or the session log says why.
    bool AddFile(const std::string& path, ResourceId resource);

    /// Asks, and on a yes removes the package and its instruments. False when it was not removed.
    bool RemovePackage(PackageId package);

    /// Settings of a package; its products begin anew. What is wrong, or empty.
    std::string ChangeSettings(PackageId package, const PackageSettings& settings);

    /// The first package of a name, or None.
    PackageId Named(std::string_view name) const;

    /// What the operator is told while the list is locked.
    static constexpr const char* LockedText =
        "The Instrument Package List cannot be modified while in Calibration Mode.";

    /// Refuses, and tells the operator so, while the session is in calibration mode.
    bool RefuseInCalibrationMode();

  private:
    CQorViewDoc& Doc;
    std::uint32_t LastPackage = 0; ///< of the thread that commands the document
};

/// The settings of a serial port for a package: at its baud rate, or as they are (the operator is
/// told) when that is no number.
SerialResourceSettings PackagePort(const LoadedPackage& loaded, SerialResourceSettings settings,
                                   CUserService& user);

} // namespace qor
