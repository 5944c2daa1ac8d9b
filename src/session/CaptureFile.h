// SPDX-License-Identifier: GPL-3.0-or-later
//
// The bytes of one port as they came, in a file of their own beside the raw logs: what can be
// decoded once its definition is right. It replaces nothing and follows no symbolic link, and it
// takes no more than its limit. One thread; whatever waits for the disk here is called without a
// lock.
#pragma once

#include "platform/Clock.h"
#include "platform/File.h"

#include <string>

namespace qor {

class CCaptureFile {
  public:
    static constexpr std::uint64_t DefaultLimit = 100'000'000; // bytes

    explicit CCaptureFile(std::uint64_t limit) : Limit(limit) {}

    /// Creates the file in a folder whose name ends in a separator, under the local time and the
    /// port's name. A name that is taken gets a number.
    FileCause Create(const std::string& folder, const FrameTime& now, const std::string& port);
    /// Writes what there is room for. After a failure, or when it is full, the file is closed; what
    /// comes then is counted.
    FileCause Write(ByteSpan bytes);
    /// Closes a file that was deleted, moved or cut by somebody else, and counts what it held. True
    /// when it did.
    bool GiveUpIfGone();
    void Close() { File.Close(); }

    bool IsOpen() const { return File.IsOpen(); }
    bool IsFull() const { return Size >= Limit; }
    /// Bytes that were to be written and are not in the file.
    std::uint64_t Unkept() const { return Missing; }
    /// Also of a file that could not be created.
    const std::string& Path() const { return Name; }

  private:
    const std::uint64_t Limit;
    std::uint64_t Size = 0;
    std::uint64_t Missing = 0;
    std::string Name;
    CFile File;
};

} // namespace qor
