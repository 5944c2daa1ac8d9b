// SPDX-License-Identifier: GPL-3.0-or-later
//
// The stage and its writer. Records change hands under StageLock; the disk is waited for without
// it. See LogStage.h.
#include "session/LogStage.h"

#include "platform/FileErrorText.h"

#include <algorithm>
#include <utility>

namespace qor {
CLogStage::~CLogStage() {
    Close();
    {
        CLock lock(StageLock);
        Stopping = true;
    }
    Changed.NotifyAll();
    if (Started)
        Thread.Join();
}

FileCause CLogStage::Create(const std::string& path, bool replaces, const LogRecords& header,
                            bool& inHeader) {
    inHeader = false;
    if (!Started)
        Started = Thread.Start(ThreadPriority::Normal, [this] { Run(); });
    if (!Started)
        return FileCause::Generic;
    FileCause cause = Writer.Create(path, replaces);
    if (cause != FileCause::None)
        return cause;
    std::size_t written = 0;
    cause = Writer.Write(header, written);
    if (cause != FileCause::None) {
        inHeader = true;
        Writer.Close();
        // What is left would only block its own name.
        [[maybe_unused]] FileCause removed = RemoveFile(path);
        return cause;
    }
    {
        CLock lock(StageLock);
        const std::uint64_t unstored = Counted.framesUnstored;
        BeginCounting();
        Counted.framesUnstored = Resting ? unstored : 0;
        Counted.fileSize = Writer.Size();
        Resting = false;
    }
    Changed.NotifyAll();
    Awake.emplace();
    return FileCause::None;
}

void CLogStage::BeginResting() {
    {
        CLock lock(StageLock);
        BeginCounting();
        Resting = true;
    }
    Awake.emplace();
}

void CLogStage::BeginCounting() {
    const StageFigures before = std::exchange(Counted, {});
    Counted.totalWritten = before.totalWritten;
    Counted.totalUnstored = before.totalUnstored;
    Counted.totalGone = before.totalGone;
    ByOwner.clear();
}

void CLogStage::CountUnstored(const LogRecords& records) {
    const auto frames = static_cast<std::uint64_t>(std::ranges::count_if(
        records.marks, [](const LogRecords::Mark& mark) { return mark.owner != 0; }));
    Counted.framesUnstored += frames;
    Counted.totalUnstored += frames;
}

void CLogStage::LoseFrame() {
    CLock lock(StageLock);
    ++Counted.framesUnstored;
    ++Counted.totalUnstored;
}

bool CLogStage::Append(LogRecords& records) {
    {
        CLock lock(StageLock);
        if (Pending.bytes.size() + WritingBytes + records.bytes.size() > Limit ||
            !Pending.Take(records)) {
            CountUnstored(records);
            records.Clear();
            return false;
        }
        if (!std::exchange(Idle, false))
            return true;
    }
    Changed.NotifyAll();
    return true;
}

void CLogStage::Run() {
    for (;;) {
        {
            CLock lock(StageLock);
            const auto hasWork = [this]()
                                     REQUIRES(StageLock) { return !Pending.Empty() && !Resting; };
            Idle = !hasWork() && !Stopping;
            Changed.WaitFor(StageLock, CCondition::LostWakeMilliseconds,
                            [this, &hasWork]()
                                REQUIRES(StageLock) { return Stopping || hasWork(); });
            Idle = false;
            if (!hasWork()) {
                if (Stopping)
                    return;
                continue;
            }
            Writing.Clear();
            std::swap(Writing, Pending);
            WritingBytes = Writing.bytes.size();
            WritingSince = Clock.MonotonicMilliseconds();
            Busy = true;
        }
        WriteTaken();
    }
}

void CLogStage::WriteTaken() {
    if (const int delay = Delay; delay > 0)
        Never.Wait(delay);
    std::size_t written = 0;
    const FileCause cause = Writer.Write(Writing, written);
    if (cause != FileCause::None) {
        std::string text =
            "Error writing to log file: " + std::string(GetFileErrorText(cause)) + ".\r\n";
        if (Writer.CutCause() != FileCause::None)
            text += "\tThe file may end in a part of a record.\r\n";
        Messages.Raise({EventKind::LogFailed, Writer.Path(), std::move(text)});
    }
    {
        CLock lock(StageLock);
        Count(written, cause);
        if (cause != FileCause::None) {
            Writing.DropFirst(written);
            if (!Writing.Take(Pending))
                CountUnstored(Pending);
            std::swap(Writing, Pending);
            Resting = true;
        }
        WritingBytes = 0;
        Busy = false;
    }
    Changed.NotifyAll();
}

/// Counted are the frames in the file and, as offered, the one at which the file failed.
void CLogStage::Count(std::size_t written, FileCause cause) {
    const std::size_t offered =
        std::min(Writing.marks.size(), written + (cause == FileCause::None ? 0 : 1));
    for (std::size_t i = 0; i < offered; ++i) {
        const std::uint32_t owner = Writing.marks[i].owner;
        if (owner == 0)
            continue;
        if (owner >= ByOwner.size())
            ByOwner.resize(owner + 1);
        ++ByOwner[owner].offered;
        ByOwner[owner].written += i < written;
        ++Counted.framesOffered;
        Counted.framesWritten += i < written;
        Counted.totalWritten += i < written;
    }
    Counted.fileSize = Writer.Size();
    Counted.cause = cause;
}

void CLogStage::Drain() {
    CLock lock(StageLock);
    while (
        !Changed.WaitFor(StageLock, CCondition::LostWakeMilliseconds, [this]() REQUIRES(StageLock) {
            return (Pending.Empty() || Resting) && !Busy;
        })) {
    }
}

void CLogStage::Rest() {
    {
        CLock lock(StageLock);
        Resting = true;
    }
    Drain();
}

std::uint64_t CLogStage::ForgetFile() {
    CLock lock(StageLock);
    const std::uint64_t gone = std::exchange(Counted.framesWritten, 0);
    Counted.totalWritten -= gone;
    Counted.totalGone += gone;
    for (OwnerFrames& one : ByOwner)
        one.written = 0;
    return gone;
}

void CLogStage::Close() {
    if (!Started)
        return;
    Drain();
    Writer.Close();
    Awake.reset();
    CLock lock(StageLock);
    CountUnstored(Pending);
    Pending.Clear();
    Resting = false;
}

StageFigures CLogStage::Figures() const {
    CLock lock(StageLock);
    StageFigures figures = Counted;
    figures.waitingBytes = Pending.bytes.size() + WritingBytes;
    if (Busy)
        figures.stalledMilliseconds = Clock.MonotonicMilliseconds() - WritingSince;
    return figures;
}

OwnerFrames CLogStage::FramesOf(std::uint32_t owner) const {
    CLock lock(StageLock);
    return owner < ByOwner.size() ? ByOwner[owner] : OwnerFrames();
}

} // namespace qor
