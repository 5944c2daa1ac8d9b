// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Jobs.h"

#include "platform/Worker.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <vector>

namespace qor {

void DoJobs(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& job) {
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        for (std::size_t i = next++; i < count; i = next++)
            job(i);
    };
    std::vector<std::unique_ptr<CWorker>> workers;
    for (std::size_t i = 1; i < std::min(threads, count); ++i) {
        workers.push_back(std::make_unique<CWorker>());
        if (!workers.back()->Start(ThreadPriority::Normal, work))
            break;
    }
    work();
    for (const auto& worker : workers)
        worker->Join();
}

} // namespace qor
