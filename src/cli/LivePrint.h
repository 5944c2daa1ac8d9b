// SPDX-License-Identifier: GPL-3.0-or-later
//
// Values on standard output while a log runs, and what is said of it on standard error: a reader
// that has gone or stalls ends or thins the printing, never the log. On the command's thread.
#pragma once

#include "export/FramePrinter.h"

#include <optional>

namespace qor {

class CLivePrint {
  public:
    /// Without settings nothing is printed.
    CLivePrint(CQorViewDoc& doc, const std::optional<PrintSettings>& settings);

    bool IsOn() const { return Printer.has_value(); }
    /// Once the instruments are set up. The exit status of what was reported, or ExitWell.
    int Begin();
    /// Says what became of the reader; to be asked a few times a second.
    bool HasNews() const;
    void SayNews();
    /// Gives the reader what is left, for some seconds. False when standard output has failed.
    bool End();

  private:
    std::optional<CFramePrinter> Printer;
    bool EndSaid = false, StallSaid = false;
};

} // namespace qor
