// SPDX-License-Identifier: GPL-3.0-or-later
//
// Which events of a run an operator must see at once, and what can be done about each: one table
// for every face. The text itself comes with the event. No state; any thread.
#pragma once

#include "base/MessageSink.h"

#include <string>
#include <string_view>

namespace qor {

struct EventAdvice {
    EventKind kind;
    bool namesSubject;       ///< the text itself says which file or port
    bool fault;              ///< else nothing is lost by it
    std::string_view advice; ///< empty: there is nothing to do
};

/// Null for an event that needs nobody's eye.
const EventAdvice* AdviceOf(EventKind kind);

/// The event as one line: its subject, its text, and an advice, that of the table or a face's own.
std::string EventLine(const Event& event, const EventAdvice& row, std::string_view advice);

} // namespace qor
