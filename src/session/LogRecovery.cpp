// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/LogRecovery.h"

#include "base/SilentSink.h"
#include "base/Text.h"
#include "platform/File.h"
#include "platform/FileErrorText.h"
#include "platform/Folder.h"
#include "session/LogName.h"
#include "telemetry/FrameSync.h"
#include "telemetry/RawLogFormat.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <limits>
#include <set>
#include <tuple>
#include <vector>

namespace qor {

namespace {

/// The end of a log that is looked at: more than the longest frame that is cut.
constexpr std::uint64_t TailBytes = CFrameEnd::LongestFixedFrame + (1U << 20);
/// No header block is as long.
constexpr std::uint64_t MostHeader = 64 * HeaderRecordSize;
/// Side files of one log.
/// A log that is written grows more often than this.
constexpr std::chrono::minutes RestingTime{1};

/// By the system's clock; also when that cannot be told.
bool WasWrittenLately(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_time_type written = fs::last_write_time(path, error);
    return error || fs::file_time_type::clock::now() - written < RestingTime;
}

/// Opens a file that no program writes. Where the file system has no locks, a second handle can be
/// had beside the first.
/// Decided: there a file that was written within the last minute counts as another program's; a log
/// that a crash has just cut off is finished by a later run.
FileCause OpenResting(const std::string& path, CFile& file) {
    const FileCause cause = file.OpenAlone(path);
    CFile second;
    const bool noLocks = cause == FileCause::None && second.OpenAlone(path) == FileCause::None;
    return noLocks && WasWrittenLately(path) ? FileCause::SharingViolation : cause;
}

FileCause ReadAt(CFile& file, std::uint64_t offset, std::uint64_t count,
                 std::vector<std::uint8_t>& bytes) {
    bytes.resize(static_cast<std::size_t>(count));
    if (FileCause cause = file.SeekTo(offset); cause != FileCause::None)
        return cause;
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        std::size_t got = 0;
        const FileCause cause = file.Read(std::span(bytes).subspan(filled), got);
        if (cause != FileCause::None)
            return cause;
        if (got == 0)
            return FileCause::EndOfFile;
        filled += got;
    }
    return FileCause::None;
}

/// The size of the whole header records that the bytes begin with.
std::size_t HeaderSize(ByteSpan bytes) {
    std::size_t size = 0;
    while (bytes.size() - size >= HeaderRecordSize &&
           BeginsWith(bytes.subspan(size), HeaderRecordStart))
        size += HeaderRecordSize;
    return size;
}

/// Whether nothing follows that could be data: no byte, or a record that the file ends in.
bool EndsInHeader(ByteSpan behind) {
    return behind.size() < HeaderRecordSize &&
           std::ranges::equal(behind.first(std::min(behind.size(), HeaderRecordStart.size())),
                              AsBytes(HeaderRecordStart.substr(0, behind.size())));
}

/// A log's last records as playing finds them.
class CLogEnd {
  public:
    CLogEnd(std::span<const LoggedInstrument> instruments, ByteSpan header);

    /// The end of the last whole record in the log's bytes from `offset` on, to its end; that of
    /// the header when they begin there and hold none. Else empty: no frame is of the instruments.
    std::optional<std::uint64_t> Find(std::uint64_t offset, ByteSpan bytes);
    /// Whether a whole frame stands behind it, of an instrument that has tags.
    bool IsBeforeUntagged() const { return Untagged; }
    /// Whether some frame is of the instruments.
    bool HasFrame() const { return Found; }

  private:
    void Process();
    void Take(const CFrameData& frame);

