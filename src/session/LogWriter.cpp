// SPDX-License-Identifier: GPL-3.0-or-later
//
// Whole records to the raw log's file. See LogWriter.h.
#include "session/LogWriter.h"

#include <algorithm>
#include <utility>

namespace qor {

void LogRecords::Add(std::uint32_t owner, ByteSpan record, ByteSpan tag) {
    bytes.insert(bytes.end(), record.begin(), record.end());
    bytes.insert(bytes.end(), tag.begin(), tag.end());
    marks.push_back({bytes.size(), owner});
}

void LogRecords::Take(LogRecords& other) {
    if (Empty()) {
        std::swap(bytes, other.bytes);
        std::swap(marks, other.marks);
    } else {
        const std::size_t before = bytes.size();
        bytes.insert(bytes.end(), other.bytes.begin(), other.bytes.end());
        for (const Mark& mark : other.marks)
            marks.push_back({before + mark.end, mark.owner});
    }
    other.Clear();
}

void LogRecords::DropFirst(std::size_t count) {
    if (count == 0)
        return;
    const std::size_t dropped = marks[count - 1].end;
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(dropped));
    marks.erase(marks.begin(), marks.begin() + static_cast<std::ptrdiff_t>(count));
    for (Mark& mark : marks)
        mark.end -= dropped;
}

void LogRecords::Clear() {
    bytes.clear();
    marks.clear();
}

FileCause CLogWriter::Create(const std::string& path, bool replaces) {
    FileSize = 0;
    CutBack = FileCause::None;
    return replaces ? File.CreateExclusive(path) : File.CreateNew(path);
}

FileCause CLogWriter::Write(const LogRecords& records, std::size_t& written) {
    written = records.marks.size();
    if (records.Empty())
        return FileCause::None;
    FileCause cause = File.Write(records.bytes);
    if (cause == FileCause::None)
        FileSize += records.bytes.size();
    else
        written = CutToWholeRecords(records);
    return cause;
}

std::size_t CLogWriter::CutToWholeRecords(const LogRecords& records) {
    std::uint64_t reached = 0;
    CutBack = File.Size(reached);
    if (CutBack != FileCause::None)
        return 0;
    const std::uint64_t arrived = reached > FileSize ? reached - FileSize : 0;
    const auto firstBroken =
        std::ranges::upper_bound(records.marks, arrived, {}, &LogRecords::Mark::end);
    const auto whole = static_cast<std::size_t>(firstBroken - records.marks.begin());
    FileSize += whole ? records.marks[whole - 1].end : 0;
    CutBack = File.Truncate(FileSize);
    return whole;
}

} // namespace qor
