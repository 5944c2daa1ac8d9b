// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/DefinitionSource.h"

#include "platform/WholeFile.h"
#include "session/FileKind.h"
#include "session/Package.h"

#include <algorithm>
#include <utility>

namespace qor {

namespace {

constexpr std::size_t LargestDefinition = 64 << 20;

} // namespace

std::optional<std::string> DefinitionBytes(const CInstrument& definition) {
    const std::string& path = definition.FilePath();
    std::string text;
    if (ReadWholeFile(path, LargestDefinition, text) == FileCause::None)
        return text;
    // A member's path goes on behind that of its package.
    for (std::size_t at = path.find_last_of("/\\"); at != path.npos && at > 0;
         at = path.find_last_of("/\\", at - 1)) {
        const std::string package = path.substr(0, at);
        if (KindByName(package) != FileKind::Package || !FileExists(package))
            continue;
        LoadedPackage loaded = ReadPackageTexts(package);
        const auto member =
            std::ranges::find(loaded.members, path.substr(at + 1), &PackageMember::name);
        if (member != loaded.members.end())
            return std::move(member->text);
    }
    return std::nullopt;
}

} // namespace qor