    CSilentSink Nobody;
    CFrameSync Sync;
    std::optional<std::uint64_t> End;
    const std::uint64_t HeaderBytes;
    std::set<std::string, std::less<>> Tagged; ///< instruments whose frames have had tags
    std::set<std::string, std::less<>> Bare;   ///< those whose frames may have none
    bool Untagged = false;
    bool Found = false;
};

CLogEnd::CLogEnd(std::span<const LoggedInstrument> instruments, ByteSpan header)
    : Sync(Nobody, "log", StreamSource::File), HeaderBytes(header.size()) {
    Sync.SetMaxFrameDepth(std::numeric_limits<std::int32_t>::max()); // they are taken at once
    for (const LoggedInstrument& instrument : instruments)
        if (Sync.Attach(instrument.request) == CommResult::Success) {
            std::ignore = Sync.SetAcquisition(instrument.request.instrumentName, true);
            if (!instrument.tagged)
                Bare.insert(instrument.request.instrumentName);
        }
    Sync.Append(header);
    Process();
}

std::optional<std::uint64_t> CLogEnd::Find(std::uint64_t offset, ByteSpan bytes) {
    if (offset == HeaderBytes)
        End = offset;
    else
        Sync.Jump(offset, false);
    Sync.Append(bytes);
    Process();
    Sync.EndOfStream();
    Process();
    while (End) { // time stamps are records too
        const auto length = TimeStampLength(bytes.subspan(static_cast<std::size_t>(*End - offset)));
        if (length.value_or(0) == 0)
            break;
        *End += *length;
    }
    return End;
}

void CLogEnd::Process() {
    for (bool more = true; more;) {
        more = Sync.RunPass().moreReady;
        CFrameData frame;
        while (Sync.Frames().Pop(frame))
            Take(frame);
    }
}

/// A frame and its tag are one record: one without, of an instrument that has tags, is a part of
/// one, and stays behind the end. Which instrument had none when the log was written, only the log
/// knows.
/// Decided: the first frame of an instrument that is not in the GPS role of this run is taken for
/// one that lost its tag; a second one shows that there were none.
void CLogEnd::Take(const CFrameData& frame) {
    const bool tagged = frame.Info.time.known;
    if (tagged)
        Tagged.insert(frame.Info.instrumentName);
    Untagged = !tagged && (Tagged.contains(frame.Info.instrumentName) ||
                           Bare.insert(frame.Info.instrumentName).second);
    if (Untagged)
        return;
    Found = true;
    End = frame.StreamOffset + frame.Bytes.size() + (tagged ? TimeTagSize : 0);
}

/// Whether the bytes are the beginning of a record, or blocks that a power cut left empty. Anything
/// else may be whole frames of instruments that are not in this run.
bool IsTornRecord(ByteSpan rest, std::span<const LoggedInstrument> instruments) {
    const std::string_view text = AsText(rest);
    const auto begins = [text](std::string_view header) {
        return !header.empty() && (text.starts_with(header) || header.starts_with(text));
    };
    return text.find_first_not_of('\0') == std::string_view::npos || begins(TimeStampStart) ||
           std::ranges::any_of(instruments, [&begins](const LoggedInstrument& instrument) {
               return begins(instrument.request.syncHeader);
           });
}

/// Whether it could be one record of the instruments. Without a frame of theirs nothing else says
/// that the log is theirs.
bool IsOneRecord(ByteSpan rest, std::span<const LoggedInstrument> instruments) {
    std::string_view text = AsText(rest);
    text = text.substr(0, text.find_last_not_of('\0') + 1);
    std::size_t most = MaxTimeStampSize;
    for (const LoggedInstrument& instrument : instruments) {
        const AttachRequest& request = instrument.request;
        if (request.syncHeader.empty() || !text.starts_with(request.syncHeader))
            continue;
        const std::size_t end = request.terminator.empty()
                                    ? static_cast<std::size_t>(request.frameSize)
                                    : std::min(text.find(request.terminator), text.size());
        most = std::max(most, end + request.terminator.size() + TimeTagSize);
    }
    return text.size() < most;
}

/// Cuts a log that rests. It keeps the time of its last record, so that it still counts as one.
FileCause CutResting(CFile& log, std::uint64_t end) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_time_type written = fs::last_write_time(log.Path(), error);
    FileCause cause = log.Truncate(end);
    if (cause == FileCause::None)
        cause = log.Sync();
    if (!error)
        fs::last_write_time(log.Path(), written, error); // else it rests again in a minute
    return cause;
}

/// Moves what stands behind `end` into a file beside. Its path; the cause when it could not be.
FileCause MoveRest(CFile& log, std::uint64_t end, ByteSpan rest, std::string& side) {
    CFile file;
    FileCause cause = FileCause::AccessDenied;
    for (int number = 1; number <= LastSuffix && cause == FileCause::AccessDenied; ++number) {
        side = log.Path() + ".rest" + (number == 1 ? "" : "-" + std::to_string(number));
        cause = file.CreateNew(side);
    }
    if (cause == FileCause::None)
        cause = file.Write(rest);
    if (cause == FileCause::None)
        cause = file.Sync();
    return cause == FileCause::None ? CutResting(log, end) : cause;
}

