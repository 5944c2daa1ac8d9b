// SPDX-License-Identifier: GPL-3.0-or-later
//
// The settings folder on Windows: beside a program that brings its settings along, else in the
// roaming application data.
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

/// The program's folder when its settings lie there.
std::string PortableFolder() {
    const std::string program = ProgramPath();
    const std::string folder = program.substr(0, program.rfind('\\') + 1);
    return FileExists(folder + "qorview.ini") ? folder : std::string();
}

/// Where the settings file stands; empty when they are in the registry.
std::string FileFolder() {
    const std::string own = Variable(L"QORVIEW_HOME");
    return own.empty() ? PortableFolder() : AsFolder(FullPathOf(own));
}

} // namespace

bool SettingsInFile() {
    return !FileFolder().empty();
}

std::string SettingsFolder() {
    if (const std::string own = FileFolder(); !own.empty())
        return own;
    const std::string data = Variable(L"APPDATA");
    return data.empty() ? data : AsFolder(data) + "QorView\\";
}

} // namespace qor
