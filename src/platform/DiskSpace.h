// SPDX-License-Identifier: GPL-3.0-or-later
//
// How much a disk still takes. Any thread, no lock; a network drive may keep the caller waiting.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qor {

/// Bytes that the operator may still write where a folder stands; empty when the system does not
/// say.
std::optional<std::uint64_t> FreeDiskSpace(const std::string& folder);

} // namespace qor
