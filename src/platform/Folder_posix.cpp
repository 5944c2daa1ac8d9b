// SPDX-License-Identifier: GPL-3.0-or-later
//
// By the system's own calls: std::filesystem's iterator ends the program when memory runs out.
#include "platform/Folder.h"

#include <algorithm>
#include <dirent.h>
#include <memory>

namespace qor {

std::vector<std::string> NamesIn(const std::string& folder) {
    struct Closer {
        void operator()(DIR* stream) const { ::closedir(stream); }
    };
    std::vector<std::string> names;
    const std::unique_ptr<DIR, Closer> stream(::opendir(folder.empty() ? "." : folder.c_str()));
    while (const dirent* entry = stream ? ::readdir(stream.get()) : nullptr)
        if (const std::string name = entry->d_name; name != "." && name != "..")
            names.push_back(name);
    std::ranges::sort(names);
    return names;
}

} // namespace qor
