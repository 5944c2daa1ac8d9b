// SPDX-License-Identifier: GPL-3.0-or-later
//
// The state of a resource in a word and a sign, alike in the tree and in the status window. Pure.
#pragma once

#include "session/SessionSnapshot.h"
#include "views/PageHead.h"

namespace qor {

struct PortWord {
    const char* text;
    Sign sign;
};

PortWord WordOf(const ResourceStatus& resource);
/// As a port, whatever it is.
PortWord WordOfPort(const ResourceStatus& resource);

} // namespace qor
