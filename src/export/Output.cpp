// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/Output.h"

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

bool IsHeld(FileCause cause) {
    return cause == FileCause::SharingViolation || cause == FileCause::LockViolation;
}

/// What stands in the way of replacing an existing file.
OutputState WhyNotReplaced(const std::string& path, const OutputRules& rules) {
    if (IsAmong(path, rules.inputs))
        return OutputState::IsInput;
    bool isRawLog = false;
    const bool holds = HoldsBytes(path, isRawLog);
    if (isRawLog && !rules.overRawLogs)
        return OutputState::IsRawLog;
    return holds && !rules.overwrite ? OutputState::Exists : OutputState::Good;
}

} // namespace

COutput::COutput(FaultReport report) : Report(std::move(report)), Buffer(BufferSize) {}

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
    Report(Place + ": cannot be written. " + std::string(GetFileErrorText(cause)));
    Usable = false;
    WriteFailed = true;
    return {OutputState::Failed, Place};
}

OutputResult COutput::Refuse(OutputState state) {
    Usable = false;
    return {state, Place};
}

OutputResult COutput::Open(const std::string& path, const OutputRules& rules) {
    if (path.empty() || !Place.empty())
        return {};
    Place = path;
    if (IsDevice(path)) {
        const FileCause cause = File.OpenForWriting(path);
        return cause == FileCause::None ? OutputResult{} : Fail(cause);
    }
    if (IsDirectory(path))
        return Fail(FileCause::AccessDenied);
    if (IsSymbolicLink(path))
        return Refuse(OutputState::IsLink);
    Replaces = FileExists(path);
    if (Replaces) {
        if (const OutputState state = WhyNotReplaced(path, rules); state != OutputState::Good)
            return Refuse(state);
        if (const FileCause cause = CheckWritable(path); IsHeld(cause))
            return Refuse(OutputState::InUse);
        else if (cause != FileCause::None)
            return Fail(cause);
    }
    return OpenBeside(rules);
}

/// Decided: a file that stands beside and that nobody holds is what a killed run left.
OutputResult COutput::OpenBeside(const OutputRules& rules) {
    const std::string beside = Place + ".part";
    if (FileExists(beside) && IsAmong(beside, rules.inputs))
        return Refuse(OutputState::IsInput);
    FileCause cause = File.CreateNew(beside);
    if (cause == FileCause::AccessDenied && !IsSymbolicLink(beside) &&
        IsHeld(CheckWritable(beside)))
        return Refuse(OutputState::InUse);
    if (cause == FileCause::AccessDenied && RemoveFile(beside) == FileCause::None)
        cause = File.CreateNew(beside);
    if (cause != FileCause::None)
        return Fail(cause);
    Beside = beside;
    return {};
}

OutputResult COutput::Finish() {
    Flush();
    if (WriteFailed)
        return {OutputState::Failed, Place};
    if (Beside.empty())
        return {};
    FileCause cause = File.Sync();
    File.Close();
    if (cause == FileCause::None)
        cause = (Replaces ? RenameFile : RenameToNew)(Beside, Place);
    if (cause == FileCause::None) {
        Beside.clear();
        return {};
    }
    if (Replaces || !FileExists(Place))
        return Fail(cause);
    Report(Place + ": somebody else has made a file of this name meanwhile; the result stands in " +
           std::exchange(Beside, {}) + ".");
    WriteFailed = true;
    return {OutputState::Failed, Place};
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