/// What is to be said of a log, once it is finished.
struct Remains {
    FileCause cause = FileCause::None; ///< why it could not be finished
    bool isLog = false;                ///< with data, and nobody writes it
    bool judged = false;               ///< frames told where its records end
    bool isProtected = false;          ///< against writing, as a finished log is
    std::uint64_t rest = 0;            ///< bytes that were moved
    bool untagged = false;             ///< with them a whole frame
    std::string side;
};

Remains Finish(const std::string& path, std::span<const LoggedInstrument> instruments) {
    Remains found;
    CFile log;
    std::uint64_t size = 0;
    std::vector<std::uint8_t> header, tail;
    if (OpenResting(path, log) != FileCause::None || log.Size(size) != FileCause::None ||
        ReadAt(log, 0, std::min(size, MostHeader), header) != FileCause::None)
        return found;
    header.resize(HeaderSize(header));
    found.isLog = !header.empty() && header.size() < size;
    if (!found.isLog)
        return found;
    const std::uint64_t from =
        std::max<std::uint64_t>(header.size(), size - std::min(size, TailBytes));
    found.cause = ReadAt(log, from, size - from, tail);
    if (found.cause != FileCause::None)
        return found;
    if (from == header.size() && EndsInHeader(tail)) {
        found.isLog = false;
        return found;
    }
    CLogEnd logEnd(instruments, header);
    const std::optional<std::uint64_t> end = logEnd.Find(from, tail);
    const ByteSpan rest =
        end ? ByteSpan(tail).subspan(static_cast<std::size_t>(*end - from)) : ByteSpan();
    found.judged = end && (rest.empty() || (IsTornRecord(rest, instruments) &&
                                            (logEnd.HasFrame() || IsOneRecord(rest, instruments))));
    if (found.judged && !rest.empty()) {
        found.rest = rest.size();
        found.untagged = logEnd.IsBeforeUntagged();
        found.cause = MoveRest(log, *end, rest, found.side);
    }
    // Without a frame it is to block no name; see IsAbandonedLog.
    const bool isBare = found.judged && *end == header.size();
    bool readOnly = false;
    found.isProtected = found.cause == FileCause::None && !isBare &&
                        log.SetReadOnly(true) == FileCause::None &&
                        IsReadOnly(path, readOnly) == FileCause::None && readOnly;
    return found;
}

std::string TextOf(const std::string& path, const Remains& found) {
    const std::string log = "The log \"" + path + "\" was ";
    if (found.cause != FileCause::None)
        return log + "not ended, and could not be finished: " +
               std::string(GetFileErrorText(found.cause));
    if (found.rest > 0)
        return log +
               (found.untagged ? "not ended, as by a crash: its last frame has no time tag. "
                               : "cut off within a record. ") +
               Format("Its last %llu bytes stand in \"%s\" now.",
                      static_cast<unsigned long long>(found.rest), found.side.c_str());
    return log + "not ended, as by a crash. " +
           (found.judged ? "It ends with a whole record."
                         : "Its end is of no instrument of this run and stays as it is.");
}

/// Whether a file begins as a raw log does, whatever its name; a few bytes are read.
bool BeginsAsLog(const std::string& path) {
    CFile file;
    std::array<std::uint8_t, HeaderRecordStart.size()> begin{};
    std::size_t got = 0;
    return !IsDevice(path) && file.OpenForReading(path) == FileCause::None &&
           file.Read(begin, got) == FileCause::None &&
           BeginsHeaderRecord(ByteSpan(begin).first(got));
}

} // namespace

void FinishCutLogs(const std::string& folder, std::span<const LoggedInstrument> instruments,
                   CMessageSink& messages) {
    for (const std::string& name : NamesIn(folder)) {
        const std::string path = folder + name;
        bool readOnly = false;
        if (IsReadOnly(path, readOnly) != FileCause::None || readOnly || !BeginsAsLog(path))
            continue;
        const Remains found = Finish(path, instruments);
        if (!found.isLog)
            continue;
        // Some disks know no protection: there every log looks like this.
        if (found.cause == FileCause::None && !found.isProtected && found.rest == 0)
            continue;
        messages.Raise({EventKind::LogRecovered, path, TextOf(path, found) + "\r\n"});
    }
}

bool IsAbandonedLog(const std::string& path) {
    CFile log;
    std::uint64_t size = 0;
    std::vector<std::uint8_t> bytes;
    if (OpenResting(path, log) != FileCause::None || log.Size(size) != FileCause::None ||
        size > MostHeader || ReadAt(log, 0, size, bytes) != FileCause::None)
        return false;
    return EndsInHeader(ByteSpan(bytes).subspan(HeaderSize(bytes)));
}

} // namespace qor
