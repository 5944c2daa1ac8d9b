// SPDX-License-Identifier: GPL-3.0-or-later
//
// The settings folder on Windows: in the roaming application data.
#include "platform/SettingsFolder.h"

#include "platform/Win32Support.h"

#include <windows.h>

namespace qor {

namespace {

std::string Variable(const wchar_t* name) {
    std::wstring value(GetEnvironmentVariableW(name, nullptr, 0), L'\0');
    const DWORD length =
        GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
    value.resize(length < value.size() ? length : 0);
    return NarrowText(value);
}

std::string AsFolder(const std::string& path) {
    return path.ends_with('\\') || path.ends_with('/') ? path : path + '\\';
}

} // namespace

std::string SettingsFolder() {
    if (const std::string own = Variable(L"QORVIEW_HOME"); !own.empty())
        return AsFolder(FullPathOf(own));
    const std::string data = Variable(L"APPDATA");
    return data.empty() ? data : AsFolder(data) + "QorView\\";
}

} // namespace qor
