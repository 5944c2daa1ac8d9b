// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frame records and their ring: order, reuse of memory, and that reuse never mixes two instruments.
#include "telemetry/FrameData.h"

#include <gtest/gtest.h>

#include <deque>
#include <random>

namespace qor {
namespace {

// Random pushes, pops and drops against a plain deque of what must come out.
TEST(FrameQueue, IsFirstInFirstOutWhateverSlotsHeldBefore) {
    std::mt19937 random(7);
    CFrameQueue queue;
    std::deque<std::uint32_t> expected;
    CFrameData taken;
    for (std::uint32_t i = 1; i < 3000; ++i) {
        if (random() % 2 != 0) {
            CFrameInfo info;
            info.instrumentName = "instrument " + std::to_string(i % 3);
            info.identity = i % 3 + 1;
            info.frameCounter = i;
            std::string bytes(i % 50 + 1, static_cast<char>('a' + i % 26));
            queue.PushSlot().Assign(info, AsBytes(bytes), i);
            expected.push_back(i);
        } else if (random() % 8 == 0) {
            queue.DropFront();
            if (!expected.empty())
                expected.pop_front();
        } else {
            ASSERT_EQ(queue.Pop(taken), !expected.empty());
            if (!expected.empty()) {
                std::uint32_t number = expected.front();
                expected.pop_front();
                EXPECT_EQ(taken.Info.frameCounter, number);
                EXPECT_EQ(taken.Info.instrumentName, "instrument " + std::to_string(number % 3));
                EXPECT_EQ(taken.Bytes.size(), number % 50 + 1);
                EXPECT_EQ(taken.Bytes[0], 'a' + number % 26);
            }
        }
        ASSERT_EQ(queue.Size(), expected.size());
        if (!expected.empty()) {
            ASSERT_EQ(queue.Front().StreamOffset, expected.front());
        }
    }
    queue.Clear();
    EXPECT_FALSE(queue.Pop(taken));
}

} // namespace
} // namespace qor
