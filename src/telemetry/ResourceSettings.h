// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a document-side resource hands to the controller to make a serial port or a file a source
// of telemetry.
#pragma once

#include <cstdint>
#include <string>

namespace qor {

struct SerialResourceSettings {
    std::string portName; ///< as given to the operating system; also the resource's name
    std::uint32_t baudRate = 19200;
    std::uint8_t dataBits = 8;
    std::uint8_t parity = 0;           ///< 0 none, 1 odd, 2 even, 3 mark, 4 space
    std::uint8_t stopBits = 0;         ///< 0 one, 1 one and a half, 2 two
    std::uint32_t bufferSize = 1024;   ///< driver's input queue, read request, bound of the search
    std::string globalSyncString;      ///< empty: no global synchronisation
    std::int32_t idleTimeoutCount = 0; ///< 100 ms waits before "waiting"; <= 0: 15
    std::int32_t maxFrameDepth = 0;    ///< frames queued at most; <= 0: 200
    std::uint64_t maxFrameBytes = 0;   ///< memory of the queued frames at most; 0: the depth alone
};

struct FileResourceSettings {
    std::uint32_t fileValue = 0;        ///< stored and returned, not used
    std::uint32_t readChunkSize = 2048; ///< bytes a read; also the bound of the search
    std::uint32_t framesAtOnce = 64;    ///< handed over by one read, few enough for the cache
};

} // namespace qor
