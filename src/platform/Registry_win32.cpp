// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Registry_win32.h"

#include "platform/Win32Support.h"

#include <windows.h>

namespace qor {

namespace {

constexpr int DeepestKey = 8;
constexpr DWORD LongestName = 16384; // characters: the system's own limit for a value's name
constexpr DWORD LargestText = 1U << 20;

class CKey {
  public:
    CKey(HKEY parent, const wchar_t* name) {
        Error = RegOpenKeyExW(parent, name, 0, KEY_READ, &Key);
    }
    ~CKey() {
        if (Error == ERROR_SUCCESS)
            RegCloseKey(Key);
    }
    CKey(const CKey&) = delete;
    CKey& operator=(const CKey&) = delete;

    HKEY Key = nullptr;
    LSTATUS Error;
};

FileCause CauseOf(LSTATUS error) {
    return FileCauseOf(static_cast<unsigned long>(error));
}

bool IsMissing(LSTATUS error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

std::string TextOf(const std::wstring& buffer, DWORD bytes) {
    std::wstring_view text(buffer.data(), bytes / sizeof(wchar_t));
    while (text.ends_with(L'\0'))
        text.remove_suffix(1);
    return NarrowText(text);
}

void ReadTexts(HKEY key, const std::string& place, std::vector<RegistryText>& texts) {
    DWORD longest = 0;
    if (RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, &longest, nullptr, nullptr) != ERROR_SUCCESS ||
        longest > LargestText)
        longest = LargestText;
    std::wstring name(LongestName, L'\0'), text(longest / sizeof(wchar_t) + 2, L'\0');
    for (DWORD at = 0;; ++at) {
        DWORD type = 0, length = LongestName;
        auto bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        const LSTATUS error = RegEnumValueW(key, at, name.data(), &length, nullptr, &type,
                                            reinterpret_cast<BYTE*>(text.data()), &bytes);
        if (error == ERROR_MORE_DATA)
            continue;
        if (error != ERROR_SUCCESS)
            return;
        if (type == REG_SZ)
            texts.push_back({place, NarrowText(std::wstring_view(name).substr(0, length)),
                             TextOf(text, bytes)});
    }
}

void ReadKeys(HKEY key, const std::string& place, int depth, std::vector<RegistryText>& texts) {
    ReadTexts(key, place, texts);
    std::wstring name(256, L'\0'); // the system's own limit for a key's name
    for (DWORD at = 0; depth < DeepestKey; ++at) {
        auto length = static_cast<DWORD>(name.size());
        if (RegEnumKeyExW(key, at, name.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            return;
        const CKey below(key, name.c_str());
        if (below.Error == ERROR_SUCCESS)
            ReadKeys(below.Key,
                     (place.empty() ? place : place + '\\') +
                         NarrowText(std::wstring_view(name).substr(0, length)),
                     depth + 1, texts);
    }
}

} // namespace

FileCause ReadRegistry(const std::string& key, std::vector<RegistryText>& texts) {
    texts.clear();
    const CKey opened(HKEY_CURRENT_USER, WideText(key).c_str());
    if (IsMissing(opened.Error))
        return FileCause::None;
    if (opened.Error != ERROR_SUCCESS)
        return CauseOf(opened.Error);
    ReadKeys(opened.Key, {}, 0, texts);
    return FileCause::None;
}

std::optional<std::string> ReadRegistryText(const std::string& key, const std::string& name) {
    const std::wstring place = WideText(key), value = WideText(name);
    DWORD bytes = 0;
    if (RegGetValueW(HKEY_CURRENT_USER, place.c_str(), value.c_str(), RRF_RT_REG_SZ, nullptr,
                     nullptr, &bytes) != ERROR_SUCCESS)
        return std::nullopt;
    std::wstring text(bytes / sizeof(wchar_t) + 1, L'\0');
    bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    if (RegGetValueW(HKEY_CURRENT_USER, place.c_str(), value.c_str(), RRF_RT_REG_SZ, nullptr,
                     text.data(), &bytes) != ERROR_SUCCESS)
        return std::nullopt;
    return TextOf(text, bytes);
}

FileCause WriteRegistry(const std::string& key, const std::string& name, const std::string& text) {
    const std::wstring wide = WideText(text);
    return CauseOf(RegSetKeyValueW(HKEY_CURRENT_USER, WideText(key).c_str(), WideText(name).c_str(),
                                   REG_SZ, wide.c_str(),
                                   static_cast<DWORD>((wide.size() + 1) * sizeof(wchar_t))));
}

FileCause RemoveRegistryKey(const std::string& key) {
    const LSTATUS error = RegDeleteTreeW(HKEY_CURRENT_USER, WideText(key).c_str());
    return IsMissing(error) ? FileCause::None : CauseOf(error);
}

FileCause RemoveRegistryText(const std::string& key, const std::string& name) {
    const LSTATUS error =
        RegDeleteKeyValueW(HKEY_CURRENT_USER, WideText(key).c_str(), WideText(name).c_str());
    return IsMissing(error) ? FileCause::None : CauseOf(error);
}

} // namespace qor
