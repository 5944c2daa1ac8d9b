// SPDX-License-Identifier: GPL-3.0-or-later
//
// The banner's page from one look to the next: what it must remember of the session's life (since
// when frames have come, why the last log failed) beside the figures of the moment. User-interface
// thread; takes the document's lock itself.
#pragma once

#include "base/MessageSink.h"
#include "views/SessionPages.h"

namespace qor {

class CLogBanner {
  public:
    void Note(const Event& event);
    /// The operator has seen that the last log failed.
    void MarkSeen() { FailureSeen = true; }

    LogPage Page(const CQorViewDoc& doc, RunKind run, std::optional<std::uint64_t> freeBytes);

  private:
    std::string Cause;
    bool FailureSeen = false;
    CFrameFlow Flow;
};

/// The folder of the open log, else that of the next one; the working directory where none is set.
std::string LogFolder(const CQorViewDoc& doc);
/// Where the open log stands and what is in it; without one, the next one's place.
std::string LogStatusText(const CQorViewDoc& doc);
/// The tare that holds, as one sentence.
std::string TareText(const CQorViewDoc& doc);
/// The next log as the operator is to read it.
std::string NextLogName(const CQorViewDoc& doc);

} // namespace qor
