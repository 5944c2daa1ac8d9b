// SPDX-License-Identifier: GPL-3.0-or-later
//
// The frames of a running log as rows, while they come: what a decoding of the log would give.
// Rows are made on the thread that acquires, under the document's lock, and go into bounded memory;
// a thread of its own hands them on. A reader that stalls costs rows, which are counted, and never
// a frame of the log; one that has gone ends the printing. Made and ended on the thread that
// commands the document.
#pragma once

#include "export/FrameText.h"
#include "platform/Console.h"
#include "session/FrameWatch.h"
#include "session/QorViewDoc.h"

#include <functional>
#include <memory>
#include <optional>

namespace qor {

enum class PrintFormat : std::uint8_t { Csv, JsonLines };

struct PrintSettings {
    PrintFormat format = PrintFormat::Csv;
    FrameStyle style = {};
};

struct PrintFigures {
    StreamWrite state = StreamWrite::Done; ///< else the printing has ended
    std::uint64_t unprinted = 0;           ///< frames that the reader had no time for
    bool waits = false;                    ///< for the reader
};

class CFramePrinter {
  public:
    /// Bytes that may wait for the reader.
    static constexpr std::size_t Room = std::size_t{4} << 20;
    /// Takes bytes; may wait, on the printer's thread.
    using Writer = std::function<StreamWrite(std::string_view)>;

    CFramePrinter(CQorViewDoc& doc, const PrintSettings& settings, Writer writer);
    /// Waits for the writer to return.
    ~CFramePrinter();
    CFramePrinter(const CFramePrinter&) = delete;
    CFramePrinter& operator=(const CFramePrinter&) = delete;

    /// Whether the format takes the instruments of the session; a table has one.
    bool CanPrint() const;
    /// Prints from now on; after the instruments are set up. False when there is no thread for it.
    bool Start();
    PrintFigures Figures() const;
    /// Takes no more frames and waits until the reader has what there is, at most so long.
    void Finish(int milliseconds);
    /// Waits for the writer as long as it takes; after Finish.
    void Join() { Thread.Join(); }

  private:
    void Take(const CQorViewIns& instrument, const FrameCheckResult& checks) REQUIRES(Doc.DocLock);
    bool Add(std::string_view text);
    void Run();

    CQorViewDoc& Doc;
    const PrintFormat Format;
    const FrameStyle Style;
    const Writer Write;
    COutput Out; ///< into Waiting; under the document's lock
    std::uint32_t LogNumber GUARDED_BY(Doc.DocLock) = 0;
    std::optional<CFrameCsv> Rows GUARDED_BY(Doc.DocLock);
    std::optional<CFrameJson> Lines GUARDED_BY(Doc.DocLock);

    mutable CMutex PrintLock; ///< a leaf
    CCondition Changed;
    std::string Waiting GUARDED_BY(PrintLock);
    std::uint64_t FramesWaiting GUARDED_BY(PrintLock) = 0;
    bool Busy GUARDED_BY(PrintLock) = false;
    bool Ending GUARDED_BY(PrintLock) = false;
    PrintFigures Counted GUARDED_BY(PrintLock);

    std::optional<CFrameWatch> Watch;
    CWorker Thread; ///< the last member: joined before what it uses goes
};

} // namespace qor
