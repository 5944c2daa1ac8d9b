// SPDX-License-Identifier: GPL-3.0-or-later
//
// Zip archives as a test wants them, sound or hostile: every field of a member can be made to lie.
// Nothing is really packed: a deflate stream holds stored blocks.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace qor {

inline std::uint32_t Crc32(const std::string& text) {
    static const auto table = [] {
        std::array<std::uint32_t, 256> sums{};
        for (std::uint32_t i = 0; i < sums.size(); ++i) {
            sums[i] = i;
            for (int bit = 0; bit < 8; ++bit)
                sums[i] = sums[i] >> 1 ^ (sums[i] & 1 ? 0xedb88320 : 0);
        }
        return sums;
    }();
    std::uint32_t crc = 0xffffffff;
    for (const char c : text)
        crc = crc >> 8 ^ table[(crc ^ static_cast<std::uint8_t>(c)) & 255];
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
    int method = 0;               ///< 0 stored, 8 deflated
    int flags = 0;                ///< 1 encrypted, 0x800 name in UTF-8
    std::string packed = {};      ///< instead of what the content gives
    std::int64_t size = -1;       ///< instead of the content's
    std::int64_t packedSize = -1; ///< instead of the packed bytes'
    std::int64_t offset = -1;     ///< of its data, instead of having some of its own
    std::uint32_t crcFault = 0;
    std::string extra = {}; ///< its extra field, in the directory
    unsigned nameFault = 0; ///< added to the name's length in the directory
};

/// What the end of the archive claims.
struct ZipEnd {
    std::int64_t count = -1;
    std::int64_t size = -1; ///< of the directory
    std::string comment = {};
    bool zip64 = false;        ///< in 64 bits
    std::int64_t zip64At = -1; ///< where the 64-bit record is said to stand
};

class CZipMaker {
  public:
    CZipMaker& Add(ZipMember member) {
        if (member.packed.empty())
            member.packed = member.method == 8 ? DeflateStored(member.content) : member.content;
        const std::string fields = Fields(member);
        const std::uint64_t offset = Or(member.offset, Body.size());
        Directory += "PK\1\2" + Number(20, 2) + fields +
                     Number(member.name.size() + member.nameFault, 2) +
                     Number(member.extra.size(), 2) + Number(0, 2 + 2 + 2 + 4) + Number(offset, 4) +
                     member.name + member.extra;
        if (member.offset < 0)
            Body += "PK\3\4" + fields + Number(member.name.size(), 2) + Number(0, 2) + member.name +
                    member.packed;
        ++Count;
        return *this;
    }
    CZipMaker& Add(const std::string& name, const std::string& content) {
        return Add(ZipMember{name, content});
    }

    std::string Bytes(const ZipEnd& end = {}) const {
        const std::uint64_t count = Or(end.count, Count);
        const std::uint64_t size = Or(end.size, Directory.size());
        std::string bytes = Body + Directory;
        if (end.zip64) {
            const std::uint64_t at = Or(end.zip64At, bytes.size());
            bytes += "PK\6\6" + Number(44, 8) + Number(45, 2) + Number(45, 2) + Number(0, 8) +
                     Number(count, 8) + Number(count, 8) + Number(size, 8) +
                     Number(Body.size(), 8) + "PK\6\7" + Number(0, 4) + Number(at, 8) +
                     Number(1, 4);
        }
        const std::uint64_t most = end.zip64 ? ~std::uint64_t{0} : 0;
        return bytes + "PK\5\6" + Number(0, 4) + Number(count | most, 2) + Number(count | most, 2) +
               Number(size | most, 4) + Number(Body.size() | most, 4) +
               Number(end.comment.size(), 2) + end.comment;
    }

  private:
    static std::uint64_t Or(std::int64_t claimed, std::uint64_t real) {
        return claimed < 0 ? real : static_cast<std::uint64_t>(claimed);
    }
    static std::string Number(std::uint64_t value, int width) {
        std::string bytes;
        for (; width > 0; --width, value >>= 8)
            bytes += static_cast<char>(value & 255);
        return bytes;
    }
    /// What the member's own header and the directory share.
    static std::string Fields(const ZipMember& member) {
        return Number(20, 2) + Number(static_cast<unsigned>(member.flags), 2) +
               Number(static_cast<unsigned>(member.method), 2) + Number(0x21, 4) +
               Number(Crc32(member.content) ^ member.crcFault, 4) +
               Number(Or(member.packedSize, member.packed.size()), 4) +
               Number(Or(member.size, member.content.size()), 4);
    }

    std::string Body, Directory;
    std::uint64_t Count = 0;
};

} // namespace qor
