// SPDX-License-Identifier: GPL-3.0-or-later
//
// The stage and its writer. Records change hands under StageLock; the disk is waited for without
// it. See LogStage.h.
#include "session/LogStage.h"

#include "platform/FileErrorText.h"

#include <algorithm>
#include <utility>

namespace qor {
namespace {

constexpr int RoundMilliseconds = 1000; // a lost wake-up costs no more than this

} // namespace

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

FileCause CLogStage::Create(const std::string& path, const LogRecords& header, bool& inHeader) {
    inHeader = false;
    if (!Started)
        Started = Thread.Start(ThreadPriority::Normal, [this] { Run(); });
    if (!Started)
        return FileCause::Generic;
    FileCause cause = Writer.Create(path);
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
    CLock lock(StageLock);
    Counted = {};
    Counted.fileSize = Writer.Size();
    Offered.clear();
    return FileCause::None;
}

std::uint64_t CLogStage::FramesIn(const LogRecords& records, std::size_t from) {
    return static_cast<std::uint64_t>(
        std::count_if(records.marks.begin() + static_cast<std::ptrdiff_t>(from),
                      records.marks.end(), [](const LogRecords::Mark& m) { return m.owner != 0; }));
}

bool CLogStage::Append(LogRecords& records) {
    {
        CLock lock(StageLock);
        if (Counted.cause != FileCause::None ||
            Pending.bytes.size() + WritingBytes + records.bytes.size() > Limit) {
            Counted.framesUnstored += FramesIn(records);
            records.Clear();
            return false;
        }
        Pending.Take(records);
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
            Idle = Pending.Empty() && !Stopping;
            Changed.WaitFor(StageLock, RoundMilliseconds,
                            [this]() REQUIRES(StageLock) { return Stopping || !Pending.Empty(); });
            Idle = false;
            if (Pending.Empty()) {
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
    bool failedBefore;
    {
        CLock lock(StageLock);
        failedBefore = Counted.cause != FileCause::None;
    }
    if (const int delay = Delay; delay > 0)
        Never.Wait(delay);
    std::size_t written = 0;
    const FileCause cause = failedBefore ? FileCause::Generic : Writer.Write(Writing, written);
    if (cause != FileCause::None && !failedBefore) {
        std::string text =
            "Error writing to log file: " + std::string(GetFileErrorText(cause)) + ".\r\n";
        if (Writer.CutCause() != FileCause::None)
            text += "\tThe file may end in a part of a record.\r\n";
        Messages.Raise({EventKind::LogFailed, Writer.Path(), std::move(text)});
    }
    {
        CLock lock(StageLock);
        if (failedBefore)
            Counted.framesUnstored += FramesIn(Writing);
        else
            Count(written, cause);
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
        if (owner >= Offered.size())
            Offered.resize(owner + 1);
        ++Offered[owner];
        ++Counted.framesOffered;
        Counted.framesWritten += i < written;
    }
    Counted.framesUnstored += FramesIn(Writing, written);
    Counted.fileSize = Writer.Size();
    Counted.cause = cause;
}

void CLogStage::Drain() {
    CLock lock(StageLock);
    while (!Changed.WaitFor(StageLock, RoundMilliseconds,
                            [this]() REQUIRES(StageLock) { return Pending.Empty() && !Busy; })) {
    }
}

void CLogStage::Close() {
    if (!Started)
        return;
    Drain();
    Writer.Close();
}

StageFigures CLogStage::Figures() const {
    CLock lock(StageLock);
    StageFigures figures = Counted;
    figures.waitingBytes = Pending.bytes.size() + WritingBytes;
    if (Busy)
        figures.stalledMilliseconds = Clock.MonotonicMilliseconds() - WritingSince;
    return figures;
}

std::uint32_t CLogStage::OfferedOf(std::uint32_t owner) const {
    CLock lock(StageLock);
    return owner < Offered.size() ? Offered[owner] : 0;
}

} // namespace qor
