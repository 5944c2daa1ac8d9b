// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview: the desktop. Reads the command line and the settings, sets the application up, and puts
// the operator at the desk.
#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/desk/Desk.h"
#include "platform/Console.h"
#include "platform/SettingsFolder.h"

#include <QApplication>

#include <cstdio>

namespace {

constexpr int FirstWidth = 1366, FirstHeight = 768;

int Run(QApplication& application, const qor::DesktopCommand& command) {
    qor::CTheme theme;
    qor::PrepareApplication(application, theme);
    qor::CFileProfileStore profile;
    const bool read = profile.Load(qor::SettingsFolder() + "qorview.ini") == qor::FileCause::None;
    qor::CMainWindow window(theme);
    qor::CDesk desk(theme, window, profile);
    if (!read)
        std::fputs("qorview: the settings could not be read; none will be kept.\n", stderr);
    window.resize(FirstWidth, FirstHeight);
    window.show();
    desk.Begin(command);
    const int status = QApplication::exec();
    return status != 0 ? status : desk.ExitStatus();
}

} // namespace

int main(int argc, char** argv) {
    const qor::DesktopCommand command =
        qor::ParseDesktopCommand(qor::CommandLineArguments(argc, argv));
    if (command.version || command.help) {
        std::fputs(command.version ? "qorview " QORVIEW_VERSION "\n" : qor::DesktopUsage, stdout);
        return 0;
    }
    if (!command.fault.empty()) {
        const std::string text = "qorview: " + command.fault + " See qorview --help.\n";
        static_cast<void>(qor::WriteText(qor::StandardStream::Error, text));
        return 2;
    }
    QApplication application(argc, argv);
    return Run(application, command);
}
