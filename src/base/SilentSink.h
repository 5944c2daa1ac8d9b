// SPDX-License-Identifier: GPL-3.0-or-later
//
// A message sink for work whose result says it all.
#pragma once

#include "base/MessageSink.h"

namespace qor {

/// Nobody hears.
class CSilentSink final : public CMessageSink {
  public:
    void Raise(Event) override {}
};

} // namespace qor
