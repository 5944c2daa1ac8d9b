// SPDX-License-Identifier: GPL-3.0-or-later
//
// A small language for tests of the frame synchroniser: instruments, bytes in chunks, and what came
// out of them.
#pragma once

#include "fakes/CollectingSink.h"
#include "telemetry/FrameSync.h"
#include "telemetry/PlainSync.h"

#include <functional>
#include <initializer_list>

namespace qor {

inline AttachRequest Fixed(const std::string& name, const std::string& header, std::int32_t size) {
    AttachRequest request;
    request.instrumentName = name;
    request.syncHeader = header;
    request.frameSize = size;
    return request;
}

inline AttachRequest Text(const std::string& name, const std::string& header,
                          const std::string& terminator = "\r\n", std::int32_t size = 0) {
    AttachRequest request = Fixed(name, header, size);
    request.terminator = terminator;
    return request;
}

inline AttachRequest NoSync(AttachRequest request, const char* type, std::string_view pairs = {}) {
    request.noSync = true;
    request.typeName = type;
    request.syncBytes.assign(pairs.begin(), pairs.end());
    return request;
}

/// The frames of the queue, oldest first; the queue is empty after that.
inline std::vector<PlainFrame> TakeFrames(CFrameQueue& queue) {
    std::vector<PlainFrame> frames;
    CFrameData frame;
    while (queue.Pop(frame)) {
        frames.push_back(
            {frame.Info.instrumentName, std::string(frame.Text()), frame.StreamOffset, {}});
        if (frame.Info.time.known)
            frames.back().milliseconds =
                frame.Info.time.seconds * 1000 + frame.Info.time.milliseconds;
    }
    return frames;
}

/// Plays a stream to its end in chunks of the lengths that `nextChunk` gives.
inline PlainResult Play(const std::vector<AttachRequest>& instruments, std::string_view stream,
                        const std::function<std::size_t()>& nextChunk,
                        const std::set<std::string>& untagged = {}, std::size_t frameLimit = 3,
                        bool nearTimes = false) {
    CCollectingSink sink;
    CFrameSync sync(sink, "played", StreamSource::File);
    if (nearTimes)
        sync.SetNearTimes();
    for (const AttachRequest& instrument : instruments)
        if (sync.Attach(instrument) == CommResult::Success)
            (void)sync.SetAcquisition(instrument.instrumentName, true);
    for (const std::string& name : untagged)
        sync.SetUntagged(name, true);
    PlainResult result;
    auto drain = [&] {
        PassResult pass;
        do {
            pass = sync.RunPass(frameLimit);
            for (PlainFrame& frame : TakeFrames(sync.Frames()))
                result.frames.push_back(std::move(frame));
        } while (pass.moreReady);
    };
    while (!stream.empty()) {
        std::size_t length = std::min(std::max<std::size_t>(nextChunk(), 1), stream.size());
        sync.SetSearchBound(static_cast<std::uint32_t>(length));
        sync.Append(AsBytes(stream.substr(0, length)));
        stream.remove_prefix(length);
        drain();
    }
    sync.EndOfStream();
    drain();
    result.discarded = sync.Figures().bytesDiscarded;
    return result;
}

} // namespace qor
