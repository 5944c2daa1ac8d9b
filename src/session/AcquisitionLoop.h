// SPDX-License-Identifier: GPL-3.0-or-later
//
// The acquisition thread: woken by the command queue, it brings messages to the session log in the
// order reported, takes waiting frames, has them checked, converted and logged. The raw log's
// once-a-second tick has a thread of its own, because the end of a log waits for the disk and the
// next file of an interval run may ask the operator a question; so has the look at bytes without a
// frame, because what it keeps of them waits for the disk. Ports and disk are watched by a thread
// that waits for no file. Desktop and command line run this same loop; no display and no operator
// holds it up.
#pragma once

#include "session/QorViewDoc.h"

#include <atomic>

namespace qor {

class CAcquisitionLoop {
  public:
    /// The document lives longer than the loop.
    explicit CAcquisitionLoop(CQorViewDoc& doc) : Doc(doc) {}
    /// Stops.
    ~CAcquisitionLoop();
    CAcquisitionLoop(const CAcquisitionLoop&) = delete;
    CAcquisitionLoop& operator=(const CAcquisitionLoop&) = delete;

    /// Starts the threads; false when the system has none to give.
    bool Start();
    /// Ends the threads, then takes every frame and message that is still there. Harmless when not
    /// started. Disconnect first, then end the log, then stop. A question to the operator that the
    /// tick waits for is taken back.
    void Stop();

    /// One round on the calling thread instead (not while started): waits at most so long for a
    /// command, takes messages and frames, ticks when a second is over. True when there was
    /// anything to do.
    bool Step(int milliseconds);

    /// Plays one batch of a file resource on the calling thread (not while started). False at the
    /// file's end; before it a batch may hold no frame.
    bool PlayBatch(ResourceId resource, std::size_t& frames);
    /// Plays a file resource to its end, or until `stop` says so. Returns the number of frames.
    std::uint64_t PlayFile(ResourceId resource, const std::atomic<bool>* stop = nullptr);

  private:
    bool Take(int milliseconds);
    bool TickIfDue();
    void Watch();
    void SayEarlyClock();
    void RunAcquisition();
    void RunTicker();
    void RunWatch();
    void RunCaptures();

    CQorViewDoc& Doc;
    CWorker Acquisition, Ticker, Watcher, Captures;
    CEvent Stopping;
    bool Running = false;
    // Of the thread that ticks.
    bool TickPlanned = false;
    std::int64_t NextTick = 0; ///< on the monotonic clock, milliseconds
};

} // namespace qor
