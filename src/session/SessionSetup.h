// SPDX-License-Identifier: GPL-3.0-or-later
//
// Filling a document with instruments: definition files and packages on a resource, immersion and
// roles by name. What cannot be used is a value, so that every face can say it in its own way.
// Called on the thread that commands the document, without its lock.
#pragma once

#include "session/QorViewDoc.h"
#include "session/Refusal.h"
#include "session/SessionRecord.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// A role for an instrument by its name.
struct RoleAssignment {
    std::string name;
    InstrumentRole role;
};
/// Reads NAME=ROLE; empty when it is none.
std::optional<RoleAssignment> ParseRole(std::string_view text);

/// The instruments of a call or a form, and what is said of them.
struct InstrumentSelection {
    std::vector<std::string> definitions = {};
    std::vector<std::string> packages = {};
    bool allWet = false;
    std::vector<std::string> wet = {}; ///< names
    std::vector<RoleAssignment> roles = {};
    PackageOptions packageOptions = {};           ///< of every package
    DerivedChoice derived = DerivedChoice::Usual; ///< of every package that a log is played with
    /// Whose instruments, roles and immersion join these, where a log is played.
    std::optional<SessionRecord> session = {};

    bool Empty() const { return definitions.empty() && packages.empty() && !session; }
};

/// The files that are read for a call: those given, those of the selection, of a session, and the
/// session's own when it has a path.
std::vector<std::string> FilesOf(const InstrumentSelection& selection,
                                 const std::optional<SessionRecord>& session,
                                 const std::string& sessionPath,
                                 std::vector<std::string> files = {});

/// The names of all instruments, in the order of their adding.
std::vector<std::string> InstrumentNames(const CQorViewDoc& doc);

/// The names of a call for roles and immersion that none of the known instruments has.
std::vector<Refusal> UnknownNames(const InstrumentSelection& selection,
                                  std::span<const std::string> known);

/// The settings of a port for a run of so many ports: frames wait for a session that is held up.
SerialResourceSettings RunPort(SerialResourceSettings settings, std::size_t ports);

class CSessionSetup {
  public:
    explicit CSessionSetup(CQorViewDoc& doc) : Doc(doc) {}

    /// Give the handle of what was added, or None.
    InstrumentId AddDefinition(const std::string& path, ResourceId resource);
    PackageId AddPackage(LoadedPackage loaded, ResourceId resource,
                         const PackageSettings& settings);
    /// The files that a call names, definitions and packages in their order; a file of either kind
    /// may stand in either list.
    void AddAll(const InstrumentSelection& selection, ResourceId resource);
    /// Immersion and roles, over all resources.
    void ApplyNames(const InstrumentSelection& selection);
    /// Whether a raw log of all instruments could be taken apart again; once they are complete.
    void JudgeReplay();

    void Refuse(Refusal::Kind kind, std::string subject, std::string reason,
                bool hasParseLog = false);

    /// In the order in which they came.
    const std::vector<Refusal>& Refusals() const { return Refused; }
    /// What is used and yet may not be what was meant: definitions with repaired or dropped lines.
    const std::vector<Refusal>& Warnings() const { return Warned; }
    /// Definitions that are used and can never give a frame.
    const std::vector<Refusal>& Silent() const { return Frameless; }
    /// Instruments whose frames a raw log of the session would hold and not give back.
    const std::vector<Refusal>& Unreplayable() const { return Tangled; }

  private:
    void AddFile(const std::string& path, ResourceId resource, const PackageSettings& settings);
    void Judge(const CInstrument& definition, const std::string& subject, Refusal::Kind kind);

    CQorViewDoc& Doc;
    std::vector<Refusal> Refused, Warned, Frameless, Tangled;
};

} // namespace qor
