// SPDX-License-Identifier: GPL-3.0-or-later
//
// Messages for the numbers of GetLastError: in English where the system has that language, so that
// a log can be read by whoever looks after the instrument, else in the system's own.
#include "platform/SystemText.h"

#include "platform/Win32Support.h"

#include <windows.h>

namespace qor {

std::string SystemErrorText(std::uint32_t error) {
    constexpr DWORD Flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    constexpr DWORD Languages[] = {MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), 0};
    wchar_t text[1024];
    DWORD length = 0;
    for (DWORD language : Languages) {
        length = FormatMessageW(Flags, nullptr, error, language, text, 1024, nullptr);
        if (length != 0)
            break;
    }
    while (length > 0 && (text[length - 1] <= L' '))
        --length;
    if (length == 0)
        return "Unknown error " + std::to_string(error) + "\r\n";
    return NarrowText({text, length}) + "\r\n";
}

} // namespace qor
