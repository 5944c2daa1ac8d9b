// SPDX-License-Identifier: GPL-3.0-or-later
//
// Whole records to the raw log's file. See LogWriter.h.
#include "session/LogWriter.h"

#include <algorithm>

namespace qor {

FileCause CLogWriter::Create(const std::string& path) {
    Batch.clear();
    Ends.clear();
    FileSize = 0;
    CutBack = FileCause::None;
    return File.CreateExclusive(path);
}

void CLogWriter::Close() {
    File.Close();
    Batch.clear();
    Ends.clear();
}

void CLogWriter::Add(ByteSpan bytes, ByteSpan tag) {
    Batch.insert(Batch.end(), bytes.begin(), bytes.end());
    Batch.insert(Batch.end(), tag.begin(), tag.end());
    Ends.push_back(Batch.size());
}

FileCause CLogWriter::Flush(std::size_t& written) {
    written = Ends.size();
    FileCause cause = Ends.empty() ? FileCause::None : File.Write(Batch);
    if (cause == FileCause::None)
        FileSize += Batch.size();
    else
        written = CutToWholeRecords();
    Batch.clear();
    Ends.clear();
    return cause;
}

std::size_t CLogWriter::CutToWholeRecords() {
    std::uint64_t reached = 0;
    CutBack = File.Size(reached);
    if (CutBack != FileCause::None)
        return 0;
    std::uint64_t arrived = reached > FileSize ? reached - FileSize : 0;
    auto firstBroken = std::ranges::upper_bound(Ends, arrived);
    auto whole = static_cast<std::size_t>(firstBroken - Ends.begin());
    FileSize += whole ? Ends[whole - 1] : 0;
    CutBack = File.Truncate(FileSize);
    return whole;
}

} // namespace qor
