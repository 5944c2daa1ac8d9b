// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/Output.h"

#include "base/TerminalText.h"
#include "platform/Console.h"
#include "platform/FileErrorText.h"
#include "telemetry/RawLogFormat.h"

#include <algorithm>
#include <array>
#include <utility>

namespace qor {

namespace {

constexpr std::size_t BufferSize = 1 << 18;

bool IsAmong(const std::string& path, const std::vector<std::string>& inputs) {
    return std::ranges::any_of(inputs, [&](auto& input) { return IsSameFile(path, input); });
}

bool IsHeld(FileCause cause) {
    return cause == FileCause::SharingViolation || cause == FileCause::LockViolation;
}

/// Whether the file holds anything, and whether it begins as a raw log. One that cannot be read may
/// hold anything.
bool HoldsBytes(const std::string& path, bool& isRawLog) {
    CFile file;
    std::array<std::uint8_t, HeaderRecordStart.size()> start{};
    std::size_t got = 0;
    isRawLog = false;
    if (file.OpenForReading(path) != FileCause::None || file.Read(start, got) != FileCause::None)
        return true;
    isRawLog = AsText(ByteSpan(start).first(got)) == HeaderRecordStart;
    return got > 0;
}

/// Decided: a link to a device is followed where the system itself keeps such links (/dev/stdout,
/// /dev/serial); anywhere else somebody may have laid it for what is written under that name.
bool LeadsAway(const std::string& path) {
    const std::string full = FullPathOf(path);
    return IsSymbolicLink(path) && !full.starts_with("/dev/") && !full.starts_with("/proc/");
}

} // namespace

OutputState StateOfPlace(const std::string& path, const OutputRules& rules) {
    if (IsDevice(path))
        return LeadsAway(path) ? OutputState::IsLink : OutputState::Good;
    if (IsDirectory(path))
        return OutputState::IsFolder;
    if (IsSymbolicLink(path))
        return OutputState::IsLink;
    if (!FileExists(path))
        return OutputState::Good;
    if (IsAmong(path, rules.inputs))
        return OutputState::IsInput;
    if (IsHeld(CheckWritable(path)))
        return OutputState::InUse;
    bool isRawLog = false;
    const bool holds = HoldsBytes(path, isRawLog);
    if (isRawLog && !rules.overRawLogs)
        return OutputState::IsRawLog;
    return holds && !rules.overwrite ? OutputState::Exists : OutputState::Good;
}

COutput::COutput(FaultReport report)
    : Report(std::move(report)), Buffer(BufferSize), Shown(IsTerminal(StandardStream::Output)) {}

COutput::COutput(TextTaker taker, bool shown)
    : Taker(std::move(taker)), Buffer(BufferSize), Shown(shown) {}

COutput::~COutput() {
    if (Beside.empty()) {
        Flush();
        return;
    }
    File.Close();
    // Nobody can act on a failure here.
    static_cast<void>(RemoveFile(Beside));
}

OutputResult COutput::Fail(FileCause cause) {
    bool readOnly = false;
    const bool isProtected = cause == FileCause::AccessDenied &&
                             IsReadOnly(Place, readOnly) == FileCause::None && readOnly;
    Report(Place + ": cannot be written. " +
           (isProtected ? "It is write-protected; take the protection off or choose another name."
                        : std::string(GetFileErrorText(cause))));
    Usable = false;
    WriteFailed = true;
    return {OutputState::Failed, Place};
}

OutputResult COutput::Refuse(OutputState state, const std::string& path) {
    Usable = false;
    return {state, path};
}

OutputResult COutput::Open(const std::string& path, const OutputRules& rules) {
    if (!Place.empty())
        return {};
    if (path.empty()) {
        const auto input = std::ranges::find_if(rules.inputs, IsStandardOutput);
        return input == rules.inputs.end() ? OutputResult{} : Refuse(OutputState::IsInput, *input);
    }
    Place = path;
    Rules = rules;
    Shown = LeadsToTerminal(path);
    if (const OutputState state = StateOfPlace(path, rules); state != OutputState::Good)
        return Refuse(state, path);
    if (IsDevice(path)) {
        const FileCause cause = File.OpenForWriting(path);
        return cause == FileCause::None ? OutputResult{} : Fail(cause);
    }
    Replaces = FileExists(path);
    if (Replaces)
        if (const FileCause cause = CheckWritable(path); cause != FileCause::None)
            return Fail(cause);
    return OpenBeside();
}

/// Decided: a file that stands beside and that nobody holds is what a killed run left; it can be a
/// raw log only where such are made.
OutputResult COutput::OpenBeside() {
    const std::string beside = Place + ".part";
    OutputRules rules = Rules;
    rules.overwrite = true;
    const OutputState state = StateOfPlace(beside, rules);
    if (state != OutputState::Good && state != OutputState::IsLink)
        return Refuse(state, beside);
    FileCause cause = File.CreateNew(beside);
    if (cause == FileCause::AccessDenied && RemoveFile(beside) == FileCause::None)
        cause = File.CreateNew(beside);
    if (cause != FileCause::None)
        return Fail(cause);
    Beside = beside;
    return {};
}

std::string COutput::HandOver() {
    HandedOver = !Beside.empty();
    if (HandedOver)
        File.Close();
    return Beside;
}

/// Hours may have passed since it was opened.
bool COutput::MayBeReplaced() const {
    return !Replaces || StateOfPlace(Place, Rules) == OutputState::Good;
}

OutputResult COutput::Finish() {
    Flush();
    if (WriteFailed)
        return {OutputState::Failed, Place};
    if (Beside.empty())
        return {};
    if (HandedOver)
        if (const FileCause cause = File.OpenAlone(Beside); cause != FileCause::None)
            return Fail(cause);
    const FileCause synced = File.Sync();
    File.Close();
    if (synced != FileCause::None)
        return Fail(synced);
    if (MayBeReplaced()) {
        const FileCause cause = (Replaces ? RenameFile : RenameToNew)(Beside, Place);
        if (cause == FileCause::None) {
            Beside.clear();
            const FileCause named = SyncFolderOf(Place);
            return named == FileCause::None ? OutputResult{} : Fail(named);
        }
        if (Replaces || !FileExists(Place))
            return Fail(cause);
    }
    Report(Place + ": somebody else has made a file of this name meanwhile; the result stands in " +
           std::exchange(Beside, {}) + ".");
    WriteFailed = true;
    return {OutputState::Failed, Place};
}

void COutput::Foreign(std::string_view text) {
    Text(Shown ? TerminalText(text, TerminalLayout::OneLine) : text);
}

bool COutput::MakeRoom(std::string_view text) {
    if (!Flush())
        return false;
    if (text.size() <= Buffer.size())
        return true;
    Write(text);
    return false;
}

bool COutput::Flush() {
    std::size_t size = Used;
    Used = 0;
    return size == 0 ? Usable : Write({Buffer.data(), size});
}

bool COutput::Write(std::string_view bytes) {
    if (!Usable)
        return false;
    if (Taker)
        return Usable = Taker(bytes);
    const std::string text = Shown ? TerminalText(bytes, TerminalLayout::Lines) : std::string();
    if (Shown)
        bytes = text;
    if (!Place.empty()) {
        const FileCause cause = File.Write(AsBytes(bytes));
        if (cause == FileCause::None)
            return true;
        static_cast<void>(Fail(cause));
        return false;
    }
    const StreamWrite result = WriteStream(StandardStream::Output, bytes);
    if (result == StreamWrite::Done)
        return true;
    WriteFailed = result == StreamWrite::Failed;
    if (WriteFailed)
        Report("standard output cannot be written; is the disk full?");
    Usable = false;
    return false;
}

} // namespace qor
