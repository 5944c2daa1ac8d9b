// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the Windows halves of this folder share: text and path conversion, causes of file errors.
// The rest of the program speaks 8-bit text (UTF-8 here) and never includes this. No state.
#pragma once

#include "platform/File.h"

#include <string>
#include <string_view>

namespace qor {

/// UTF-8 to the system's wide text. Bytes that are no UTF-8 are read in the system's code page:
/// names from an old archive or settings file still lead somewhere.
std::wstring WideText(std::string_view text);
std::string NarrowText(std::wstring_view text);

/// A path as the wide calls take it: beyond 247 characters made absolute and marked as long. Empty
/// when the text cannot be a path (empty, or with a NUL inside).
std::wstring WidePath(std::string_view path);

/// The name under which a serial port can be opened whatever its number: COM and digits get the
/// device prefix, any other text is itself.
std::wstring WidePortName(std::string_view name);

/// The path of the program that runs; empty when the system does not tell.
std::string ProgramPath();

/// The cause that stands for an error number of GetLastError.
FileCause FileCauseOf(unsigned long error);

} // namespace qor
