// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Application.h"

#include "app/look/Icons.h"
#include "app/look/Style.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <clocale>

namespace qor {

bool UseLanguage(QApplication& application, const QString& language) {
    auto* ours = new QTranslator(&application);
    if (!ours->load(QStringLiteral("qorview_%1").arg(language), QStringLiteral(":/i18n"))) {
        delete ours;
        return false;
    }
    // The texts of Qt's own boxes, where the system or the program has them.
    auto* system = new QTranslator(&application);
    const QString texts = QStringLiteral("qtbase_%1").arg(language);
    if (system->load(texts, QLibraryInfo::path(QLibraryInfo::TranslationsPath)) ||
        system->load(texts, QStringLiteral(":/i18n")))
        application.installTranslator(system);
    application.installTranslator(ours);
    return true;
}

QString InstalledFile(const QString& name) {
    const QString program = QCoreApplication::applicationDirPath();
    for (const char* folder :
         {"/", "/../share/qorview/", "/../share/doc/qorview/", "/../../../../", "/../../../"}) {
        const QString path = QDir::cleanPath(program + QLatin1String(folder) + name);
        if (QFileInfo::exists(path))
            return path;
    }
    return {};
}

void PrepareApplication(QApplication& application, CTheme& theme) {
    // The application object took the environment's; numbers in files have a point everywhere.
    std::setlocale(LC_NUMERIC, "C");
    QLocale::setDefault(QLocale::c());
    QCoreApplication::setApplicationName(QStringLiteral("QorView"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QORVIEW_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("qorview"));
    UseLanguage(application, QLocale::system().name().left(2));
    LoadIcons();
    QApplication::setStyle(new CStyle(theme));
    theme.Apply();
    QApplication::setWindowIcon(ThemeIcon(theme, QStringLiteral("app")));
}

} // namespace qor
