// SPDX-License-Identifier: GPL-3.0-or-later
//
// Playing in batches small enough to stay in the processor's cache. The end of a file stops
// reading, never delivery: what the end settles is still handed over, and only then is the end
// reported.
#include "telemetry/FilePlayer.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "telemetry/RawLogFormat.h"

#include <algorithm>

namespace qor {

namespace {

/// Bounds the memory that a read takes, whatever the settings say.
constexpr std::uint32_t MaxReadSize = 64u << 20;
constexpr std::uint32_t DefaultReadSize = 2048;
/// What one call reads at the most when no frame comes, so that its caller stays responsive.
constexpr std::uint64_t BytesPerCall = 16u << 20;

bool IsHeaderRecord(CInputFile& file, std::uint64_t offset) {
    std::uint8_t start[HeaderRecordStart.size()];
    std::size_t got = 0;
    return file.SeekTo(offset) == FileCause::None && file.Read(start, got) == FileCause::None &&
           AsText({start, got}) == HeaderRecordStart;
}

} // namespace

void CFilePlayer::Load(CInputFile file, const FileResourceSettings& settings) {
    Name = file.Path();
    File = std::move(file);
    Settings = settings;
    Piece = settings.readChunkSize == 0 ? DefaultReadSize
                                        : std::min(settings.readChunkSize, MaxReadSize);
    Started = WasRead = EndReported = false;
    Result = CommResult::Success;
}

FileCause CFilePlayer::Seek(CFrameSync& sync, std::uint64_t offset) {
    CInputFile anew;
    if (IsDevice(Name))
        return FileCause::BadSeek;
    if (const FileCause cause = anew.OpenForReading(Name); cause != FileCause::None)
        return cause;
    const bool known = sync.KnowsStream();
    Load(std::move(anew), FileResourceSettings(Settings));
    if (offset == 0 || !known)
        sync.Restart(Name, StreamSource::File);
    if (offset == 0)
        return FileCause::None;
    if (!known) { // its first bytes say whether it is a raw log
        ReadPiece(sync);
        sync.RunPass(1);
    }
    // The text of a header record may look like frames: it is read from its start.
    const std::uint64_t record = offset - offset % HeaderRecordSize;
    const bool inHeader = IsHeaderRecord(File, record);
    const FileCause cause = File.SeekTo(inHeader ? record : offset);
    sync.Jump(inHeader ? record : offset, inHeader);
    WasRead = false;
    return cause;
}

CommResult CFilePlayer::ReadOn(CFrameSync& sync) {
    const std::uint64_t begun = sync.Figures().bytesReceived;
    while (sync.Frames().Empty() && !EndReported &&
           sync.Figures().bytesReceived - begun < BytesPerCall) {
        if (sync.RunPass(Settings.framesAtOnce).framesQueued)
            break;
        if (WasRead)
            ReportEnd();
        else
            ReadPiece(sync);
    }
    return sync.Frames().Empty() ? Result : CommResult::Success;
}

void CFilePlayer::ReadPiece(CFrameSync& sync) {
    if (!File.IsOpen())
        return Fail(sync, CommResult::FileNotOpen, {});
    Started = true;
    std::span<std::uint8_t> room = sync.Prepare(Piece);
    std::size_t got = 0;
    FileCause cause = File.Read(room, got);
    sync.Commit(got);
    if (cause != FileCause::None)
        return Fail(sync, CommResult::FileError, ResourceFileErrorText(cause));
    WasRead = got == 0;
    if (WasRead)
        sync.EndOfStream();
}

/// What was read before is still settled and delivered; after it, retrieving gives the code.
void CFilePlayer::Fail(CFrameSync& sync, CommResult code, std::string_view causeText) {
    Sink.Report(Format("Error reading file resource %s.\r\n", Name.c_str())
                    .append(CommDetail(code))
                    .append(causeText));
    Result = code;
    WasRead = true;
    sync.EndOfStream();
}

/// The notice tells the loop that nothing more will come, also after a failure; the message says
/// that the end was reached only where it was.
void CFilePlayer::ReportEnd() {
    EndReported = true;
    File.Close();
    if (Result == CommResult::Success)
        Sink.Report(Format("End of file resource reached for %s.\r\n", Name.c_str()));
    if (Commands != nullptr)
        Commands->PostNotice(NoticeCode::EndOfFile, Name);
}

} // namespace qor
