// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/CaptureFile.h"

#include "base/Text.h"
#include "session/LogName.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::size_t LongestPortName = 64;
constexpr std::string_view CaptureExtension = ".bin";

/// A port's name as part of a file's: "ttyUSB0" of "/dev/ttyUSB0"; its end is what tells long ones
/// apart.
std::string FileNameOf(std::string_view port) {
    constexpr std::string_view devices = "/dev/";
    if (port.starts_with(devices))
        port.remove_prefix(devices.size());
    if (port.size() > LongestPortName)
        port.remove_prefix(port.size() - LongestPortName);
    std::string name(port);
    std::ranges::replace_if(
        name,
        [](char c) {
            const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
            return !letter && !IsDigit(c) && c != '-';
        },
        '_');
    return name;
}

} // namespace

FileCause CCaptureFile::Create(const std::string& folder, const FrameTime& now,
                               const std::string& port) {
    const std::string log = TimeStampFileName(LocalCalendar(now));
    const std::string stem = folder + log.substr(0, log.rfind('.')) + "-" + FileNameOf(port);
    FileCause cause = FileCause::AccessDenied;
    for (int number = 1; number <= LastSuffix && cause != FileCause::None; ++number) {
        Name = stem + (number == 1 ? "" : "-" + std::to_string(number)) +
               std::string(CaptureExtension);
        const bool taken = FileExists(Name) || IsSymbolicLink(Name);
        if (taken)
            continue;
        cause = File.CreateNew(Name);
        if (cause != FileCause::None && !FileExists(Name))
            return cause; // not for its name
    }
    return cause;
}

FileCause CCaptureFile::Write(ByteSpan bytes) {
    if (!IsOpen()) {
        Missing += bytes.size();
        return FileCause::None;
    }
    const auto room = static_cast<std::size_t>(std::min<std::uint64_t>(Limit - Size, bytes.size()));
    const FileCause cause = File.Write(bytes.first(room));
    std::uint64_t stands = Size + room;
    if (cause != FileCause::None && File.Size(stands) != FileCause::None)
        stands = Size;
    stands = std::min(stands, Size + room); // others may have added to it
    Missing += Size + bytes.size() - stands;
    Size = stands;
    if (cause != FileCause::None || IsFull())
        File.Close();
    return cause;
}

bool CCaptureFile::GiveUpIfGone() {
    std::uint64_t size = 0;
    if (!IsOpen() || (File.Standing() == FileStanding::There &&
                      File.Size(size) == FileCause::None && size >= Size))
        return false;
    Missing += Size;
    File.Close();
    return true;
}

} // namespace qor
