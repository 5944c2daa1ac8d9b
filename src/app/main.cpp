// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview: the desktop. Reads the command line, sets the application up, opens the main window.
#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/frame/MainWindow.h"
#include "platform/Console.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char** argv) {
    const qor::DesktopCommand command =
        qor::ParseDesktopCommand(qor::CommandLineArguments(argc, argv));
    if (command.version || command.help) {
        std::fputs(command.version ? "qorview " QORVIEW_VERSION "\n" : qor::DesktopUsage, stdout);
        return 0;
    }
    if (!command.fault.empty()) {
        std::fprintf(stderr, "qorview: %s See qorview --help.\n", command.fault.c_str());
        return 2;
    }
    QApplication application(argc, argv);
    qor::CTheme theme;
    qor::PrepareApplication(application, theme);
    qor::CMainWindow window(theme);
    window.resize(1366, 768);
    window.show();
    return QApplication::exec();
}
