// SPDX-License-Identifier: GPL-3.0-or-later
//
// A disk that gets into trouble when it is told to: the program's own calls of write and fdatasync
// come here (this program's functions of these names stand before the system's) and fail, wait or
// go on. One disk a process; told by the simulation's thread, called by the log's writer and
// its synchroniser. Only Linux.
#pragma once

#include <cstdint>
#include <string>

namespace qor::disk {

/// So many bytes have room from now on; negative: without end.
void SetRoom(std::int64_t bytes);
/// Writes wait until the disk goes on.
void SetStalled(bool stalled);
/// Synchronisations fail.
void SetSyncFails(bool fails);

/// What tells the file apart whatever its name; 0: there is none of that name.
std::uint64_t FileNumber(const std::string& path);
/// Waits until that file is synchronised once more; false when a long time has passed without.
bool AwaitSync(std::uint64_t file);

} // namespace qor::disk
