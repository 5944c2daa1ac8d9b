// SPDX-License-Identifier: GPL-3.0-or-later
//
// Result codes of resources (0x1000....) and of the controller (0x4000....), with the fixed part of
// their detail lines. The resource codes count in decimal digits: the gaps are part of the
// interface.
#pragma once

#include <cstdint>
#include <string_view>

namespace qor {

enum class [[nodiscard]] CommResult : std::uint32_t{
    Success = 0,
    ReadNotIssued = 0x10000001,
    StatusWaitNotIssued = 0x10000002,
    ReadNotCollected = 0x10000003,
    StatusNotCollected = 0x10000004,
    InputEventNotCreated = 0x10000005,
    ReadBufferNotAllocated = 0x10000006,
    LineStatusNotRead = 0x10000007,
    PortNotOpened = 0x10000008,
    TimeoutsNotRead = 0x10000009,
    TimeoutsNotSet = 0x10000010,
    SettingsNotRead = 0x10000011,
    SettingsNotWritten = 0x10000012,
    QueueSizeNotSet = 0x10000013,
    EventMaskNotSet = 0x10000014,
    WorkerNotStarted = 0x10000015,
    NotRestored = 0x10000016,
    InstrumentNotAttached = 0x10000017,
    InstrumentAlreadyAttached = 0x10000018,
    NotInitialised = 0x10000019,
    NotConnected = 0x10000021,
    StillConnected = 0x10000022,
    InvalidFileResource = 0x10000023,
    InvalidPortName = 0x10000024,
    NoGlobalSync = 0x10000025,
    AbortCodeSet = 0x10000026,
    FileError = 0x10000027,
    FileNotOpen = 0x10000028,
    SecondWithoutSync = 0x10000029,
    WithoutSyncRefused = 0x10000030,
    BsiWithoutPairs = 0x10000031,

    ResourceNotFound = 0x40000001,
    ResourceAlreadyDefined = 0x40000002,
    ResourceReference = 0x40000003,
    InstrumentNotFound = 0x40000004,
    InstrumentAlreadyDefined = 0x40000005,
    InstrumentReference = 0x40000006,
    NotAFile = 0x40000007,
    NotASerialPort = 0x40000008,
};

/// The detail line of a code; for codes whose detail carries a system or file-error text, the part
/// before that text. Empty for codes without a detail line.
std::string_view CommDetail(CommResult result);

} // namespace qor
