// SPDX-License-Identifier: GPL-3.0-or-later
//
// The detail lines of the result codes, a row each. Resources and the controller append them to the
// line of the operation that failed; any thread.
#include "telemetry/CommResult.h"

#include "base/EnumTable.h"

#include <iterator>

namespace qor {

namespace {

struct DetailRow {
    CommResult result;
    std::string_view detail;
};

// Rows that end without CR LF are followed by the text of a system error or of a file error.
constexpr DetailRow Details[] = {
    {CommResult::Success, ""},
    {CommResult::ReadNotIssued, "\tRead error:"},
    {CommResult::StatusWaitNotIssued, "\tStatus event error:"},
    {CommResult::ReadNotCollected, "\tOverlapped read error:"},
    {CommResult::StatusNotCollected, "\tOverlapped status event error:"},
    {CommResult::InputEventNotCreated, "\tOverlapped read initialization error:"},
    {CommResult::ReadBufferNotAllocated, "\tRead buffer initialization error:"},
    {CommResult::LineStatusNotRead, "\tCommunications status error:"},
    {CommResult::PortNotOpened, ""},
    {CommResult::TimeoutsNotRead, "\t"},
    {CommResult::TimeoutsNotSet, "\t"},
    {CommResult::SettingsNotRead, "\t"},
    {CommResult::SettingsNotWritten, "\t"},
    {CommResult::QueueSizeNotSet, "\t"},
    {CommResult::EventMaskNotSet, "\t"},
    {CommResult::WorkerNotStarted, ""},
    {CommResult::NotRestored, "\t"},
    {CommResult::InstrumentNotAttached, "\tThe instrument has not been attached or defined.\r\n"},
    {CommResult::InstrumentAlreadyAttached, "\tThe instrument has already been attached.\r\n"},
    {CommResult::NotInitialised, "\tThe communications resource has not been initialized.\r\n"},
    {CommResult::NotConnected, "\tThe serial port has not been connected.\r\n"},
    {CommResult::StillConnected, "\tThe serial port is still connected.\r\n"},
    {CommResult::InvalidFileResource, "\tInvalid file resource.\r\n"},
    {CommResult::InvalidPortName, "\tInvalid serial port identification.\r\n"},
    {CommResult::NoGlobalSync, "\tGlobal synchronization has been deactivated.\r\n"},
    {CommResult::AbortCodeSet, "\tThe telemetry abort code has not been reset.\r\n"},
    {CommResult::FileError, "\t"},
    {CommResult::FileNotOpen, "\tThe file resource is not open.\r\n"},
    {CommResult::SecondWithoutSync,
     "\tThere is already an instrument attached to this\r\n"
     "\tresource with no frame synchronization string defined.\r\n"
     "\tOnly one of these instruments can be attached to the resource.\r\n"},
    {CommResult::WithoutSyncRefused,
     "\tThe instrument specifies that no frame synchronization\r\n"
     "\tstring will be found in the telemetry.\r\n"
     "\tOnly one of these instruments can be attached to the resource.\r\n"},
    {CommResult::BsiWithoutPairs, "\tA BSI instrument must be specified with multiples of \r\n"
                                  "\ttwo-byte data synchronization arrays, using the SPECIAL \r\n"
                                  "\tsensor definition line.\r\n"},

    {CommResult::ResourceNotFound, "\tThe communications resource could not be found.\r\n"},
    {CommResult::ResourceAlreadyDefined,
     "\tThe communications resource has already been defined.\r\n"},
    {CommResult::ResourceReference, "\tThe communications resource reference is invalid.\r\n"},
    {CommResult::InstrumentNotFound, "\tThe instrument could not be found.\r\n"},
    {CommResult::InstrumentAlreadyDefined, "\tThe instrument has already been defined.\r\n"},
    {CommResult::InstrumentReference, "\tThe instrument reference is invalid.\r\n"},
    {CommResult::NotAFile, "\tThe specified communications resource is not a file.\r\n"},
    {CommResult::NotASerialPort,
     "\tThe specified communications resource is not a serial port.\r\n"},
};
static_assert(IsAscendingTable(Details, &DetailRow::result));
static_assert(EnumeratorsIn<CommResult, 0x10000000, 0x60>() +
                  EnumeratorsIn<CommResult, 0x40000000, 0x60>() + 1 ==
              std::size(Details));

} // namespace

std::string_view CommDetail(CommResult result) {
    for (const DetailRow& row : Details)
        if (row.result == result)
            return row.detail;
    return {};
}

} // namespace qor
