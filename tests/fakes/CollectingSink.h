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
    void Raise(Event event) override {
        CLock held(Guard);
        Collected.push_back(std::move(event.text));
        Kinds.push_back(event.kind);
    }
    std::size_t Count(EventKind kind) const {
        CLock held(Guard);
        return static_cast<std::size_t>(std::count(Kinds.begin(), Kinds.end(), kind));
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
    std::vector<EventKind> Kinds GUARDED_BY(Guard);
};

} // namespace qor
