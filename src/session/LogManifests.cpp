// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/LogManifests.h"

#include "platform/WholeFile.h"
#include "session/FileKind.h"
#include "session/PortText.h"

#include <algorithm>
#include <utility>

namespace qor {

namespace {

/// What was counted since the log began; a count that begins anew counts from there.
std::uint64_t Since(std::uint64_t now, std::uint64_t before) {
    return now >= before ? now - before : now;
}

} // namespace

void CLogManifests::NoteSource(const std::string& path) {
    if (!Enabled)
        return;
    const std::string full = FullPathOf(path);
    std::string hash = Sha256OfFile(full);
    CRecursiveLock lock(Session.DocLock);
    Hashes[full] = std::move(hash);
}

void CLogManifests::NoteSession(const std::string& path) {
    const std::string full = path.empty() ? path : FullPathOf(path);
    if (!full.empty())
        NoteSource(full);
    CRecursiveLock lock(Session.DocLock);
    SessionPath = full;
}

void CLogManifests::Begin(const std::string& rawLog) {
    if (!Enabled)
        return;
    {
        CRecursiveLock lock(Session.DocLock);
        Before = Snapshot();
        Begun = Session.Clock.Now();
    }
    Hand({rawLog, {}});
}

ManifestSource CLogManifests::SourceOf(const std::string& path) const {
    const std::string full = FullPathOf(path);
    const auto found = Hashes.find(full);
    return {full, found == Hashes.end() ? std::string() : found->second};
}

LogManifest::Instrument CLogManifests::InstrumentOf(const InstrumentFigures& figures) {
    static const InstrumentFigures none;
    const InstrumentFigures* known = Before.Find(figures.id);
    const InstrumentFigures& before = known ? *known : none;
    LogManifest::Instrument instrument;
    instrument.name = figures.name;
    if (const SessionState::FrameOwner* owner = Session.OwnerOf(figures.id)) {
        instrument.name = owner->instrument->Name();
        const CPackage* package = owner->package;
        instrument.source =
            SourceOf(package ? package->Path : owner->instrument->Definition().FilePath());
        const auto count = package ? package->Instruments.size() : 0;
        for (std::size_t i = 0; i < count; ++i)
            if (package->Instruments[i] == instrument.name)
                instrument.member = package->Members[i];
    }
    instrument.received = Since(figures.frames, before.frames);
    instrument.logged = figures.framesThisLog;
    if (figures.checksCounter)
        instrument.dropped = Since(figures.dropped, before.dropped);
    if (figures.checksSum)
        instrument.checksumErrors = Since(figures.checksumErrors, before.checksumErrors);
    return instrument;
}

LogManifest::Port CLogManifests::PortOf(const ResourceStatus& resource) {
    static const ResourceFigures none;
    const ResourceStatus* known = Before.Find(resource.id);
    const ResourceFigures& before = known ? known->figures : none;
    LogManifest::Port port;
    port.name = resource.name;
    if (!resource.isFile)
        port.line = LineTextOf(resource.serial);
    port.bytesReceived = Since(resource.figures.bytesReceived, before.bytesReceived);
    port.bytesDiscarded = Since(resource.figures.bytesDiscarded, before.bytesDiscarded);
    port.bytesCutShort = Since(resource.figures.bytesCutShort, before.bytesCutShort);
    port.framesLost = Since(resource.figures.framesLost, before.framesLost);
    for (const InstrumentFigures& figures : resource.instruments)
        port.instruments.push_back(InstrumentOf(figures));
    return port;
}

void CLogManifests::End(const FinishedFile& file) {
    if (!Enabled)
        return;
    LogManifest manifest;
    manifest.log = LastPartOf(file.path);
    manifest.size = file.size;
    manifest.sha256 = file.sha256;
    manifest.program = "QorView " QORVIEW_VERSION;
    manifest.steps = file.steps;
    manifest.framesUnstored = file.framesUnstored;
    {
        CRecursiveLock lock(Session.DocLock);
        manifest.begin = Begun;
        manifest.end = Session.Clock.Now();
        if (!SessionPath.empty())
            manifest.session = SourceOf(SessionPath);
        for (const ResourceStatus& resource : Snapshot().resources)
            manifest.ports.push_back(PortOf(resource));
    }
    Hand({file.path, std::move(manifest)});
}

void CLogManifests::Hand(Job job) {
    CLock lock(JobLock);
    if (!Started)
        Started = Thread.Start(ThreadPriority::Normal, [this] { Run(); });
    if (Started)
        Jobs.push_back(std::move(job));
    else if (job.manifest)
        Faults.push_back(ManifestPathOf(job.rawLog) +
                         ": the manifest could not be written: the system has no thread to give.");
    Changed.NotifyAll();
}

void CLogManifests::Run() {
    for (;;) {
        std::vector<Job> taken;
        {
            CLock lock(JobLock);
            Changed.WaitFor(JobLock, CCondition::LostWakeMilliseconds,
                            [this]() REQUIRES(JobLock) { return Stopping || !Jobs.empty(); });
            taken.swap(Jobs);
            if (taken.empty() && Stopping)
                return;
        }
        for (const Job& job : taken)
            Do(job);
    }
}

void CLogManifests::Do(const Job& job) {
    std::string fault;
    bool there = false;
    if (!job.manifest) {
        if (LoadManifest(job.rawLog, there).fault.empty() &&
            !IsSymbolicLink(ManifestPathOf(job.rawLog)))
            static_cast<void>(RemoveFile(ManifestPathOf(job.rawLog))); // its log was replaced
        return;
    }
    // Windows gives a closed log free late; one whose size is not known then is there.
    const std::uint64_t size = FileSizeOf(job.rawLog);
    if (!FileExists(job.rawLog) || (size != 0 && size != job.manifest->size))
        fault = ManifestPathOf(job.rawLog) + ": the manifest was not written: its log is not there "
                                             "any more, or has another size.";
    else
        fault = SaveManifest(*job.manifest, job.rawLog);
    if (fault.empty())
        return;
    Messages.Report(fault + "\r\n");
    CLock lock(JobLock);
    Faults.push_back(std::move(fault));
}

std::vector<std::string> CLogManifests::TakeFaults() {
    CLock lock(JobLock);
    return std::exchange(Faults, {});
}

void CLogManifests::Stop() {
    {
        CLock lock(JobLock);
        if (!Started)
            return;
        Stopping = true;
    }
    Changed.NotifyAll();
    Thread.Join();
    CLock lock(JobLock);
    Started = Stopping = false;
}

} // namespace qor
