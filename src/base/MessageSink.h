// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where a component reports what happened. One report is one session-log entry: lines that end in
// CR LF, continuation lines that begin with a TAB. What a face has to act on carries a kind and a
// subject beside the text, so that nobody reads meaning out of prose.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace qor {

/// What happened. Everything but Note and the orderly life of a log is worth an operator's eye.
enum class EventKind : std::uint8_t {
    Note,     ///< for the session log alone
    LogBegun, ///< subject: the log's path, as for the other log events
    LogEnded,
    LogFailed,      ///< the log's file cannot be written any more, or no other one be begun
    LogGoesOn,      ///< ... and another one goes on, of this subject
    LogNotBegun,    ///< a start that came to nothing
    LogRecovered,   ///< an earlier log that a crash had cut off was finished
    SpaceLow,       ///< the disk will be full within a day; subject: the folder
    SpaceShort,     ///< ... within an hour
    ClockEarly,     ///< the system clock is before the program was made
    NameTaken,      ///< a log of the name exists and is not replaced
    SyncFailed,     ///< the log could not be synchronised with the disk
    DiskStalled,    ///< the disk takes nothing; frames wait in memory
    FramesUnstored, ///< accepted frames that could not be kept for the log
    PortLost,       ///< subject: the resource, as for the other port events
    PortBack,
    FramesLost,    ///< the frame queue overflowed
    BytesLost,     ///< bytes that no frame could be made of, for a reason worth saying
    NoFrames,      ///< bytes for a while and no frame of any instrument
    BytesNotKept,  ///< a capture of a port's bytes is full or failed; subject: its path
    CaptureFailed, ///< ... which had been asked for
    ClockStepped,
    PositionKept,     ///< the position in a log's header is not the measured one
    DefinitionFaulty, ///< subject: the definition's path
    MemberRefused,    ///< subject: package and member
    UnitsUnknown,     ///< subject: the instrument; products that need the unit have no value
    SettingsFaulty,   ///< a line of Instruments.ini was passed over; subject: the file
    NotOpened,        ///< something that a session names; subject: the file, member or port
};

struct Event {
    EventKind kind = EventKind::Note;
    std::string subject;
    std::string text;
};

/// A seam: the command queue in the program, a collecting list in tests. Callable from any thread
/// and under any lock of the chain: an implementation may take only a leaf lock.
class CMessageSink {
  public:
    virtual ~CMessageSink() = default;
    virtual void Raise(Event event) = 0;
    /// A note for the session log.
    void Report(std::string text) { Raise({EventKind::Note, {}, std::move(text)}); }
};

} // namespace qor
