// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the gallery shows: each scene makes one window.
#pragma once

#include "app/look/Theme.h"

#include <QSize>
#include <QWidget>

#include <vector>

namespace qor {

struct Scene {
    const char* name;
    QWidget* (*make)(CTheme& theme, QSize screen);
    /// Something done to it once it is shown; the widget that is pictured comes back.
    QWidget* (*then)(QWidget* widget) = nullptr;
};

extern const std::vector<Scene> Scenes;
/// Windows over their views, in a session that is played.
extern const std::vector<Scene> PlayedScenes;

/// Deletes every window that is open.
void ClearStage();
void ClearPlayed();

} // namespace qor
