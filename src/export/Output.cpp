// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/Output.h"

#include "platform/Console.h"
#include "platform/FileErrorText.h"

namespace qor {

namespace {
constexpr std::size_t BufferSize = 1 << 18;
} // namespace

COutput::COutput(FaultReport report) : Report(std::move(report)), Buffer(BufferSize) {}

COutput::~COutput() {
    Flush();
}

OutputResult COutput::OpenFile(const std::string& path) {
    FileCause cause = File.OpenForWriting(path);
    if (cause == FileCause::None)
        return OutputResult::Good;
    Report(path + ": cannot be written. " + std::string(GetFileErrorText(cause)));
    Usable = false;
    WriteFailed = true;
    return OutputResult::Failed;
}

OutputResult COutput::OpenOnce(const std::string& path) {
    return path.empty() || File.IsOpen() ? OutputResult::Good : OpenFile(path);
}

OutputResult COutput::Finish() {
    Flush();
    return WriteFailed ? OutputResult::Failed : OutputResult::Good;
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
    if (File.IsOpen()) {
        FileCause cause = File.Write(AsBytes(bytes));
        if (cause == FileCause::None)
            return true;
        Report(File.Path() + ": cannot be written. " + std::string(GetFileErrorText(cause)));
        WriteFailed = true;
    } else {
        StreamWrite result = WriteStream(StandardStream::Output, bytes);
        if (result == StreamWrite::Done)
            return true;
        WriteFailed = result == StreamWrite::Failed;
        if (WriteFailed)
            Report("standard output cannot be written; is the disk full?");
    }
    Usable = false;
    return false;
}

} // namespace qor
