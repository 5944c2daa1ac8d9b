// SPDX-License-Identifier: GPL-3.0-or-later
//
// Changing instruments while they run. See InstrumentList.h.
#include "session/InstrumentList.h"

#include "base/Text.h"
#include "session/QorViewDoc.h"

#include <algorithm>

namespace qor {
namespace {

constexpr const char* NoSuchInstrument = "There is no such instrument in the session any more.";
constexpr std::size_t LongestTitle = 4096; // as in session files

std::string TitleFault(const std::string& title) {
    if (title.size() > LongestTitle)
        return Format("The title is longer than %zu bytes.", LongestTitle);
    const bool control = std::ranges::any_of(
        title, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
    return control ? "The title holds a control character; it is one line." : "";
}

InstrumentDefaults SettingsNow(const CQorViewIns& instrument) {
    InstrumentDefaults settings;
    settings.Immersed = instrument.Live.Immersed;
    settings.LogEnabled = instrument.LoggingEnabled;
    settings.AcquisitionEnabled = instrument.AcquisitionEnabled;
    settings.ErrorChecking = instrument.Checks.Enabled;
    settings.CounterCheck = instrument.Checks.CounterEnabled;
    settings.ChecksumCheck = instrument.Checks.ChecksumEnabled;
    settings.BeepOnError = instrument.Checks.BeepOnError;
    settings.Title = instrument.Title;
    return settings;
}

/// A check that is switched begins afresh: what came meanwhile says nothing.
void SetChecks(CQorViewIns& instrument, const InstrumentDefaults& settings, CMessageSink& sink) {
    CFrameChecks& checks = instrument.Checks;
    checks.BeepOnError = settings.BeepOnError;
    if (checks.Enabled == settings.ErrorChecking &&
        checks.CounterEnabled == settings.CounterCheck &&
        checks.ChecksumEnabled == settings.ChecksumCheck)
        return;
    checks.Enabled = settings.ErrorChecking;
    checks.CounterEnabled = settings.CounterCheck;
    checks.ChecksumEnabled = settings.ChecksumCheck;
    checks.SetUp(instrument.Definition(), instrument.ShownName(), instrument.ResourceName(), sink);
}

/// The roles of one handle go to another.
void HandOverRoles(CQorViewDoc& doc, InstrumentId from, InstrumentId to) REQUIRES(doc.DocLock) {
    for (const RoleRow& row : RoleTable)
        if (doc.Role(row.role) == from)
            doc.SetRole(row.role, to);
}

/// Attaches to the resource or, where that is refused, back to where the instrument was; there it
/// has a new handle too.
std::string Reattach(CQorViewDoc& doc, InstrumentId& instrument, CQorViewRes& target)
    REQUIRES(doc.DocLock) {
    const SessionState::FrameOwner owner = *doc.OwnerOf(instrument);
    const std::string name = owner.instrument->Name();
    CQorViewRes* place = &target;
    doc.Acquisition.TakeQueued(*owner.resource);
    const CommResult moved = doc.Controller()->AttachInstrument(name, target.Name());
    if (moved != CommResult::Success) {
        place = owner.resource;
        if (doc.Controller()->AttachInstrument(name, place->Name()) != CommResult::Success)
            return name + ": it could not be attached again; remove it and add it anew.";
    }
    doc.Acquisition.TakeQueued(
        *owner.resource); // what was cut in the meantime is its former handle's
    const auto id = static_cast<InstrumentId>(place->Comm.IdentityOf(name));
    auto anew =
        std::make_unique<CQorViewIns>(owner.instrument->Definition(), id, place->Name(), doc);
    anew->TakeOver(*owner.instrument);
    if (anew->AcquisitionEnabled)
        anew->AcquisitionEnabled = doc.Controller()->StartAcquisition(name) == CommResult::Success;
    std::erase_if(owner.resource->Instruments,
                  [instrument](const auto& one) { return one->Id == instrument; });
    place->Instruments.push_back(std::move(anew));
    doc.RebuildOwners();
    HandOverRoles(doc, instrument, id);
    instrument = id;
    return moved == CommResult::Success ? ""
                                        : name + " could not be attached to " + target.Name() +
                                              ". " + OneLine(CommDetail(moved));
}

} // namespace

InstrumentDefaults CInstrumentList::DefaultsOf(const std::string& name) {
    if (DefaultsPath.empty())
        return {};
    const InstrumentDefaultsReading reading = LoadInstrumentDefaults(DefaultsPath);
    if (reading.warnings != Told)
        for (const std::string& warning : reading.warnings)
            Doc.Raise({EventKind::SettingsFaulty, DefaultsPath, warning + "\r\n"});
    Told = reading.warnings;
    return reading.Of(name);
}

InstrumentDefaults CInstrumentList::Settings(InstrumentId instrument) const {
    CRecursiveLock lock(Doc.DocLock);
    const CQorViewIns* found = Doc.Find(instrument);
    return found ? SettingsNow(*found) : InstrumentDefaults();
}

std::string CInstrumentList::ChangeSettings(InstrumentId instrument,
                                            const InstrumentDefaults& settings) {
    if (std::string fault = TitleFault(settings.Title); !fault.empty())
        return fault;
    CRecursiveLock lock(Doc.DocLock);
    CQorViewIns* found = Doc.Find(instrument);
    if (!found)
        return NoSuchInstrument;
    found->Live.Immersed = settings.Immersed;
    found->LoggingEnabled = settings.LogEnabled;
    found->Title = settings.Title;
    SetChecks(*found, settings, Doc);
    Doc.NoteChange();
    return SetAcquisition(instrument, settings.AcquisitionEnabled);
}

std::string CInstrumentList::SetAcquisition(InstrumentId instrument, bool on) {
    CRecursiveLock lock(Doc.DocLock);
    CQorViewIns* found = Doc.Find(instrument);
    if (!found)
        return NoSuchInstrument;
    if (found->AcquisitionEnabled == on)
        return {};
    const std::string& name = found->Name();
    const CommResult result =
        on ? Doc.Controller()->StartAcquisition(name) : Doc.Controller()->StopAcquisition(name);
    if (result != CommResult::Success)
        return name + ": its acquisition could not be switched. " + OneLine(CommDetail(result));
    found->AcquisitionEnabled = on;
    found->Checks.BeginConnection(); // frames were missed, and nobody lost them
    Doc.NoteChange();
    return {};
}

std::string CInstrumentList::UseAsDefault(InstrumentId instrument) {
    std::string name;
    InstrumentDefaults settings;
    {
        CRecursiveLock lock(Doc.DocLock);
        const CQorViewIns* found = Doc.Find(instrument);
        if (!found)
            return NoSuchInstrument;
        name = found->Name();
        settings = SettingsNow(*found);
    }
    return SaveInstrumentDefaults(DefaultsPath, name, settings);
}

std::string CInstrumentList::ResetCounts(InstrumentId instrument) {
    CRecursiveLock lock(Doc.DocLock);
    CQorViewIns* found = Doc.Find(instrument);
    if (!found)
        return NoSuchInstrument;
    found->Checks.ResetCounts();
    Doc.NoteChange();
    return {};
}

std::string CInstrumentList::WhyNotMoved(InstrumentId instrument, ResourceId resource) const {
    CRecursiveLock lock(Doc.DocLock);
    const SessionState::FrameOwner* owner = Doc.OwnerOf(instrument);
    if (!owner)
        return NoSuchInstrument;
    if (!Doc.Find(resource))
        return "There is no such resource in the session any more.";
    if (owner->package)
        return owner->instrument->Name() + " belongs to the package " + owner->package->Name +
               ", whose instruments share a resource; remove the package and add it there.";
    return {};
}

std::string CInstrumentList::MoveInstrument(InstrumentId& instrument, ResourceId resource) {
    if (Doc.Packages.RefuseInCalibrationMode())
        return CPackageList::LockedText;
    if (std::string fault = WhyNotMoved(instrument, resource); !fault.empty())
        return fault;
    std::string fault;
    {
        const CSettledLock lock(Doc.DocLock, Doc.RawLog);
        fault = WhyNotMoved(instrument, resource); // again: it may have gone meanwhile
        CQorViewRes* target = Doc.Find(resource);
        if (fault.empty() && Doc.OwnerOf(instrument)->resource != target)
            fault = Reattach(Doc, instrument, *target);
    }
    Doc.RawLog.ShowPending();
    return fault;
}

} // namespace qor
