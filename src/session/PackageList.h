// SPDX-License-Identifier: GPL-3.0-or-later
//
// The packages of the session: adding and removing them, and the lock on the list while the session
// is in calibration mode. The instruments belong to the document; a package knows them by name.
// Operations are called on the thread that commands the document, without the document's lock (they
// show messages); what displays read is under it.
#pragma once

#include "products/PackageSettings.h"
#include "products/VelocityState.h"
#include "session/Package.h"
#include "session/QorViewDoc.h"

#include <memory>
#include <string>
#include <vector>

namespace qor {

/// A package of the session.
struct CPackage {
    std::string Name;
    std::string BaudRate; ///< as its properties have it
    std::string Path;
    std::vector<std::string> Instruments; ///< names, in archive order
    PackageSettings Settings;
};

/// A member of a package that the document did not take.
struct RefusedMember {
    std::string name;
    AddedInstrument added;
};

class CPackageList {
  public:
    /// The document lives longer.
    explicit CPackageList(CQorViewDoc& doc) : Doc(doc) {}

    /// While on, nothing can be added or removed.
    bool CalibrationMode = false;

    /// Shared by every package display; under the document's lock.
    VelocityState Velocity;

    /// Reads a package file and adds its instruments to a resource. Null, and nothing added, when
    /// no instrument came of it; the operator was told. Owned by the list.
    CPackage* AddPackage(const std::string& path, int resource);

    /// The same for a package that has been read, so that its resource can be brought up at its
    /// speed first (PackagePort). Members that were not taken join `refused` when given.
    CPackage* AddPackage(LoadedPackage loaded, int resource,
                         std::vector<RefusedMember>* refused = nullptr);

    /// Adds a file by its extension: a package, or the definition of a single instrument. False
    /// when it was not added; the operator or the session log says why.
    bool AddFile(const std::string& path, int resource);

    /// Asks, and on a yes removes the package and its instruments. False when it was not removed.
    bool RemovePackage(const CPackage* package);

    std::size_t Count() const;
    CPackage* Package(std::size_t index) const;
    /// The package that an instrument belongs to, or null.
    CPackage* PackageOf(std::string_view instrument) const;

    /// The package's instruments in its order; null for one that was removed.
    std::vector<const CLiveInstrument*> InstrumentsOf(const CPackage& package) const;

  private:
    bool RefuseInCalibrationMode();

    CQorViewDoc& Doc;
    std::vector<std::unique_ptr<CPackage>> Packages GUARDED_BY(Doc.DocLock);
};

/// The settings of a serial port for a package: at its baud rate, or as they are (the operator is
/// told) when that is no number.
SerialResourceSettings PackagePort(const LoadedPackage& loaded, SerialResourceSettings settings,
                                   CUserService& user);

} // namespace qor
