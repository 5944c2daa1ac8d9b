// SPDX-License-Identifier: GPL-3.0-or-later
//
// Decoding of line errors; called by a port's worker, holds no lock.
#include "telemetry/LineStatus.h"

#include "base/Text.h"

namespace qor {

namespace {

constexpr int ReportedErrors = 5;

struct ErrorText {
    std::uint32_t flag;
    LineErrorKind kind;
    std::string_view before, after; ///< the port's name stands between
};

/// The errors that are reported each time, in the order of their report.
constexpr ErrorText Errors[] = {
    {LineIoError, LineErrorKind::Io, "I/O error on ", ".\r\n"},
    {LineModeError, LineErrorKind::Mode, "Mode error on ", ".\r\n"},
    {LineInputOverflow, LineErrorKind::InputOverflow, "Input buffer overflow on ", ".\r\n"},
    {LineOverrun, LineErrorKind::Overrun, "Character buffer overrun on ", ".\r\n"},
    {LineParity, LineErrorKind::Parity, "Rx parity error on ", ".\r\n"},
    {LineTransmitFull, LineErrorKind::TransmitFull, "Unable to transmit on ",
     ". The buffer is full.\r\n"},
};

} // namespace

CommResult CLineStatus::Decode(CSerialPort& port, const std::string& portName,
                               std::uint32_t eventMask, SystemError& error) {
    std::uint32_t errors = 0;
    if (SystemError failure = port.ReadLineErrors(errors)) {
        error = failure;
        return CommResult::LineStatusNotRead;
    }
    // Kept: a break event alone counts as unknown, and the line ends in a bare line feed.
    if (eventMask != 0 && (eventMask & EventLineError) == 0)
        Sink.Report(Format("Unknown status event (%#.8x) on %s.\n", eventMask, portName.c_str()));
    if ((errors & LineBreak) != 0)
        ReportBreak(portName);
    if ((errors & LineFraming) != 0)
        ReportFraming(portName);
    if ((errors & (LineBreak | LineFraming)) == 0)
        BreakErrors = FramingErrors = 0;
    for (const ErrorText& row : Errors)
        if ((errors & row.flag) != 0) {
            Count(row.kind);
            Sink.Report(std::string(row.before).append(portName).append(row.after));
        }
    return CommResult::Success;
}

void CLineStatus::ReportBreak(const std::string& portName) {
    Count(LineErrorKind::Break);
    if (BreakErrors >= ReportedErrors)
        return;
    Sink.Report(Format("Break error on %s.\r\n", portName.c_str()));
    ++BreakErrors;
}

void CLineStatus::ReportFraming(const std::string& portName) {
    Count(LineErrorKind::Framing);
    if (FramingErrors >= ReportedErrors)
        return;
    Sink.Report(Format("Hardware framing error on %s.\r\n", portName.c_str()));
    if (FramingErrors == ReportedErrors - 1)
        Sink.Report(Format("Detected possible incorrect baud rate on %s.\r\n", portName.c_str()));
    ++FramingErrors;
}

void CLineStatus::Count(LineErrorKind kind) {
    Found[static_cast<std::size_t>(kind)].fetch_add(1, std::memory_order_relaxed);
}

LineErrorCounts CLineStatus::Counts() const {
    LineErrorCounts counts{};
    for (std::size_t kind = 0; kind < LineErrorKinds; ++kind)
        counts[kind] = Found[kind].load(std::memory_order_relaxed);
    return counts;
}

} // namespace qor
