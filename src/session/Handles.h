// SPDX-License-Identifier: GPL-3.0-or-later
//
// Handles of what a session holds. A handle is given once and never again, so one that is kept
// after its object has gone finds nothing instead of something else.
#pragma once

#include <cstdint>

namespace qor {

enum class ResourceId : std::uint32_t { None = 0 };
/// The identity of the attachment: an instrument that is attached anew has another.
enum class InstrumentId : std::uint32_t { None = 0 };
enum class PackageId : std::uint32_t { None = 0 };

} // namespace qor
