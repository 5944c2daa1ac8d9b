// SPDX-License-Identifier: GPL-3.0-or-later
//
// Logging without an operator ("lognow"): connects everything, begins a log as soon as a port is
// open, asks nothing, and gives a run up that has no port any more. Asked on the thread that
// commands the document, tended by the loop's ticker, both without the document's lock.
#pragma once

#include <atomic>
#include <string>

namespace qor {

class CQorViewDoc;

class CLogStarter {
  public:
    /// The document that it is a part of.
    explicit CLogStarter(CQorViewDoc& doc) : Doc(doc) {}

    /// The program ends when its log is done.
    void SetExitIfDone(bool on);
    /// From now on nobody is asked. Where no port can be had yet and some are tried again, the log
    /// begins with the first that is there. What is wrong when there can be none; a program that
    /// ends when its log is done ends then.
    std::string LogNow();
    /// Whether a port is waited for.
    bool Waits() const { return Waiting; }
    /// Waits no more.
    void Cancel() { Waiting = false; }

    void Tend();

  private:
    std::string Begin();
    std::string Abandon(const char* reason);

    CQorViewDoc& Doc;
    std::atomic<bool> Waiting = false; ///< for a port
    std::atomic<bool> Begun = false;   ///< the log that is open was begun here
};

} // namespace qor
