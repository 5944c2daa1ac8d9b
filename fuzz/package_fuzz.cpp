// SPDX-License-Identifier: GPL-3.0-or-later
//
// The door of package archives: any bytes as an archive. What comes out of it is bounded, and names
// are text.
#include "Require.h"

#include "base/Text.h"
#include "session/FileKind.h"
#include "session/MemberName.h"
#include "session/Package.h"
#include "session/ZipArchive.h"

using namespace qor;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static_cast<void>(ParseProperties(AsText({data, size})));
    static_cast<void>(KindByContent({data, size}));
    CZipArchive archive;
    const ArchiveLimits limits{1 << 20, 1 << 16, 64};
    if (archive.OpenBytes({data, data + size}, limits) != ArchiveStatus::Good)
        return 0;
    Require(archive.Members().size() <= limits.members);
    for (std::size_t i = 0; i < archive.Members().size(); ++i) {
        const ArchiveMember& member = archive.Members()[i];
        const std::string name = MemberNameOf(member.name);
        Require(IsUtf8(name) && name.find('\\') == std::string::npos);
        Require(IsHostileName(name) || (name.find('\0') == std::string::npos && name.size() < 256));
        if (member.size > limits.fileBytes)
            continue;
        std::uint64_t taken = 0;
        const bool extracted = archive.Extract(i, [&taken](ByteSpan piece) {
            taken += piece.size();
            return true;
        });
        Require(extracted ? taken == member.size : taken <= member.size);
    }
    return 0;
}
