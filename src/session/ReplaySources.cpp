// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/ReplaySources.h"

#include "platform/Folder.h"
#include "session/FileKind.h"
#include "session/Playback.h"
#include "session/PressureSource.h"
#include "session/UserService.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::uint64_t LookedAt = 4u << 20; ///< bytes of a log
constexpr std::size_t MostFiles = 500;       ///< of a folder

/// A document that tells nobody and keeps nothing.
struct QuietDocument {
    CSystemClock clock;
    CNobody nobody;
    CMemoryProfileStore profile;
    CQorViewDoc doc{clock, MakeSystemSerialPort, nobody, profile};

    QuietDocument() { doc.SessionLog.KeepText = doc.SessionLog.KeepFile = false; }
};

std::vector<std::string> InstrumentFilesBeside(const std::string& logPath) {
    std::vector<std::string> packages, definitions;
    const std::string folder = FolderPartOf(logPath);
    for (const std::string& name : NamesIn(folder)) {
        if (packages.size() + definitions.size() >= MostFiles)
            break;
        const std::string path = folder + name;
        const FileKind kind = KindByName(path);
        if (kind == FileKind::Package)
            packages.push_back(path);
        else if (kind == FileKind::Definition)
            definitions.push_back(path);
    }
    packages.insert(packages.end(), definitions.begin(), definitions.end());
    return packages;
}

/// The instruments that a file brings into a session of its own.
std::vector<std::string> NamesOfFile(const std::string& file) {
    QuietDocument quiet;
    CSessionSetup setup(quiet.doc);
    std::vector<std::string> names;
    SerialResourceSettings none;
    none.portName = "none";
    const ResourceId port = quiet.doc.AddSerialResource(none);
    setup.AddAll({.definitions = {file}}, port);
    for (const ResourceStatus& resource : quiet.doc.Snapshot().resources)
        for (const InstrumentFigures& instrument : resource.instruments)
            names.push_back(instrument.name);
    return names;
}

} // namespace

std::vector<std::string> DefinitionsBeside(const std::string& logPath) {
    const std::vector<std::string> files = InstrumentFilesBeside(logPath);
    QuietDocument quiet;
    CPlayback playback(quiet.doc, 0);
    if (files.empty() || !playback.Open(logPath, {.definitions = files}))
        return {};
    while (playback.Figures().bytesReceived < LookedAt && playback.PlayBatch()) {
    }
    std::vector<std::string> sending, found;
    for (const CQorViewIns* instrument : playback.Instruments())
        if (instrument->FramesReceived > 0)
            sending.push_back(instrument->Name());
    for (const std::string& file : files) {
        bool brings = false;
        for (const std::string& name : NamesOfFile(file))
            // Whoever had the name first has the frames.
            brings = std::erase(sending, name) > 0 || brings;
        if (brings)
            found.push_back(file);
    }
    return found;
}

LogOutline OutlineLog(const std::string& logPath, const SessionRecord& session,
                      const std::atomic<bool>& stop) {
    LogOutline outline;
    QuietDocument quiet;
    CPlayback playback(quiet.doc, 0);
    if (!playback.Open(logPath, {.session = session}))
        return outline;
    CHistory& history = quiet.doc.History;
    std::vector<CHistoryWatch> depths; // casts are told while something is watched
    for (const CQorViewIns* instrument : playback.Instruments())
        if (const CSensor* pressure = PressureSensorOf(*instrument))
            depths.emplace_back(history,
                                history.Watch({instrument->Name(), SensorName(*pressure)}));
    std::uint32_t casts = 0;
    const CFrameWatch times(quiet.doc, [&](CQorViewIns& instrument, const FrameCheckResult&) {
        CRecursiveLock lock(quiet.doc.DocLock);
        const FrameTime time = MomentOf(quiet.doc, instrument);
        if (!time.known)
            return;
        outline.end = SecondsOf(time);
        outline.begin = outline.begin.value_or(*outline.end);
        const CCastDetector* detector =
            depths.empty() ? nullptr : history.CastsOf(instrument.Name());
        if (!detector || !detector->Current() || detector->Current()->number == casts)
            return;
        casts = detector->Current()->number;
        outline.castBegins.push_back(detector->Current()->begin);
    });
    while (!stop && playback.PlayBatch()) {
    }
    return outline;
}

} // namespace qor
