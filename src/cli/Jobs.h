// SPDX-License-Identifier: GPL-3.0-or-later
//
// Pieces of work that know nothing of each other, done by several threads at once.
#pragma once

#include <cstddef>
#include <functional>

namespace qor {

/// Does the jobs 0 to `count` - 1, each once and on any thread, and returns when all are done. With
/// fewer threads than asked for where the system has no more to give.
void DoJobs(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& job);

} // namespace qor
