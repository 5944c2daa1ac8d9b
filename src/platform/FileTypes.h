// SPDX-License-Identifier: GPL-3.0-or-later
//
// Which program the system opens a file with, by the file's extension, for this user. Any thread.
#pragma once

#include "platform/File.h"

#include <span>
#include <string>

namespace qor {

struct FileType {
    const char* extension; ///< with its point
    const char* id;        ///< the system's name for the type
    const char* title;     ///< what people read
    bool ownsExtension;    ///< nobody else uses it: opened with the program from now on
};

#if defined(_WIN32)

/// Files of these types are opened with the running program, or, where the extension belongs to
/// others as well or has a program already, it is among those that are offered. None on success.
FileCause RegisterFileTypes(std::span<const FileType> types);

/// Takes back what RegisterFileTypes did; what others have registered since stays.
FileCause UnregisterFileTypes(std::span<const FileType> types);

#endif

} // namespace qor
