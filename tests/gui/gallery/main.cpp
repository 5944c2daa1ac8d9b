// SPDX-License-Identifier: GPL-3.0-or-later
//
// Shows every widget with made-up pages, one palette at a time, and writes a picture of each:
//   qorview_gallery OUT_FOLDER [light|dark|night] [PERCENT] [WIDTHxHEIGHT] [LANGUAGE] [NAME ...]
#include "gui/gallery/FormScenes.h"
#include "gui/gallery/Scenes.h"

#include "app/Application.h"

#include <QApplication>
#include <QDir>
#include <QTimer>

#include <cstdio>

namespace {

struct Call {
    QString folder;
    qor::Look look = qor::Look::Light;
    int percent = 100;
    QSize size{1366, 768};
    QString language;
    QStringList names;
};

bool ParseCall(const QStringList& arguments, Call& call) {
    if (arguments.size() < 2)
        return false;
    call.folder = arguments[1];
    for (const QString& word : arguments.mid(2)) {
        const qsizetype cross = word.indexOf(QLatin1Char('x'));
        bool number = false;
        const int percent = word.toInt(&number);
        if (word == QLatin1String("light") || word == QLatin1String("dark") ||
            word == QLatin1String("night"))
            call.look = word == QLatin1String("light")  ? qor::Look::Light
                        : word == QLatin1String("dark") ? qor::Look::Dark
                                                        : qor::Look::Night;
        else if (number)
            call.percent = percent;
        else if (cross > 0 && word.left(cross).toInt() > 0)
            call.size = QSize(word.left(cross).toInt(), word.mid(cross + 1).toInt());
        else if (word.size() == 2)
            call.language = word;
        else
            call.names.append(word);
    }
    return true;
}

/// Lets timers, layouts and queued replots happen.
void Settle() {
    for (int i = 0; i < 6; ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 40);
}

/// False: the picture could not be written.
bool Picture(const qor::Scene& scene, const Call& call, qor::CTheme& theme) {
    const QString name = QString::fromLatin1(scene.name);
    if (!call.names.isEmpty() && !call.names.contains(name))
        return true;
    QWidget* widget = scene.make(theme, call.size);
    widget->show();
    Settle();
    if (scene.then)
        widget = scene.then(widget);
    Settle();
    const QString path = call.folder + QLatin1Char('/') + name + QStringLiteral(".png");
    const bool written = widget->grab().save(path);
    if (!written)
        std::fprintf(stderr, "qorview_gallery: cannot write %s\n", qPrintable(path));
    qor::ClearPlayed();
    qor::ClearStage();
    return written;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    Call call;
    if (!ParseCall(application.arguments(), call) || !QDir().mkpath(call.folder)) {
        std::fputs("qorview_gallery OUT_FOLDER [light|dark|night] [PERCENT] [WIDTHxHEIGHT] "
                   "[LANGUAGE] [NAME ...]\n",
                   stderr);
        return 2;
    }
    qor::CTheme theme;
    qor::PrepareApplication(application, theme);
    if (!call.language.isEmpty() && !qor::UseLanguage(application, call.language))
        std::fputs("qorview_gallery: there is no catalogue of that language\n", stderr);
    theme.SetTextPercent(call.percent);
    theme.SetLook(call.look);
    int failed = 0;
    for (const auto& scenes : {qor::Scenes, qor::FormScenes(), qor::PlayedScenes})
        for (const qor::Scene& scene : scenes)
            failed += Picture(scene, call, theme) ? 0 : 1;
    return failed == 0 ? 0 : 1;
}
