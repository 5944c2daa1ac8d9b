// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <utility>

namespace qor {

/// Calls at the end of a block, also when there is no memory to go on with: somebody waits.
template <typename Function> class CAtEnd {
  public:
    explicit CAtEnd(Function call) : Call(std::move(call)) {}
    ~CAtEnd() { Call(); }
    CAtEnd(const CAtEnd&) = delete;
    CAtEnd& operator=(const CAtEnd&) = delete;

  private:
    Function Call;
};

} // namespace qor
