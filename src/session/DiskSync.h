// SPDX-License-Identifier: GPL-3.0-or-later
//
// Makes a log survive a power cut: a thread that synchronises the file to disk once a second, and
// once more when the log has ended. Nobody waits for it: it works on a handle of its own, so a slow
// disk holds up neither frames nor the end of a log. A failure is reported once a log.
#pragma once

#include "base/Lock.h"
#include "base/MessageSink.h"
#include "platform/File.h"
#include "platform/Worker.h"

namespace qor {

class CDiskSync {
  public:
    explicit CDiskSync(CMessageSink& messages) : Messages(messages) {}
    ~CDiskSync();

    /// Watches this file from now on, in place of any before.
    void Watch(const CFile& file);
    /// The watched log has ended: one last synchronisation, then its handle is closed.
    void Finish();

  private:
    void Run();

    CMessageSink& Messages;
    CMutex SyncLock;
    CCondition Changed;
    CFile Watched GUARDED_BY(SyncLock); ///< handed in; the thread takes it
    bool HasNew GUARDED_BY(SyncLock) = false;
    bool Finishing GUARDED_BY(SyncLock) = false;
    bool Stopping GUARDED_BY(SyncLock) = false;
    bool Started GUARDED_BY(SyncLock) = false;
    CWorker Thread;
};

} // namespace qor
