// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/ResourceList.h"

#include "base/Text.h"
#include "session/QorViewDoc.h"
#include "session/SessionFields.h"

#include <algorithm>

namespace qor {
namespace {

constexpr const char* NoSuchResource = "There is no such resource in the session any more.";
constexpr Range SpeedRange = {0.01, 1000};

std::string LineFault(const SerialResourceSettings& settings) {
    if (settings.baudRate < BaudRange.least || settings.baudRate > BaudRange.greatest)
        return Format("The speed %u is not in %.0f to %.0f.", settings.baudRate, BaudRange.least,
                      BaudRange.greatest);
    if (settings.dataBits < 5 || settings.dataBits > 8 || settings.parity > 4 ||
        settings.stopBits > 2)
        return "The line's format is not data bits 5 to 8, parity N, O, E, M or S and stop bits.";
    return {};
}

std::string Failure(const std::string& what, CommResult result) {
    return what + ". " + OneLine(CommDetail(result));
}

/// What comes from another place of a file says nothing about what came before.
void BeginAnew(CQorViewDoc& doc, CQorViewRes& resource) REQUIRES(doc.DocLock) {
    resource.BeginConnection();
    for (const auto& package : doc.PackageTable) {
        const bool concerned =
            std::ranges::any_of(package->Attached, [&](InstrumentId id) REQUIRES(doc.DocLock) {
                const SessionState::FrameOwner* owner = doc.OwnerOf(id);
                return owner && owner->resource == &resource;
            });
        if (!concerned)
            continue;
        package->Products = CPackageRows(package->Live, package->Settings, doc.Derived);
        doc.Velocity = {};
    }
}

} // namespace

std::string CResourceList::ModifyResource(ResourceId resource,
                                          const SerialResourceSettings& settings) {
    if (std::string fault = LineFault(settings); !fault.empty())
        return fault;
    SerialResourceSettings wanted;
    bool connected;
    {
        CRecursiveLock lock(Doc.DocLock);
        const CQorViewRes* found = Doc.Find(resource);
        if (!found)
            return NoSuchResource;
        if (found->IsFile())
            return found->Name() + " is a file and has no line settings.";
        connected = found->Comm.Figures().connected;
        wanted = settings;
        wanted.portName = found->Name();
    }
    if (connected)
        if (const CommResult result = Doc.DisconnectResource(resource);
            result != CommResult::Success)
            return Failure(wanted.portName + " could not be disconnected", result);
    {
        CRecursiveLock lock(Doc.DocLock);
        CQorViewRes* found = Doc.Find(resource);
        if (!found)
            return NoSuchResource;
        if (const CommResult result = Doc.Controller()->ModifyResource(wanted);
            result != CommResult::Success)
            return Failure(wanted.portName + " keeps its settings", result);
        found->Serial = wanted;
    }
    Doc.NoteChange();
    if (!connected)
        return {};
    const CommResult result = Doc.ConnectResource(resource);
    return result == CommResult::Success
               ? ""
               : Failure(wanted.portName + " could not be connected again", result);
}

std::string CResourceList::ResetAndConnect(ResourceId resource) {
    std::uint32_t code = 0;
    CommResult result = Doc.ResetAbort(resource, code);
    if (result == CommResult::Success)
        result = Doc.ConnectResource(resource);
    Doc.NoteChange();
    return result == CommResult::Success ? "" : Failure("The port could not be connected", result);
}

std::string CResourceList::ResetCounts(ResourceId resource) {
    CRecursiveLock lock(Doc.DocLock);
    CQorViewRes* found = Doc.Find(resource);
    if (!found)
        return NoSuchResource;
    for (const auto& instrument : found->Instruments)
        instrument->Checks.ResetCounts();
    found->Comm.ResetBytesDiscarded();
    Doc.NoteChange();
    return {};
}

std::string CResourceList::WhyNotAFile(ResourceId file) const {
    CRecursiveLock lock(Doc.DocLock);
    const CQorViewRes* found = Doc.Find(file);
    if (!found)
        return NoSuchResource;
    return found->IsFile() ? "" : found->Name() + " is a port; only a file is played.";
}

std::string CResourceList::Play(ResourceId file) {
    std::string fault = WhyNotAFile(file);
    if (fault.empty() && Doc.Acquisition.AtEnd(file))
        fault = Rewind(file);
    if (!fault.empty())
        return fault;
    CRecursiveLock lock(Doc.DocLock);
    CQorViewRes& found = *Doc.Find(file);
    found.Pace.Resume();
    found.Playing = true;
    Doc.NoteChange();
    return {};
}

std::string CResourceList::Pause(ResourceId file) {
    if (std::string fault = WhyNotAFile(file); !fault.empty())
        return fault;
    CRecursiveLock lock(Doc.DocLock);
    Doc.Find(file)->Playing = false;
    Doc.NoteChange();
    return {};
}

std::string CResourceList::Seek(ResourceId file, std::uint64_t offset) {
    if (std::string fault = WhyNotAFile(file); !fault.empty())
        return fault;
    CRecursiveLock lock(Doc.DocLock);
    CQorViewRes& found = *Doc.Find(file);
    if (offset > found.FileSize)
        return Format("%s has no byte %llu; it ends at %llu.", found.Name().c_str(),
                      static_cast<unsigned long long>(offset),
                      static_cast<unsigned long long>(found.FileSize));
    if (const CommResult result = found.Comm.SeekFile(offset); result != CommResult::Success)
        return found.Name() + " cannot be played from another place; the session log says why.";
    found.Pace.Restart(offset);
    BeginAnew(Doc, found);
    Doc.NoteChange();
    return {};
}

std::string CResourceList::SetSpeed(ResourceId file, double times) {
    if (std::string fault = WhyNotAFile(file); !fault.empty())
        return fault;
    if (times != 0 && !(times >= SpeedRange.least && times <= SpeedRange.greatest))
        return "Give a speed from 0.01 to 1000 times as recorded, or 0 for as fast as it goes.";
    CRecursiveLock lock(Doc.DocLock);
    Doc.Find(file)->Pace.SetSpeed(times);
    Doc.NoteChange();
    return {};
}

} // namespace qor
