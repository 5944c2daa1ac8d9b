// SPDX-License-Identifier: GPL-3.0-or-later
//
// The forms over a session as scenes of the gallery.
#pragma once

#include "gui/gallery/Scenes.h"

namespace qor {

std::vector<Scene> FormScenes();

} // namespace qor
