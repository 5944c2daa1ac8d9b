// SPDX-License-Identifier: GPL-3.0-or-later
//
// File types in this user's registry: a key for each type with its command and icon, and the
// extension's key, which names the type as the program for it or among those on offer.
#include "platform/FileTypes.h"

#include "platform/Registry_win32.h"
#include "platform/Win32Support.h"

#include <windows.h>

#include <shlobj.h>

namespace qor {

namespace {

const std::string Classes = "Software\\Classes\\";

/// Whether no program has the extension, neither for this user nor for all.
bool IsFree(const std::string& extension) {
    DWORD bytes = 0;
    const LSTATUS error = RegGetValueW(HKEY_CLASSES_ROOT, WideText(extension).c_str(), nullptr,
                                       RRF_RT_REG_SZ, nullptr, nullptr, &bytes);
    const bool ofAll = error == ERROR_SUCCESS && bytes > sizeof(wchar_t);
    return !ofAll && ReadRegistryText(Classes + extension, "").value_or("").empty();
}

FileCause Register(const FileType& type, const std::string& program) {
    const std::string id = Classes + type.id, extension = Classes + type.extension;
    struct Text {
        std::string key, name, text;
    };
    const Text texts[] = {
        {id, "", type.title},
        {id + "\\DefaultIcon", "", '"' + program + "\",0"},
        {id + "\\shell\\open\\command", "", '"' + program + "\" \"%1\""},
        {extension + "\\OpenWithProgids", type.id, ""},
    };
    FileCause first = FileCause::None;
    for (const Text& text : texts)
        if (const FileCause cause = WriteRegistry(text.key, text.name, text.text);
            first == FileCause::None)
            first = cause;
    if (first == FileCause::None && type.ownsExtension && IsFree(type.extension))
        first = WriteRegistry(extension, "", type.id);
    return first;
}

FileCause Unregister(const FileType& type) {
    const std::string extension = Classes + type.extension;
    const FileCause causes[] = {
        RemoveRegistryKey(Classes + type.id),
        RemoveRegistryText(extension + "\\OpenWithProgids", type.id),
        ReadRegistryText(extension, "") == type.id ? RemoveRegistryText(extension, "")
                                                   : FileCause::None,
    };
    for (const FileCause cause : causes)
        if (cause != FileCause::None)
            return cause;
    return FileCause::None;
}

/// Icons and menus show it at once.
void TellEverybody() {
    SHChangeNotify(SHCNE_ASSOCCHANGED, SHCNF_IDLIST, nullptr, nullptr);
}

} // namespace

FileCause RegisterFileTypes(std::span<const FileType> types) {
    const std::string program = ProgramPath();
    FileCause first = program.empty() ? FileCause::BadPath : FileCause::None;
    for (const FileType& type : types)
        if (first == FileCause::None)
            first = Register(type, program);
    TellEverybody();
    return first;
}

FileCause UnregisterFileTypes(std::span<const FileType> types) {
    FileCause first = FileCause::None;
    for (const FileType& type : types)
        if (const FileCause cause = Unregister(type); first == FileCause::None)
            first = cause;
    TellEverybody();
    return first;
}

} // namespace qor
