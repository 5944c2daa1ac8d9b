// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/SessionForms.h"

#include "base/Text.h"
#include "products/GpsSentence.h"
#include "products/Spectrum.h"
#include "session/PortText.h"
#include "session/PressureTare.h"
#include "session/ProgramSettings.h"
#include "telemetry/CommResult.h"
#include "views/NumberText.h"
#include "views/PortWords.h"
#include "views/SessionPages.h"

#include <algorithm>

namespace qor {

namespace {

constexpr const char* GoneResource = "There is no such resource in the session any more.";

std::string OrNone(std::string text) {
    return text.empty() ? "none" : text;
}

std::string RolesText(const CQorViewDoc& doc, InstrumentId instrument) {
    std::string text;
    for (const RoleRow& row : RoleTable)
        if (doc.Role(row.role) == instrument)
            text += (text.empty() ? "" : ", ") + std::string(row.title);
    return text;
}

std::string JoinedNames(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + Utf8Of(name);
    return text;
}

/// The logs of an interval run with one name are told apart by numbers.
void NumberNames(LogNaming& naming, const LogOptions& options) {
    naming.numbered = naming.logNamingMode == LogNamingMode::UserFileName &&
                      (options.repeatEnabled || options.everyEnabled);
}

} // namespace

std::vector<std::string> ResourceNames(const CQorViewDoc& doc) {
    std::vector<std::string> names;
    for (const ResourceStatus& resource : doc.Snapshot().resources)
        names.push_back(resource.name);
    return names;
}

std::optional<PortForm> PortFormOf(const CQorViewDoc& doc, ResourceId port) {
    const SessionSnapshot now = doc.Snapshot();
    const ResourceStatus* found = now.Find(port);
    if (!found || found->isFile)
        return std::nullopt;
    return FormOf(found->serial);
}

bool IsTriedAgain(const CQorViewDoc& doc, ResourceId port) {
    CRecursiveLock lock(doc.DocLock);
    const CQorViewRes* found = doc.Find(port);
    return found && found->Reconnect;
}

FormFacts FactsOf(const CQorViewDoc& doc, ResourceId resource) {
    const SessionSnapshot now = doc.Snapshot();
    const ResourceStatus* found = now.Find(resource);
    if (!found)
        return {};
    std::vector<std::string> instruments;
    for (const InstrumentFigures& instrument : found->instruments)
        instruments.push_back(instrument.name);
    FormFacts facts{{found->isFile ? "File" : "Port", found->name}, {"State", WordOf(*found).text}};
    if (found->isFile && found->fileSize > 0)
        facts.emplace_back("Size", CountText(found->fileSize) + " bytes, played " +
                                       CountText(found->filePosition));
    facts.emplace_back("Frames",
                       CountText(found->frames) + ", " +
                           CheckedText(found->checksCounter, found->dropped, "dropped") + ", " +
                           CheckedText(found->checksSum, found->checksumErrors, "checksum errors"));
    facts.emplace_back("Instruments", OrNone(JoinedNames(instruments)));
    return facts;
}

std::string ApplyPort(CQorViewDoc& doc, ResourceId port, const PortForm& form, bool reconnect) {
    const std::optional<SerialResourceSettings> wanted = SettingsOf(form);
    if (!wanted)
        return "The line's settings cannot be used.";
    const SessionSnapshot now = doc.Snapshot();
    const ResourceStatus* found = now.Find(port);
    if (!found)
        return GoneResource;
    doc.SetReconnect(port, reconnect);
    SerialResourceSettings settings = found->serial;
    settings.baudRate = wanted->baudRate;
    settings.dataBits = wanted->dataBits;
    settings.parity = wanted->parity;
    settings.stopBits = wanted->stopBits;
    const bool same = LineTextOf(settings) == LineTextOf(found->serial);
    return same ? std::string() : doc.Sources.ModifyResource(port, settings);
}

FormFacts FactsOf(const CQorViewDoc& doc, InstrumentId instrument) {
    CRecursiveLock lock(doc.DocLock);
    const CQorViewIns* found = doc.Find(instrument);
    if (!found)
        return {};
    return {{"Name", Utf8Of(found->Name())},
            {"Port", found->ResourceName()},
            {"Definition", found->Definition().FilePath()},
            {"Roles", OrNone(RolesText(doc, instrument))},
            {"Frames", CountText(found->FramesReceived)}};
}

bool IsInPackage(const CQorViewDoc& doc, InstrumentId instrument) {
    CRecursiveLock lock(doc.DocLock);
    const auto* owner = doc.OwnerOf(instrument);
    return owner && owner->package;
}

std::optional<PackageForm> PackageFormOf(const CQorViewDoc& doc, PackageId package) {
    CRecursiveLock lock(doc.DocLock);
    const CPackage* found = doc.Find(package);
    return found ? std::optional(FormOf(found->Settings)) : std::nullopt;
}

FormFacts FactsOf(const CQorViewDoc& doc, PackageId package) {
    CRecursiveLock lock(doc.DocLock);
    const CPackage* found = doc.Find(package);
    if (!found)
        return {};
    return {{"Name", Utf8Of(found->Name)},
            {"File", found->Path},
            {"Speed", OrNone(Utf8Of(found->BaudRate))},
            {"Instruments", OrNone(JoinedNames(found->Instruments))}};
}

RolesForm RolesFormOf(const CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    RolesForm form;
    for (const auto& resource : doc.Resources)
        for (const auto& instrument : resource->Instruments) {
            const CInstrument& definition = instrument->Definition();
            form.instruments.push_back(instrument->Name());
            if (!SeriesOf(definition).empty())
                form.optical.push_back(instrument->Name());
            if (BringsPosition(definition))
                form.receivers.push_back(instrument->Name());
        }
    for (const RoleRow& row : RoleTable) {
        const CQorViewIns* holder = doc.RoleInstrument(row.role);
        form.holders[row.role] = holder ? holder->Name() : std::string();
    }
    return form;
}

std::vector<std::string> Candidates(const RolesForm& form, InstrumentRole role) {
    RolesForm asked = form;
    std::vector<std::string> candidates;
    for (const std::string& name : form.instruments) {
        asked.holders = {{role, name}};
        const bool holds = form.holders.contains(role) && form.holders.at(role) == name;
        if (holds || CheckForm(asked).Ok())
            candidates.push_back(name);
    }
    return candidates;
}

std::string ApplyRoles(CQorViewDoc& doc, const RolesForm& form) {
    for (const auto& [role, holder] : form.holders) {
        const InstrumentId wanted =
            holder.empty() ? InstrumentId::None : doc.FindInstrument(holder);
        if (!holder.empty() && wanted == InstrumentId::None)
            return "There is no instrument " + Utf8Of(holder) + " in the session any more.";
        if (doc.Role(role) == wanted)
            continue;
        if (std::string fault = doc.SetRole(role, wanted); !fault.empty())
            return fault;
    }
    return {};
}

StationInformation StationOf(const CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    return doc.Station;
}

std::string ApplyStation(CQorViewDoc& doc, const StationInformation& opened,
                         const StationInformation& form) {
    CRecursiveLock lock(doc.DocLock); // no log ends in between
    return doc.RawLog.SetStation(WithChanges(doc.Station, opened, form));
}

LogNamingMode NamingModeOf(const CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    return doc.Naming.logNamingMode;
}

LogOptionsForm LogOptionsFormOf(const CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    return FormOf(doc.Options, doc.RoleInstrument(InstrumentRole::Gps) != nullptr);
}

std::string ApplyLogOptions(CQorViewDoc& doc, const LogOptionsForm& form) {
    std::optional<LogOptions> options = SettingsOf(form);
    if (!options)
        return "The log options cannot be used.";
    if (!form.useRepeat) { // the form does not show them
        CRecursiveLock lock(doc.DocLock);
        options->everyEnabled = doc.Options.everyEnabled;
        options->every = doc.Options.every;
    }
    if (std::string fault = doc.RawLog.SetLogOptions(*options); !fault.empty())
        return fault;
    CRecursiveLock lock(doc.DocLock);
    LogNaming naming = doc.Naming;
    NumberNames(naming, doc.Options);
    return naming.numbered == doc.Naming.numbered ? std::string() : doc.RawLog.SetNaming(naming);
}

NamingForm NamingFormOf(const CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    NamingForm form = FormOf(doc.Naming, doc.Station);
    form.numbered = doc.Options.repeatEnabled || doc.Options.everyEnabled;
    return form;
}

std::string ApplyNaming(CQorViewDoc& doc, const NamingForm& opened, const NamingForm& form) {
    if (!SettingsOf(form))
        return "The naming of logs cannot be used.";
    CRecursiveLock lock(doc.DocLock);
    LogNaming naming = WithChanges(doc.Naming, opened, form);
    NumberNames(naming, doc.Options);
    return doc.RawLog.SetNaming(naming);
}

std::string FirstLogText(const CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    const std::string name = LogDisplayName(doc.Naming, doc.Station);
    const std::string folder =
        doc.Naming.logDirectory.empty() ? "the program's folder" : doc.Naming.logDirectory;
    const std::string station =
        doc.Station.stationId.empty() ? "no station" : "station " + doc.Station.stationId;
    return (name.empty() ? "no name yet" : name) + " in " + folder + ", " + station + ".";
}

SettingsForm SettingsFormOf(const CQorViewDoc& doc) {
    const ProgramSettings kept = ReadProgramSettings(doc.Profile);
    SettingsForm form;
    form.sessionLog = kept.sessionLog;
    form.sessionLogDirectory = kept.sessionLogDirectory;
    form.loggingSounds = kept.loggingSounds;
    return form;
}

void ApplySettings(CQorViewDoc& doc, const SettingsForm& form) {
    const SettingsForm kept = SettingsFormOf(doc);
    WriteProgramSettings(doc.Profile,
                         {form.sessionLog, form.sessionLogDirectory, form.loggingSounds});
    {
        CRecursiveLock lock(doc.DocLock);
        doc.Options.loggingSounds = form.loggingSounds;
    }
    if (form.sessionLog == kept.sessionLog && form.sessionLogDirectory == kept.sessionLogDirectory)
        return; // the session's own log stays where it is
    doc.SessionLog.SetFile(form.sessionLog, form.sessionLogDirectory);
    doc.SessionLog.OpenSessionLog();
}

TareForm TareFormOf(const CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    TareForm form;
    form.hasProfiler = doc.RoleInstrument(InstrumentRole::Profiler) != nullptr;
    if (doc.PressureTare)
        form.pressure = ShortestNumber(TareInDbar(doc, *doc.PressureTare));
    return form;
}

std::string ApplyTare(CQorViewDoc& doc, const TareForm& form) {
    const std::optional<double> dbar = SettingsOf(form);
    return dbar ? SetPressureTare(doc, *dbar) : "This is no pressure tare.";
}

void ReportComment(CQorViewDoc& doc, const std::string& stamp, const std::string& text) {
    doc.ReportMessage("Comment" + (stamp.empty() ? "" : " at " + stamp) + ": " + OneLine(text) +
                      "\r\n");
}

} // namespace qor
