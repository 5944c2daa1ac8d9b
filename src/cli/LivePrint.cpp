// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/LivePrint.h"

#include "cli/Commands.h"
#include "cli/Report.h"

namespace qor {

namespace {

constexpr int LastMilliseconds = 2000;

StreamWrite WriteValues(std::string_view text) {
    return WriteText(StandardStream::Output, text);
}

} // namespace

CLivePrint::CLivePrint(CQorViewDoc& doc, const std::optional<PrintSettings>& settings) {
    if (settings)
        Printer.emplace(doc, *settings, WriteValues);
}

int CLivePrint::Begin() {
    if (!IsOn())
        return ExitWell;
    if (!Printer->CanPrint()) {
        ReportError("--print csv: several instruments give several tables; give --print jsonl.");
        return ExitBadCall;
    }
    if (Printer->Start())
        return ExitWell;
    ReportError("the system has no thread to give; close other programs.");
    return ExitFault;
}

bool CLivePrint::HasNews() const {
    if (!IsOn())
        return false;
    const PrintFigures figures = Printer->Figures();
    const bool ended =
        figures.state == StreamWrite::ReaderGone || figures.state == StreamWrite::Failed;
    return ended ? !EndSaid : !StallSaid && figures.unprinted > 0;
}

void CLivePrint::SayNews() {
    const PrintFigures figures = Printer->Figures();
    if (figures.state == StreamWrite::Failed) {
        ReportError("standard output cannot be written; is the disk full? Nothing more is printed; "
                    "the log goes on.");
        EndSaid = true;
    } else if (figures.state == StreamWrite::ReaderGone) {
        ReportWarning("nobody reads standard output any more; nothing more is printed; the log "
                      "goes on.");
        EndSaid = true;
    } else {
        ReportWarning("the reader of standard output is too slow; frames are left out there. The "
                      "log has them.");
        StallSaid = true;
    }
}

bool CLivePrint::End() {
    if (!IsOn())
        return true;
    Printer->Finish(LastMilliseconds);
    HurryReaders();
    Printer->Join();
    StallSaid = true; // in figures now
    if (HasNews())
        SayNews();
    const PrintFigures figures = Printer->Figures();
    if (!EndSaid && figures.unprinted > 0)
        ReportWarning(std::to_string(figures.unprinted) +
                      " frames were not printed, because nobody read them in time; the log has "
                      "them.");
    return figures.state != StreamWrite::Failed;
}

} // namespace qor
