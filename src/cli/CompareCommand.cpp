// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli compare: the optical reality check over a raw log.
#include "cli/Commands.h"

#include <CLI/CLI.hpp>
