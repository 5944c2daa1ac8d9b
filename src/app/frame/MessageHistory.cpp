// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frame/MessageHistory.h"

#include <algorithm>
#include <utility>

namespace qor {

namespace {

int Gravity(Sign sign) {
    switch (sign) {
    case Sign::None:
    case Sign::Ok:
    case Sign::Waiting:
    case Sign::Off:
        return 0;
    case Sign::Stale:
        return 1;
    case Sign::Warning:
        return 2;
    case Sign::Error:
        return 3;
    case Sign::Alarm:
        return 4;
    }
    return 0;
}

} // namespace

void CMessageHistory::Post(StripMessage message) {
    if (!message.topic.empty())
        Close(message.topic);
    if (Kept.size() == Most)
        Kept.erase(LeastMissed());
    Kept.push_back({std::move(message), false});
}

std::deque<CMessageHistory::Entry>::iterator CMessageHistory::LeastMissed() {
    const auto seen = std::ranges::find(Kept, true, &Entry::seen);
    return seen != Kept.end() ? seen : std::ranges::min_element(Kept, {}, [](const Entry& entry) {
        return Gravity(entry.message.sign);
    });
}

void CMessageHistory::Close(const std::string& topic) {
    for (Entry& entry : Kept)
        if (entry.message.topic == topic)
            entry.seen = true;
}

CMessageHistory::Entry* CMessageHistory::Worst() {
    Entry* worst = nullptr;
    for (Entry& entry : Kept)
        if (!entry.seen && (!worst || Gravity(entry.message.sign) >= Gravity(worst->message.sign)))
            worst = &entry;
    return worst;
}

const StripMessage* CMessageHistory::Current() const {
    const Entry* worst = const_cast<CMessageHistory*>(this)->Worst();
    return worst ? &worst->message : nullptr;
}

void CMessageHistory::SeeCurrent() {
    if (Entry* worst = Worst())
        worst->seen = true;
}

void CMessageHistory::SeeAll() {
    for (Entry& entry : Kept)
        entry.seen = true;
}

std::size_t CMessageHistory::UnseenCount() const {
    return static_cast<std::size_t>(
        std::count_if(Kept.begin(), Kept.end(), [](const Entry& entry) { return !entry.seen; }));
}

} // namespace qor
