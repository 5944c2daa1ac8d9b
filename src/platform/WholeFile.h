// SPDX-License-Identifier: GPL-3.0-or-later
//
// Small files that are read and written as a whole: settings, sessions. A reader sees the old file
// or the new one, never a half, whenever the writing ends. Any thread; no state.
#pragma once

#include "platform/File.h"

#include <string>
#include <string_view>

namespace qor {

/// Reads a file of at most so many bytes; a larger one is InvalidFile. `bytes` is empty after a
/// failure.
FileCause ReadWholeFile(const std::string& path, std::size_t most, std::string& bytes);

/// Writes beside the file (its path with ".part") and renames. The old file stays when that fails;
/// one that is read-only is AccessDenied. A symbolic link of the name is replaced, not followed. Of
/// two programs that write the same file at once the last one wins.
FileCause WriteWholeFile(const std::string& path, std::string_view bytes);

/// The bytes of a file; 0 when it has no size that is known: a device, or one that cannot be read.
std::uint64_t FileSizeOf(const std::string& path);

/// Makes a folder and those above it that are missing; None when it is there already.
FileCause MakeDirectories(const std::string& path);

} // namespace qor
