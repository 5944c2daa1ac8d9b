// SPDX-License-Identifier: GPL-3.0-or-later
//
// A message sink that keeps what was reported, in order, for tests to look at. Any thread may
// report; the looking waits for the lock too.
#pragma once

#include "base/Lock.h"
#include "base/MessageSink.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace qor {

class CCollectingSink : public CMessageSink {
  public:
    void Report(std::string message) override {
        CLock held(Guard);
        Collected.push_back(std::move(message));
    }
    std::vector<std::string> Messages() const {
        CLock held(Guard);
        return Collected;
    }
    std::size_t Count(const std::string& message) const {
        CLock held(Guard);
        return static_cast<std::size_t>(std::count(Collected.begin(), Collected.end(), message));
    }
    /// The messages so far, which are then forgotten.
    std::vector<std::string> Take() {
        CLock held(Guard);
        return std::exchange(Collected, {});
    }

  private:
    mutable CMutex Guard;
    std::vector<std::string> Collected GUARDED_BY(Guard);
};

} // namespace qor
