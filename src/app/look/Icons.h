// SPDX-License-Identifier: GPL-3.0-or-later
//
// Icons and signs: drawn by us as SVG on a grid of 24, coloured by token when they are painted, so
// that a change of palette needs no new icons. User-interface thread.
#pragma once

#include "app/look/Theme.h"
#include "views/PageHead.h"

#include <QIcon>
#include <QPixmap>
#include <QString>

#include <array>

class QPainter;
class QRect;

namespace qor {

inline constexpr auto IconNames = std::to_array<const char*>(
    {"app",     "connect",  "disconnect", "start",    "stop", "log",        "log-stop", "tare",
     "station", "cast",     "comment",    "practice", "find", "new",        "open",     "save",
     "replay",  "play",     "pause",      "rewind",   "port", "instrument", "package",  "role",
     "wet",     "spectrum", "profile",    "series",   "gps",  "wind",       "status",   "monitor",
     "fit",     "cursor",   "freeze",     "export",   "menu", "float",      "close",    "night",
     "watch",   "sound",    "mute",       "settings", "help", "clock",      "ok",       "waiting",
     "stale",   "warning",  "alarm",      "error",    "off"});

/// To be called once before the first icon.
void LoadIcons();

/// An icon in the text colour of whatever palette is in force when it is painted.
QIcon ThemeIcon(const CTheme& theme, const QString& name);
/// The icon of a sign; none for Sign::None.
QIcon SignIcon(const CTheme& theme, Sign sign);

QPixmap IconPixmap(const QString& name, QRgb line, QRgb fill, int size, double pixelRatio);

/// Paints into the middle of a rectangle, as large as it allows.
void PaintSign(QPainter& painter, const QRect& place, Sign sign, const Tokens& colours);
void PaintIcon(QPainter& painter, const QRect& place, const QString& name, QRgb line);

/// The sign's word in the operator's language; empty for None.
QString SignName(Sign sign);

} // namespace qor
