// SPDX-License-Identifier: GPL-3.0-or-later
//
// How a door says that a promise was broken: by a crash, which a fuzzer and a test both see.
#pragma once

#include <cstdlib>

namespace qor {

inline void Require(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace qor
