// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview: the desktop. Reads the command line and the settings, sets the application up, and puts
// the operator at the desk.
#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/Registration.h"
#include "app/desk/Desk.h"
#include "platform/Console.h"

#include <QApplication>
#include <QMessageBox>
#include <QScreen>

namespace {

constexpr int FirstWidth = 1366, FirstHeight = 768;

/// The frame that the system draws around a window of the screen's size would stand beyond it.
void FitOnScreen(QWidget& window) {
    const QRect room = window.screen()->availableGeometry();
    const QSize frame = window.frameGeometry().size() - window.size();
    window.resize(window.size().boundedTo(room.size() - frame));
    if (!room.contains(window.frameGeometry()))
        window.move(room.topLeft());
}

int Run(QApplication& application, const qor::DesktopCommand& command,
        const qor::CStopWatch& watch) {
    qor::CTheme theme;
    qor::PrepareApplication(application, theme);
    const std::unique_ptr<qor::CKeptProfileStore> profile = qor::OpenProgramProfile();
    qor::CMainWindow window(theme);
    qor::CDesk desk(theme, window, *profile);
    window.resize(FirstWidth, FirstHeight);
    window.show();
    FitOnScreen(window);
    desk.EndAsked = [&watch] { return watch.Requested(); };
    desk.Begin(command);
    const int status = QApplication::exec();
    return status != 0 ? status : desk.ExitStatus();
}

/// Says it where the program was started from; in a box when that is no place to read.
void Tell(qor::StandardStream stream, const std::string& text, int argc, char** argv) {
    if (qor::JoinConsole()) {
        static_cast<void>(qor::WriteText(stream, text));
        return;
    }
    const QApplication application(argc, argv);
    QMessageBox box(QMessageBox::Information, QStringLiteral("QorView"),
                    QString::fromStdString(text));
    box.setTextFormat(Qt::PlainText);
    box.exec();
}

} // namespace

int main(int argc, char** argv) {
    using enum qor::StandardStream;
    const qor::DesktopCommand command =
        qor::ParseDesktopCommand(qor::CommandLineArguments(argc, argv));
    if (command.version || command.help) {
        Tell(Output, command.version ? "qorview " QORVIEW_VERSION "\n" : qor::DesktopUsage, argc,
             argv);
        return 0;
    }
    if (!command.fault.empty()) {
        Tell(Error, "qorview: " + command.fault + " See qorview --help.\n", argc, argv);
        return 2;
    }
    if (command.registerTypes || command.unregisterTypes) {
        const qor::RegistrationOutcome outcome = qor::RegisterProgram(command.registerTypes);
        Tell(outcome.done ? Output : Error, "qorview: " + outcome.text + '\n', argc, argv);
        return outcome.done ? 0 : 1;
    }
    qor::CEvent stop;
    const qor::CStopWatch watch(stop); // before there are threads
    QApplication application(argc, argv);
    return Run(application, command, watch);
}
