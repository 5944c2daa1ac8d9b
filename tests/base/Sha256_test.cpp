// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Sha256.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace qor {
namespace {

std::string HashInPieces(std::string_view text, std::size_t piece, bool plain) {
    CSha256 hash(plain);
    for (; !text.empty(); text.remove_prefix(std::min(piece, text.size())))
        hash.Update(AsBytes(text.substr(0, piece)));
    return hash.Digits();
}

/// The messages and hashes are those that NIST publishes with FIPS 180-4.
TEST(Sha256, PublishedMessagesHaveTheirHashesHoweverTheyCome) {
    const struct {
        std::string message;
        const char* hash;
    } cases[] = {
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {std::string(1'000'000, 'a'),
         "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    };
    for (const auto& one : cases)
        for (const std::size_t piece : {1U, 55U, 63U, 64U, 65U, 1000U, 1'000'000U})
            for (const bool plain : {false, true})
                EXPECT_EQ(HashInPieces(one.message, piece, plain), one.hash)
                    << one.message.size() << " in " << piece << (plain ? " plain" : "");
}

} // namespace
} // namespace qor
