// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/FramePrinter.h"

#include "platform/Console.h"

#include <utility>

namespace qor {

namespace {

/// The instruments of all ports, in their order.
std::vector<const CQorViewIns*> InstrumentsOf(const CQorViewDoc& doc) REQUIRES(doc.DocLock) {
    std::vector<const CQorViewIns*> instruments;
    for (const auto& resource : doc.Resources)
        if (!resource->IsFile())
            for (const auto& instrument : resource->Instruments)
                instruments.push_back(instrument.get());
    return instruments;
}

} // namespace

CFramePrinter::CFramePrinter(CQorViewDoc& doc, const PrintSettings& settings, Writer writer)
    : Doc(doc), Format(settings.format), Style(settings.style), Write(std::move(writer)),
      Out([this](std::string_view text) { return Add(text); }, IsTerminal(StandardStream::Output)) {
}

CFramePrinter::~CFramePrinter() {
    Finish(0);
    Thread.Join();
}

bool CFramePrinter::CanPrint() const {
    CRecursiveLock lock(Doc.DocLock);
    return Format == PrintFormat::JsonLines || InstrumentsOf(Doc).size() == 1;
}

bool CFramePrinter::Start() {
    if (!Thread.Start(ThreadPriority::Normal, [this] { Run(); }))
        return false;
    {
        CRecursiveLock lock(Doc.DocLock);
        if (Format == PrintFormat::Csv) {
            Rows.emplace(Out, InstrumentsOf(Doc).front()->Definition(), "", Style);
            Rows->WriteHeader({});
            Out.Flush();
        }
    }
    Watch.emplace(Doc, [this](CQorViewIns& instrument, const FrameCheckResult& checks) {
        CRecursiveLock lock(Doc.DocLock); // which it is under
        Take(instrument, checks);
    });
    return true;
}

void CFramePrinter::Take(const CQorViewIns& instrument, const FrameCheckResult& checks) {
    Doc.RawLog.LockIsHeld();
    if (!Doc.RawLog.Takes(instrument) || instrument.Live.CurrentFrame()->Error)
        return;
    {
        CLock lock(PrintLock);
        if (Counted.state != StreamWrite::Done || Waiting.size() >= Room) {
            ++Counted.unprinted;
            return;
        }
        ++FramesWaiting;
    }
    if (Format == PrintFormat::JsonLines &&
        std::exchange(LogNumber, Doc.RawLog.Number()) != Doc.RawLog.Number())
        Lines.emplace(Out, Doc.RawLog.Status().logFilePath, Style);
    if (Rows)
        Rows->WriteFrame(instrument.Live, checks, {});
    else
        Lines->WriteFrame(instrument.Live, checks, {}, Doc.RawLog.NextOffset());
    Out.Flush();
}

bool CFramePrinter::Add(std::string_view text) {
    {
        CLock lock(PrintLock);
        if (Counted.state == StreamWrite::Done)
            Waiting.append(text);
    }
    Changed.NotifyAll();
    return true;
}

void CFramePrinter::Run() {
    std::string text;
    std::uint64_t frames = 0;
    for (;;) {
        {
            CLock lock(PrintLock);
            Changed.WaitFor(PrintLock, CCondition::LostWakeMilliseconds,
                            [this]() REQUIRES(PrintLock) { return Ending || !Waiting.empty(); });
            if (Waiting.empty() && Ending)
                return;
            text.clear();
            std::swap(text, Waiting);
            frames = std::exchange(FramesWaiting, 0);
            Busy = !text.empty();
        }
        if (text.empty())
            continue;
        const StreamWrite state = Write(text);
        {
            CLock lock(PrintLock);
            Busy = false;
            Counted.state = state;
            if (state != StreamWrite::Done) {
                Counted.unprinted += frames + std::exchange(FramesWaiting, 0);
                std::string().swap(Waiting);
            }
        }
        Changed.NotifyAll();
    }
}

PrintFigures CFramePrinter::Figures() const {
    CLock lock(PrintLock);
    PrintFigures figures = Counted;
    figures.waits = Busy || !Waiting.empty();
    return figures;
}

void CFramePrinter::Finish(int milliseconds) {
    Watch.reset();
    {
        CLock lock(PrintLock);
        Ending = true;
    }
    Changed.NotifyAll();
    CLock lock(PrintLock);
    Changed.WaitFor(PrintLock, milliseconds,
                    [this]() REQUIRES(PrintLock) { return !Busy && Waiting.empty(); });
}

} // namespace qor
