// SPDX-License-Identifier: GPL-3.0-or-later
//
// The document while telemetry flows: connecting and disconnecting, taking frames and messages, and
// figures. Frames and messages are taken on the acquisition thread, the rest is called by whoever
// commands the document. See QorViewDoc.h.
#include "session/QorViewDoc.h"

#include <algorithm>

namespace qor {

/// The name of a resource, empty when there is none of the index.
std::string CQorViewDoc::NameOf(int resource) const {
    CRecursiveLock lock(DocLock);
    const CQorViewRes* found = ResourceAt(resource);
    return found ? found->Name() : "";
}

CommResult CQorViewDoc::ConnectResource(int resource) {
    const std::string name = NameOf(resource);
    if (name.empty())
        return NoResource("Unable to connect communications resource.");
    return Controller()->ConnectResource(name);
}

CommResult CQorViewDoc::DisconnectResource(int resource) {
    const std::string name = NameOf(resource);
    if (name.empty())
        return NoResource("Unable to disconnect communications resource.");
    {
        CRecursiveLock lock(DocLock);
        if (ResourceAt(resource)->IsFile()) {
            ResourceAt(resource)->Playing = false;
            return CommResult::Success;
        }
    }
    CFrameQueue left;
    CommResult result = Controller()->DisconnectResource(name, &left);
    RawLog.LogFrames(left);
    RawLog.ShowPending();
    return result;
}

bool CQorViewDoc::ConnectAll() {
    bool all = true;
    for (int i = 0; i < static_cast<int>(ResourceCount()); ++i)
        if (!StatusOf(i).isFile && ConnectResource(i) != CommResult::Success)
            all = false;
    return all;
}

void CQorViewDoc::DisconnectAll() {
    {
        // All workers end at the same time instead of one after the other.
        CRecursiveLock lock(DocLock);
        for (const auto& resource : Resources)
            resource->Comm.RequestStop();
    }
    for (int i = 0; i < static_cast<int>(ResourceCount()); ++i)
        (void)DisconnectResource(i); // reported where it fails; the others are to go on
}

CommResult CQorViewDoc::ResetAbort(int resource, std::uint32_t& abortCode) {
    CRecursiveLock lock(DocLock);
    const CQorViewRes* found = ResourceAt(resource);
    if (!found)
        return NoResource("Unable to retrieve telemetry aquisition abort code.");
    return Controller()->AbortCode(found->Name(), abortCode);
}

/// Retrieval and processing stand under one hold of the lock, so that frames that a disconnection
/// hands over cannot overtake those that were retrieved before.
std::size_t CQorViewDoc::TakeBatch(CQorViewRes& resource) {
    CommResult result = Controller()->RetrieveFrames(resource.Name(), Batch);
    const std::size_t count = Batch.Size();
    RawLog.LogFrames(Batch);
    resource.FramesReceived += count;
    if (result != CommResult::Success || resource.Comm.AtEnd())
        resource.Playing = false;
    return count;
}

std::size_t CQorViewDoc::TakeFrames() {
    std::size_t total = 0;
    for (int i = 0;; ++i) {
        {
            CRecursiveLock lock(DocLock);
            CQorViewRes* resource = ResourceAt(i);
            if (!resource)
                break;
            if (resource->IsFile() && !resource->Playing)
                continue;
            total += TakeBatch(*resource);
        }
        RawLog.ShowPending();
    }
    return total;
}

bool CQorViewDoc::IsPlaying() const {
    CRecursiveLock lock(DocLock);
    return std::ranges::any_of(Resources, [](const auto& resource) { return resource->Playing; });
}

std::size_t CQorViewDoc::TakeFramesOf(int resource) {
    std::size_t count = 0;
    {
        CRecursiveLock lock(DocLock);
        if (CQorViewRes* found = ResourceAt(resource))
            count = TakeBatch(*found);
    }
    RawLog.ShowPending();
    return count;
}

bool CQorViewDoc::AtEnd(int resource) const {
    CRecursiveLock lock(DocLock);
    const CQorViewRes* file = ResourceAt(resource);
    return !file || !file->IsFile() || file->Comm.AtEnd();
}

bool CQorViewDoc::TakeCommands(int milliseconds) {
    if (!Controller()->Commands().Drain(Taken, milliseconds))
        return false;
    for (const QueuedCommand& command : Taken)
        if (command.notice == NoticeCode::None)
            AddSessionLogEntry(command.text);
        else if (OnNotice)
            OnNotice(command.notice, command.text);
    Taken.clear();
    return true;
}

std::size_t CQorViewDoc::ResourceCount() const {
    CRecursiveLock lock(DocLock);
    return Resources.size();
}

ResourceStatus CQorViewDoc::StatusOf(int resource) const {
    CRecursiveLock lock(DocLock);
    ResourceStatus status;
    const CQorViewRes* found = ResourceAt(resource);
    if (!found)
        return status;
    status.name = found->Name();
    status.isFile = found->IsFile();
    status.figures = found->Comm.Figures();
    for (const InstrumentFigures& figures : FiguresOf(resource)) {
        status.frames += figures.frames;
        status.dropped += figures.dropped;
        status.checksumErrors += figures.checksumErrors;
    }
    return status;
}

std::vector<InstrumentFigures> CQorViewDoc::FiguresOf(int resource) const {
    CRecursiveLock lock(DocLock);
    std::vector<InstrumentFigures> all;
    for (std::size_t r = 0; r < Resources.size(); ++r) {
        if (resource >= 0 && static_cast<std::size_t>(resource) != r)
            continue;
        for (const auto& instrument : Resources[r]->Instruments)
            all.push_back({instrument->Name(), static_cast<int>(r), instrument->FramesReceived,
                           instrument->Checks.DroppedCount, instrument->Checks.ChecksumErrorCount,
                           instrument->Checks.ValueErrorCount, instrument->FramesThisLog});
    }
    return all;
}

} // namespace qor
