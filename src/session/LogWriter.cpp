// SPDX-License-Identifier: GPL-3.0-or-later
//
// Whole records to the raw log's file. See LogWriter.h.
#include "session/LogWriter.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qor {

void LogRecords::Add(std::uint32_t owner, ByteSpan record, ByteSpan tag) {
    const std::size_t before = bytes.size();
    marks.push_back({before + record.size() + tag.size(), owner});
    try {
        bytes.insert(bytes.end(), record.begin(), record.end());
        bytes.insert(bytes.end(), tag.begin(), tag.end());
    } catch (const std::bad_alloc&) { // a part of a record would spoil all that follow
        bytes.resize(before);
        marks.pop_back();
        throw;
    }
}

bool LogRecords::Take(LogRecords& other) {
    if (Empty()) {
        std::swap(bytes, other.bytes);
        std::swap(marks, other.marks);
        other.Clear();
        return true;
    }
    const std::size_t bytesBefore = bytes.size(), marksBefore = marks.size();
    try {
        marks.insert(marks.end(), other.marks.begin(), other.marks.end());
        bytes.insert(bytes.end(), other.bytes.begin(), other.bytes.end());
    } catch (const std::bad_alloc&) {
        marks.resize(marksBefore);
        return false;
    }
    for (std::size_t i = marksBefore; i < marks.size(); ++i)
        marks[i].end += bytesBefore;
    other.Clear();
    return true;
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
    Hash = CSha256();
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
    if (Hashing && written > 0)
        Hash.Update(ByteSpan(records.bytes).first(records.marks[written - 1].end));
    return cause;
}

std::string CLogWriter::Sha256() const {
    return Hashing && CutBack == FileCause::None ? Hash.Digits() : std::string();
}

std::size_t CLogWriter::CutToWholeRecords(const LogRecords& records) {
    std::uint64_t reached = 0;
    CutBack = File.Size(reached);
    if (CutBack != FileCause::None)
        return 0;
    if (reached <= FileSize) // nothing arrived, or another program has cut the file: it stays so
        return 0;
    const std::uint64_t arrived = reached - FileSize;
    const auto firstBroken =
        std::ranges::upper_bound(records.marks, arrived, {}, &LogRecords::Mark::end);
    const auto whole = static_cast<std::size_t>(firstBroken - records.marks.begin());
    FileSize += whole ? records.marks[whole - 1].end : 0;
    CutBack = File.Truncate(FileSize);
    return whole;
}

} // namespace qor
