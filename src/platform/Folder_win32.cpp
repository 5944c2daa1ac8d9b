// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Folder.h"

#include "platform/Win32Support.h"

#include <algorithm>
#include <memory>
#include <windows.h>

namespace qor {

std::vector<std::string> NamesIn(const std::string& folder) {
    struct Closer {
        void operator()(void* search) const { FindClose(search); }
    };
    std::vector<std::string> names;
    std::wstring pattern = WidePath(folder.empty() ? "." : folder);
    pattern += pattern.ends_with(L'\\') || pattern.ends_with(L'/') ? L"*" : L"\\*";
    WIN32_FIND_DATAW found{};
    const HANDLE first = FindFirstFileW(pattern.c_str(), &found);
    if (first == INVALID_HANDLE_VALUE)
        return names;
    const std::unique_ptr<void, Closer> search(first);
    do
        if (const std::string name = NarrowText(found.cFileName); name != "." && name != "..")
            names.push_back(name);
    while (FindNextFileW(first, &found));
    std::ranges::sort(names);
    return names;
}

} // namespace qor
