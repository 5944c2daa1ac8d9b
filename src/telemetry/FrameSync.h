// SPDX-License-Identifier: GPL-3.0-or-later
//
// From a byte stream to frames: the byte queue, the search for sync headers, the cutting of frames.
// No lock, no port, no thread: CTelemComm feeds it under its frame lock; tests and fuzzers feed it
// directly. The frames are a function of the byte stream alone, however it was chunked.
#pragma once

#include "base/MessageSink.h"
#include "telemetry/CommResult.h"
#include "telemetry/FrameData.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace qor {

/// What the controller passes when an instrument is attached to a resource.
struct AttachRequest {
    std::string instrumentName;
    std::string syncHeader;
    std::int32_t frameSize = 0;
    std::string terminator; ///< empty for fixed-length frames
    bool noSync = false;
    std::string typeName;
    std::vector<std::uint8_t> syncBytes; ///< BSI: the synchronisation pairs
};

/// What one processing pass did.
struct PassResult {
    bool framesQueued = false;
    bool globalSyncFound = false; ///< "Telemetry synchronized" was reported in this pass
    std::uint32_t framesCut = 0;  ///< frames queued in this pass, dropped ones included
    bool moreReady = false;       ///< stopped at the frame limit with bytes left to process
};

class CFrameSync {
  public:
    /// Messages name the resource. `live` is a serial resource with a command queue: only there the
    /// no-sync flag of an instrument counts.
    CFrameSync(CMessageSink& sink, std::string resourceName, bool live);
    ~CFrameSync();

    /// Another stream of another name: bytes and frames of the one before go, instruments stay.
    void Restart(std::string resourceName);
    void SetSearchBound(std::uint32_t bytes);
    void SetGlobalSync(const std::string& text);
    void SetMaxFrameDepth(std::int32_t frames);
    /// Plays a file: the queue depth never drops a frame, and when the stream begins with a header
    /// record, header records, time-stamp sentences and time tags are taken out (see ReplayFilter).
    void SetReplay(bool replay);
    /// An instrument (by name) whose frames carry no time tag in the raw log: the one in the GPS
    /// role. What follows its frames is not looked at as a tag.
    void SetUntagged(const std::string& instrumentName, bool untagged);

    /// The codes of Attach: SecondWithoutSync, WithoutSyncRefused, BsiWithoutPairs,
    /// InstrumentAlreadyAttached. The caller logs; acquisition starts disabled.
    CommResult Attach(const AttachRequest& request);
    CommResult Detach(const std::string& instrumentName);
    bool IsAttached(const std::string& instrumentName) const;
    /// Enables or disables; disabling searches afresh. InstrumentNotAttached when unknown.
    CommResult SetAcquisition(const std::string& instrumentName, bool enabled);
    /// The identity that the instrument's frames carry; 0 when not attached.
    std::uint32_t IdentityOf(const std::string& instrumentName) const;

    /// Appends received bytes.
    void Append(ByteSpan bytes);
    /// Room for up to `bytes` at the queue's end, to read into; Commit says how many came.
    std::span<std::uint8_t> Prepare(std::size_t bytes);
    void Commit(std::size_t bytes);
    /// The stream is over: what waits for more bytes is settled without them, by the next Process.
    /// Bytes that come all the same take it back.
    void EndOfStream();

    /// Synchronises and cuts until no more can be cut, or `frameLimit` frames are queued (replay).
    /// Frames are stamped with `now`, or with their time tag in replay. `waiting` keeps "found on"
    /// from being reported, as the resource is in its waiting-for-telemetry state.
    PassResult Process(const FrameTime& now, bool waiting = false,
                       std::size_t frameLimit = SIZE_MAX);

    CFrameQueue& Frames();
    std::uint64_t BytesDiscarded() const;
    void ResetBytesDiscarded();
    /// Idle: back to searching, found-reported flags cleared; bytes and queued frames stay. A
    /// global string that has passed is not waited for again.
    void ResetSync();
    /// Disconnection: as ResetSync, and every queued byte and frame goes.
    void Clear();

  private:
    struct Impl;
    std::unique_ptr<Impl> State;
};

} // namespace qor
