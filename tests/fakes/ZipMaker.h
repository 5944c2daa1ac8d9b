// SPDX-License-Identifier: GPL-3.0-or-later
//
// Zip archives as a test wants them, sound or hostile: every field of a member can be made to lie.
// Nothing is really packed: a deflate stream holds stored blocks.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qor {

inline std::uint32_t Crc32(const std::string& text) {
    std::uint32_t crc = 0xffffffff;
    for (const char c : text) {
        crc ^= static_cast<std::uint8_t>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ (crc & 1 ? 0xedb88320 : 0);
    }
    return ~crc;
}

/// A deflate stream: the text in one stored block.
inline std::string DeflateStored(const std::string& text) {
    const auto size = static_cast<std::uint16_t>(text.size());
    std::string packed = "\1";
    for (const int part : {size & 255, size >> 8, ~size & 255, ~size >> 8 & 255})
        packed += static_cast<char>(part);
    return packed + text;
}

struct ZipMember {
    std::string name = {};
    std::string content = {};
    int method = 0;          ///< 0 stored, 8 deflated
    int flags = 0;           ///< 1 encrypted
    std::string packed = {}; ///< instead of what the content gives
    std::int64_t size = -1;  ///< instead of the content's
    std::uint32_t crcFault = 0;
};

class CZipMaker {
  public:
    CZipMaker& Add(ZipMember member) {
        if (member.packed.empty())
            member.packed = member.method == 8 ? DeflateStored(member.content) : member.content;
        const std::string common = Common(member);
        Directory += "PK\1\2" + Number(20, 2) + common;
        Directory += Number(0, 2 + 2 + 2 + 4) + Number(Body.size(), 4) + member.name;
        Body += "PK\3\4" + common + member.name + member.packed;
        ++Count;
        return *this;
    }
    CZipMaker& Add(const std::string& name, const std::string& content) {
        return Add(ZipMember{name, content});
    }

    std::string Bytes(std::int64_t claimedCount = -1, const std::string& comment = {}) const {
        const auto count = static_cast<std::uint64_t>(claimedCount < 0 ? Count : claimedCount);
        return Body + Directory + "PK\5\6" + Number(0, 4) + Number(count, 2) + Number(count, 2) +
               Number(Directory.size(), 4) + Number(Body.size(), 4) + Number(comment.size(), 2) +
               comment;
    }

  private:
    static std::string Number(std::uint64_t value, int width) {
        std::string bytes;
        for (; width > 0; --width, value >>= 8)
            bytes += static_cast<char>(value & 255);
        return bytes;
    }
    static std::string Common(const ZipMember& member) {
        const auto size =
            member.size < 0 ? member.content.size() : static_cast<std::size_t>(member.size);
        return Number(20, 2) + Number(static_cast<unsigned>(member.flags), 2) +
               Number(static_cast<unsigned>(member.method), 2) + Number(0x21, 4) +
               Number(Crc32(member.content) ^ member.crcFault, 4) +
               Number(member.packed.size(), 4) + Number(size, 4) + Number(member.name.size(), 2) +
               Number(0, 2);
    }

    std::string Body, Directory;
    std::int64_t Count = 0;
};

} // namespace qor
