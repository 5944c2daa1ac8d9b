// SPDX-License-Identifier: GPL-3.0-or-later
//
// Forms and the session: each form filled from what the session has, and what its OK does there.
// Called on the thread that commands the document, without its lock; what applies gives what was
// wrong as one sentence, empty when it was done.
#pragma once

#include "session/QorViewDoc.h"
#include "views/LogForms.h"
#include "views/SourceForms.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qor {

/// Names of the session's ports and files.
std::vector<std::string> ResourceNames(const CQorViewDoc& doc);

/// What a form says of a resource, instrument or package without asking: name and text, in UTF-8.
using FormFacts = std::vector<std::pair<std::string, std::string>>;

/// A port of the session; nothing when it has gone or is a file.
std::optional<PortForm> PortFormOf(const CQorViewDoc& doc, ResourceId port);
/// Whether it is tried again when it is lost.
bool IsTriedAgain(const CQorViewDoc& doc, ResourceId port);
FormFacts FactsOf(const CQorViewDoc& doc, ResourceId resource);
std::string ApplyPort(CQorViewDoc& doc, ResourceId port, const PortForm& form, bool reconnect);

FormFacts FactsOf(const CQorViewDoc& doc, InstrumentId instrument);
bool IsInPackage(const CQorViewDoc& doc, InstrumentId instrument);

/// A package of the session; nothing when it has gone.
std::optional<PackageForm> PackageFormOf(const CQorViewDoc& doc, PackageId package);
FormFacts FactsOf(const CQorViewDoc& doc, PackageId package);

RolesForm RolesFormOf(const CQorViewDoc& doc);
/// The instruments that may have a role, and the one that has it, by the bytes of their names.
std::vector<std::string> Candidates(const RolesForm& form, InstrumentRole role);
std::string ApplyRoles(CQorViewDoc& doc, const RolesForm& form);

StationInformation StationOf(const CQorViewDoc& doc);
/// What was changed in the form since it was opened.
std::string ApplyStation(CQorViewDoc& doc, const StationInformation& opened,
                         const StationInformation& form);
LogNamingMode NamingModeOf(const CQorViewDoc& doc);

LogOptionsForm LogOptionsFormOf(const CQorViewDoc& doc);
std::string ApplyLogOptions(CQorViewDoc& doc, const LogOptionsForm& form);

NamingForm NamingFormOf(const CQorViewDoc& doc);
/// As ApplyStation.
std::string ApplyNaming(CQorViewDoc& doc, const NamingForm& opened, const NamingForm& form);
/// The next log in a few words: "(TIME STAMP) in /data, station S4."
std::string FirstLogText(const CQorViewDoc& doc);

/// The program's, whatever the session has; all but the text size, which is the face's.
SettingsForm SettingsFormOf(const CQorViewDoc& doc);
/// Keeps them. The session takes over a session log that was changed, and opens it anew.
void ApplySettings(CQorViewDoc& doc, const SettingsForm& form);

TareForm TareFormOf(const CQorViewDoc& doc);
std::string ApplyTare(CQorViewDoc& doc, const TareForm& form);

/// A comment for the session log, with the time at which the key was pressed; every white space a
/// blank.
void ReportComment(CQorViewDoc& doc, const std::string& stamp, const std::string& text);

} // namespace qor
