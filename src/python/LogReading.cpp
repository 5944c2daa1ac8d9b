// SPDX-License-Identifier: GPL-3.0-or-later
#include "python/LogReading.h"

#include "base/NearName.h"
#include "base/Text.h"
#include "export/ManifestCheck.h"
#include "platform/FileErrorText.h"
#include "session/FrameWatch.h"
#include "session/SessionFile.h"
#include "session/SessionOpener.h"

namespace qor {

namespace {

std::string TextOf(const Refusal& refusal) {
    return refusal.subject + ": " + refusal.reason;
}

} // namespace

ReadFault TakeSession(const std::string& path, LogCall& call) {
    SessionReading reading = LoadSession(path);
    if (reading.session)
        if (const std::string fault = SessionFault(*reading.session); !fault.empty())
            reading.refusal = path + ": " + fault;
    if (!reading.refusal.empty())
        return {reading.refusal, true};
    call.instruments.session = std::move(reading.session);
    call.warnings = std::move(reading.warnings);
    return {};
}

void TakeManifest(LogCall& call) {
    if (!call.instruments.Empty() || IsDevice(call.path))
        return;
    InstrumentSelection found = CManifestCheck(call.path, false).Selection();
    call.instruments.definitions = std::move(found.definitions);
    call.instruments.packages = std::move(found.packages);
}

CLogReading::CLogReading()
    : Document(Clock, MakeSystemSerialPort, Nobody, Profile), Playback(Document, 0) {
    Document.SessionLog.KeepText = false; // a damaged file reports without end
}

ReadFault CLogReading::Open(const LogCall& call) {
    Path = call.path;
    if (call.instruments.Empty())
        return {Path + ": no definition, package or session is named, and no manifest beside it "
                       "names any that are there; give definitions=[...]."};
    if (IsDirectory(Path))
        return {Path + ": is a folder; name a raw log in it.", true};
    if (!Playback.Open(Path, call.instruments))
        return {Path + ": " + Playback.OpenFault(), true};
    for (const Refusal& refusal : Playback.Set().Refusals())
        return {TextOf(refusal), refusal.kind != Refusal::Kind::Name};
    Warned = call.warnings;
    for (const Refusal& warning : Playback.Set().Warnings())
        Warned.push_back(TextOf(warning));
    if (Playback.Instruments().empty())
        return {Path + ": no instrument to read it with; name definitions that give one."};
    return {};
}

std::vector<std::string> CLogReading::Names() const {
    std::vector<std::string> names;
    for (const CQorViewIns* instrument : Playback.Instruments())
        names.push_back(instrument->Name());
    return names;
}

ReadFault CLogReading::Find(const std::string& name, CQorViewIns*& found) const {
    for (CQorViewIns* instrument : Playback.Instruments())
        if (instrument->Name() == name) {
            found = instrument;
            return {};
        }
    const std::vector<std::string> names = Names();
    return {Path + ": it is read with no instrument of the name \"" + name + "\"." +
            NameAdvice(name, names)};
}

ReadFault CLogReading::Play(const FrameHook& seen) {
    const CFrameWatch watch(Document, seen);
    while (Playback.PlayBatch()) {
    }
    const CommResult result = Playback.Result();
    if (result == CommResult::Success)
        return {};
    return {Path + ": could not be read to its end (" +
                Format("0x%08x", static_cast<unsigned>(result)) + "). " +
                (PackingOf(Path) == Packing::None
                     ? "Copy it again from where it was logged."
                     : "It is compressed: the archive is cut short or damaged."),
            true};
}

} // namespace qor
