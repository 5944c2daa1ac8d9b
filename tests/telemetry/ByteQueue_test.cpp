// SPDX-License-Identifier: GPL-3.0-or-later
//
// The byte queue against a plain text.
#include "telemetry/ByteQueue.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace qor {
namespace {

TEST(ByteQueue, GivesBackWhatCameInOrder) {
    std::mt19937 random(5);
    CByteQueue queue;
    std::string expected;
    std::uint64_t offset = 0;
    char next = 0;
    for (int round = 0; round < 5000; ++round) {
        std::string bytes(random() % (round % 100 == 0 ? 50000 : 500), ' ');
        for (char& byte : bytes)
            byte = next++;
        std::size_t used = random() % (bytes.size() + 1);
        if (random() % 2 == 0) {
            used = bytes.size();
            queue.Append(AsBytes(bytes));
        } else {
            std::span<std::uint8_t> room = queue.Prepare(bytes.size());
            ASSERT_EQ(room.size(), bytes.size());
            std::copy(bytes.begin(), bytes.end(), room.begin());
            queue.Commit(used);
        }
        expected += bytes.substr(0, used);
        std::size_t taken = random() % (expected.size() + 1);
        queue.Consume(taken);
        expected.erase(0, taken);
        offset += taken;
        ASSERT_EQ(AsText(queue.Bytes()), expected);
        ASSERT_EQ(queue.Offset(), offset);
        ASSERT_EQ(queue.EndOffset(), offset + expected.size());
    }
    queue.Clear();
    EXPECT_TRUE(queue.Empty());
    EXPECT_EQ(queue.Offset(), 0U);
}

} // namespace
} // namespace qor
