// SPDX-License-Identifier: GPL-3.0-or-later
//
// The two queues, of bytes and of frames: order, reuse of memory, and that reuse never mixes two
// instruments.
#include "telemetry/ByteQueue.h"
#include "telemetry/FrameQueue.h"

#include <gtest/gtest.h>

#include <deque>
#include <random>
#include <string>

namespace qor {
namespace {

// Random pushes, pops and drops against a plain deque of what must come out.
TEST(FrameQueue, IsFirstInFirstOutWhateverSlotsHeldBefore) {
    std::mt19937 random(7);
    CFrameQueue queue;
    std::deque<std::uint32_t> expected;
    CFrameData taken;
    std::uint64_t held = 0;
    for (std::uint32_t i = 1; i < 3000; ++i) {
        if (random() % 2 != 0) {
            CFrameInfo info;
            info.instrumentName = "instrument " + std::to_string(i % 3);
            info.identity = i % 3 + 1;
            info.frameCounter = i;
            std::string bytes(i % 50 + 1, static_cast<char>('a' + i % 26));
            queue.Push(info, AsBytes(bytes), i);
            expected.push_back(i);
            held += i % 50 + 1;
        } else if (random() % 8 == 0) {
            queue.DropFront();
            if (!expected.empty()) {
                held -= expected.front() % 50 + 1;
                expected.pop_front();
            }
        } else {
            ASSERT_EQ(queue.Pop(taken), !expected.empty());
            if (!expected.empty()) {
                std::uint32_t number = expected.front();
                expected.pop_front();
                held -= number % 50 + 1;
                EXPECT_EQ(taken.Info.frameCounter, number);
                EXPECT_EQ(taken.Info.instrumentName, "instrument " + std::to_string(number % 3));
                EXPECT_EQ(taken.Bytes.size(), number % 50 + 1);
                EXPECT_EQ(taken.Bytes[0], 'a' + number % 26);
            }
        }
        ASSERT_EQ(queue.Size(), expected.size());
        ASSERT_EQ(queue.Memory(), held + expected.size() * sizeof(CFrameData));
        if (!expected.empty()) {
            ASSERT_EQ(queue.Front().StreamOffset, expected.front());
        }
    }
    queue.Clear();
    EXPECT_FALSE(queue.Pop(taken));
}

// The same against a plain text.
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
        std::span<std::uint8_t> room = queue.Prepare(bytes.size());
        ASSERT_EQ(room.size(), bytes.size());
        std::copy(bytes.begin(), bytes.end(), room.begin());
        queue.Commit(used);
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
