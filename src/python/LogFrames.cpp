// SPDX-License-Identifier: GPL-3.0-or-later
#include "python/LogFrames.h"

#include "export/ManifestCheck.h"
#include "instrument/SpecialType.h"
#include "platform/FileErrorText.h"
#include "telemetry/RawLogReader.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::size_t FramesOfEstimate = 1000;
constexpr std::size_t ReadAhead = 1 << 20; ///< bytes that are read of a log at once

/// Columns without frames, by what the log and its instrument are.
std::unique_ptr<CFrameColumns>
MakeColumns(const LogCall& call, const ExportedInstrument& instrument, const FrameStyle& style) {
    ExportSettings settings;
    settings.style = style;
    settings.style.utcOffset = call.utcOffset;
    settings.call = call.text;
    const LogSource source = SourceOf({call.path, {}}, settings);
    return std::make_unique<CFrameColumns>(LayoutOfFrames(source, instrument, style), style,
                                           source.utcOffset);
}

/// How many frames a log will have, by the bytes that the first ones took; 0: it has no size.
std::size_t ExpectedFrames(std::size_t frames, std::uint64_t bytes, std::uint64_t size) {
    constexpr double Margin = 1.02;
    const double share =
        static_cast<double>(size) / static_cast<double>(std::max<std::uint64_t>(bytes, 1));
    return bytes == 0 || size < bytes
               ? 0
               : static_cast<std::size_t>(static_cast<double>(frames) * share * Margin);
}

/// A piece of a file that goes along with places that ascend.
class CWindow {
  public:
    explicit CWindow(CInputFile& file) : File(file) {}

    /// Empty when the file does not have so many bytes there.
    ByteSpan At(std::uint64_t offset, std::size_t size) {
        const auto inside = [&] {
            return offset >= Begin && offset + size <= Begin + Bytes.size();
        };
        if (!inside())
            Fill(offset, std::max(size, ReadAhead));
        return inside() ? ByteSpan(Bytes).subspan(static_cast<std::size_t>(offset - Begin), size)
                        : ByteSpan();
    }

  private:
    void Fill(std::uint64_t offset, std::size_t size) {
        Begin = offset;
        Bytes.resize(size);
        std::size_t filled = 0;
        bool well = File.SeekTo(offset) == FileCause::None;
        for (std::size_t got = 0; well && filled < size; filled += got)
            well = File.Read(std::span(Bytes).subspan(filled), got) == FileCause::None && got > 0;
        Bytes.resize(filled);
    }

    CInputFile& File;
    std::uint64_t Begin = 0;
    std::vector<std::uint8_t> Bytes;
};

} // namespace

ReadFault ReadColumns(const LogCall& call, const std::string& instrument, bool derived,
                      std::unique_ptr<CFrameColumns>& columns) {
    CLogReading log;
    CQorViewIns* wanted = nullptr;
    if (ReadFault fault = log.Open(call))
        return fault;
    if (ReadFault fault = log.Find(instrument, wanted))
        return fault;
    FrameStyle style;
    style.derived = derived;
    std::vector<DerivedRow> rows;
    if (derived)
        log.Doc().ReadDerived(*wanted, rows);
    columns = MakeColumns(call, {&wanted->Live, rows}, style);
    const auto seen = [&](CQorViewIns& one, const FrameCheckResult& checks) {
        if (&one != wanted)
            return;
        if (derived)
            log.Doc().ReadDerived(one, rows);
        columns->Take({one.Live, checks, rows});
        if (columns->Frames() == FramesOfEstimate)
            columns->Reserve(ExpectedFrames(FramesOfEstimate, one.Live.CurrentFrame()->StreamOffset,
                                            log.Playing().Size()));
    };
    ReadFault fault = log.Play(seen);
    columns->Finish();
    return fault;
}

ReadFault VerdictOf(const LogCall& call, std::string& json) {
    CRawLogReader header;
    FileCause cause = header.Open(call.path);
    if (cause == FileCause::None)
        cause = header.ReadOn();
    if (cause != FileCause::None)
        return {call.path + ": cannot be read. " + std::string(GetFileErrorText(cause)), true};
    CManifestCheck manifest(call.path, false);
    CLogCheck check;
    check.Know(manifest.Manifest().steps);
    CLogReading log;
    if (ReadFault fault = log.Open(call))
        return fault;
    log.Playing().KeepDiscarded(check.Discarded());
    const auto seen = [&](const CQorViewIns& instrument, const FrameCheckResult& checks) {
        check.Note(instrument, checks);
    };
    if (ReadFault fault = log.Play(seen))
        return fault;
    LogVerdict verdict =
        check.Finish(header, log.Playing().Figures().bytesReceived, log.Doc().Snapshot());
    manifest.Judge(log.Doc(), verdict);
    COutput output(COutput::TextTaker([&](std::string_view text) {
        json += text;
        return true;
    }));
    WriteVerdictJson(output, call.path, verdict);
    output.Flush();
    return {};
}

ReadFault CFrameIndex::Make(const LogCall& call, const std::string& instrument) {
    Path = call.path;
    if (IsDevice(Path))
        return {Path + ": a pipe can be read only once; save it to a file to read it by blocks."};
    Log = std::make_unique<CLogReading>();
    CQorViewIns* wanted = nullptr;
    if (ReadFault fault = Log->Open(call))
        return fault;
    if (ReadFault fault = Log->Find(instrument, wanted))
        return fault;
    Instrument = wanted;
    PlainColumns = MakeColumns(call, {&wanted->Live, {}}, {});
    const auto seen = [&](const CQorViewIns& one, const FrameCheckResult& checks) {
        if (&one != wanted)
            return;
        const CFrameData& frame = *one.Live.CurrentFrame();
        PlainColumns->TakePlain({one.Live, checks, {}});
        Places.push_back({frame.StreamOffset, static_cast<std::uint32_t>(frame.Bytes.size())});
    };
    ReadFault fault = Log->Play(seen);
    PlainColumns->Finish();
    return fault;
}

ReadFault CFrameIndex::Read(std::size_t first, std::size_t count,
                            std::unique_ptr<CFrameColumns>& columns) const {
    const CInstrument& definition = Instrument->Definition();
    CLiveInstrument live(definition);
    live.Immersed = Instrument->Live.Immersed;
    columns = std::make_unique<CFrameColumns>(PlainColumns->Layout(), FrameStyle(), std::nullopt);
    columns->Reserve(count);
    CInputFile file;
    FileCause cause = file.OpenForReading(Path);
    if (cause != FileCause::None)
        return {Path + ": cannot be read. " + std::string(GetFileErrorText(cause)), true};
    const ReadFault changed{Path + ": it has changed since it was opened; open it again.", true};
    CWindow window(file);
    CFrameData frame;
    frame.Info.identity = 1;
    const bool headed = !SpecialTypeOf(definition);
    for (std::size_t i = first; i < std::min(first + count, Places.size()); ++i) {
        const ByteSpan bytes = window.At(Places[i].offset, Places[i].size);
        if (bytes.empty() || (headed && !AsText(bytes).starts_with(definition.SyncHeader())))
            return changed;
        frame.Bytes.assign(bytes.begin(), bytes.end());
        live.Take(frame);
        columns->TakeValues({live, {}, {}});
    }
    return {};
}

} // namespace qor
