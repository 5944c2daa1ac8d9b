// SPDX-License-Identifier: GPL-3.0-or-later
//
// Brings a session's records into an empty document: resources, then instruments, packages, roles,
// tare, and last calibration mode, which would lock the others out. What could not be opened is a
// refusal and is kept, so that it is there again when the session is saved. Called on the thread
// that commands the document, without its lock.
#pragma once

#include "session/InstrumentDefaults.h"
#include "session/KeptSession.h"
#include "session/SessionSetup.h"

#include <string>
#include <vector>

namespace qor {

/// What is wrong with the log's settings or the station of a session as a whole: its place and one
/// sentence; empty when they can be used.
std::string SessionFault(const SessionRecord& session);
LogNaming NamingOf(const LogRecord& log);

class CSessionOpener {
  public:
    CSessionOpener(CQorViewDoc& doc, CSessionSetup& setup, KeptSession& kept)
        : Doc(doc), Setup(setup), Kept(kept) {}

    /// Station, options, naming and where the session log goes.
    void ApplySettings(const SessionRecord& session);
    void OpenAll(const SessionRecord& session);
    /// Brings every instrument and package of a session onto one resource, with roles and
    /// immersion alone: for a log that is played. What is said of packages wins over the session.
    void OpenOn(ResourceId resource, const SessionRecord& session, const PackageOptions& said);

  private:
    struct OpenResource {
        ResourceId id = ResourceId::None;
        const ResourceRecord* record = nullptr;
        std::vector<LoadedPackage> packages; ///< in the order of the record
    };

    OpenResource AddResource(const ResourceRecord& record);
    OpenResource AddPort(const ResourceRecord& record);
    void AddInstruments(const OpenResource& resource);
    void AddPackages(OpenResource& resource, const PackageOptions& said = {});
    void AddMembers(PackageId package, const PackageRecord& record);
    void Settle(InstrumentId instrument, const InstrumentRecord& record);

    CQorViewDoc& Doc;
    CSessionSetup& Setup;
    KeptSession& Kept;
    void GiveRoles();

    std::size_t PortCount = 0;
    const InstrumentDefaultsReading* Played = nullptr; ///< Instruments.ini, where a log is played
    std::vector<std::pair<InstrumentRole, InstrumentId>> Roles;
};

} // namespace qor
