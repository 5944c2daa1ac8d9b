// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/look/Icons.h"

#include <QCoreApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <algorithm>
#include <cmath>

// A resource's initialiser is looked for in the global namespace.
static void InitResources() {
    Q_INIT_RESOURCE(app);
}

namespace qor {

namespace {

struct SignLook {
    const char* icon;
    QRgb Tokens::*line;
    QRgb Tokens::*fill;
};

// Two filled signs carry their letter in the colour that is read on the fill.
constexpr std::array<SignLook, SignCount> SignLooks{{
    {nullptr, &Tokens::text, &Tokens::window},
    {"ok", &Tokens::text, &Tokens::window},
    {"waiting", &Tokens::text2, &Tokens::window},
    {"stale", &Tokens::stale, &Tokens::window},
    {"warning", &Tokens::amberText, &Tokens::amber},
    {"alarm", &Tokens::redText, &Tokens::red},
    {"error", &Tokens::redText, &Tokens::red},
    {"off", &Tokens::text2, &Tokens::window},
}};

const SignLook& LookOf(Sign sign) {
    return SignLooks[static_cast<std::size_t>(sign)];
}

/// The largest square in the middle of a rectangle.
QRect SquareIn(const QRect& place) {
    const int side = std::min(place.width(), place.height());
    return {place.x() + (place.width() - side) / 2, place.y() + (place.height() - side) / 2, side,
            side};
}

QByteArray Svg(const QString& name, QRgb line, QRgb fill) {
    QFile file(QStringLiteral(":/icons/%1.svg").arg(name));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll()
        .replace("currentColor", QColor(line).name().toLatin1())
        .replace("currentFill", QColor(fill).name().toLatin1());
}

/// Draws with the theme as it is at that moment.
class CIconEngine : public QIconEngine {
  public:
    CIconEngine(const CTheme& theme, QString name) : Theme(theme), Name(std::move(name)) {}
    CIconEngine(const CTheme& theme, Sign sign)
        : Theme(theme), Name(QString::fromLatin1(LookOf(sign).icon)), Shown(sign) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        painter->drawPixmap(rect,
                            Picture(rect.size(), painter->device()->devicePixelRatioF(), mode));
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        return Picture(size, 1.0, mode);
    }
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State, qreal scale) override {
        return Picture(size / scale, scale, mode);
    }
    QIconEngine* clone() const override { return new CIconEngine(*this); }

  private:
    QPixmap Picture(const QSize& size, double ratio, QIcon::Mode mode) const {
        const Tokens& colours = Theme.Colours();
        const int side = std::min(size.width(), size.height());
        if (Shown != Sign::None)
            return IconPixmap(Name, colours.*LookOf(Shown).line, colours.*LookOf(Shown).fill, side,
                              ratio);
        const QRgb line = mode == QIcon::Disabled   ? colours.border
                          : mode == QIcon::Selected ? colours.base
                                                    : colours.text;
        return IconPixmap(Name, line, colours.window, side, ratio);
    }

    const CTheme& Theme;
    QString Name;
    Sign Shown = Sign::None;
};

} // namespace

void LoadIcons() {
    InitResources();
}

QPixmap IconPixmap(const QString& name, QRgb line, QRgb fill, int size, double pixelRatio) {
    const int pixels = std::max(1, static_cast<int>(std::lround(size * pixelRatio)));
    const QString key = QStringLiteral("qor-%1-%2-%3-%4").arg(name).arg(line).arg(fill).arg(pixels);
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = QPixmap(pixels, pixels);
        pixmap.fill(Qt::transparent);
        QSvgRenderer renderer(Svg(name, line, fill));
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter);
        painter.end();
        QPixmapCache::insert(key, pixmap);
    }
    pixmap.setDevicePixelRatio(pixelRatio);
    return pixmap;
}

QIcon ThemeIcon(const CTheme& theme, const QString& name) {
    return QIcon(new CIconEngine(theme, name));
}

QIcon SignIcon(const CTheme& theme, Sign sign) {
    return sign == Sign::None ? QIcon() : QIcon(new CIconEngine(theme, sign));
}

void PaintIcon(QPainter& painter, const QRect& place, const QString& name, QRgb line) {
    const QRect square = SquareIn(place);
    const int side = square.width();
    painter.drawPixmap(square,
                       IconPixmap(name, line, line, side, painter.device()->devicePixelRatioF()));
}

void PaintSign(QPainter& painter, const QRect& place, Sign sign, const Tokens& colours) {
    const SignLook& look = LookOf(sign);
    if (!look.icon)
        return;
    const QRect square = SquareIn(place);
    const int side = square.width();
    painter.drawPixmap(square,
                       IconPixmap(QString::fromLatin1(look.icon), colours.*look.line,
                                  colours.*look.fill, side, painter.device()->devicePixelRatioF()));
}

QString SignName(Sign sign) {
    switch (sign) {
    case Sign::None:
        return {};
    case Sign::Ok:
        return QCoreApplication::translate("Sign", "ok");
    case Sign::Waiting:
        return QCoreApplication::translate("Sign", "waiting");
    case Sign::Stale:
        return QCoreApplication::translate("Sign", "stale");
    case Sign::Warning:
        return QCoreApplication::translate("Sign", "warning");
    case Sign::Alarm:
        return QCoreApplication::translate("Sign", "alarm");
    case Sign::Error:
        return QCoreApplication::translate("Sign", "error");
    case Sign::Off:
        return QCoreApplication::translate("Sign", "off");
    }
    return {};
}

} // namespace qor
