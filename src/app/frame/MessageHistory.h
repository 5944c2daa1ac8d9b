// SPDX-License-Identifier: GPL-3.0-or-later
//
// What was said to the operator, and what of it has not been seen yet. The strip shows the worst
// of the unseen, the newest of several. Bounded; no widget. User-interface thread.
#pragma once

#include "views/PageHead.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace qor {

struct MessageButton {
    std::string text;
    std::function<void()> press;
};

struct StripMessage {
    std::string topic; ///< a later message of the same topic takes its place
    Sign sign = Sign::None;
    std::string time; ///< of day
    std::string text;
    std::vector<MessageButton> buttons;
};

class CMessageHistory {
  public:
    static constexpr std::size_t Most = 500;

    struct Entry {
        StripMessage message;
        bool seen = false;
    };

    void Post(StripMessage message);
    /// What a topic was about is over: the message stays in the history and is not shown again.
    void Close(const std::string& topic);
    /// The operator has seen what is shown.
    void SeeCurrent();
    void SeeAll();

    /// What the strip shows; null when everything was seen.
    const StripMessage* Current() const;
    std::size_t UnseenCount() const;
    /// Oldest first.
    const std::deque<Entry>& Entries() const { return Kept; }

  private:
    Entry* Worst();
    /// What makes room when it is full: the oldest that was seen, else of the least grave.
    std::deque<Entry>::iterator LeastMissed();

    std::deque<Entry> Kept;
};

} // namespace qor
