// SPDX-License-Identifier: GPL-3.0-or-later
//
// What views of one instrument have in common: how they find it, and what their page says of it.
// Under the document's lock.
#pragma once

#include "session/QorViewDoc.h"
#include "views/PageHead.h"

#include <functional>
#include <string>

namespace qor {

/// The instrument of a name; without a name the first that serves. Null when there is none.
using Serves = std::function<bool(const CQorViewIns&)>;
const CQorViewIns* FindShown(const CQorViewDoc& doc, const std::string& name,
                             const Serves& serves = {}) REQUIRES(doc.DocLock);

/// The head of its page: gone, not there, waiting for its first frame, stale or live. `wasThere`:
/// it has been shown before.
PageHead HeadOf(const CQorViewIns* instrument, const std::string& name, bool wasThere,
                std::int64_t now);

/// A head for a page that has nothing to show, and what would help.
PageHead EmptyHead(std::string sentence, std::string remedy = {});

} // namespace qor
