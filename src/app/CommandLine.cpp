// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CommandLine.h"

#include "base/Text.h"

#include <string_view>

namespace qor {

namespace {

struct Switch {
    const char* name;
    bool DesktopCommand::*field;
};

constexpr Switch Switches[] = {
    {"lognow", &DesktopCommand::logNow},
    {"exitifdone", &DesktopCommand::exitIfDone},
    {"practice", &DesktopCommand::practice},
    {"register", &DesktopCommand::registerTypes},
    {"unregister", &DesktopCommand::unregisterTypes},
    {"version", &DesktopCommand::version},
    {"help", &DesktopCommand::help},
};

bool TakeSwitch(std::string_view argument, DesktopCommand& command) {
    for (const std::string_view sign : {"--", "-", "/"}) {
        if (!argument.starts_with(sign))
            continue;
        for (const Switch& known : Switches)
            if (EqualsNoCase(argument.substr(sign.size()), known.name)) {
                command.*known.field = true;
                return true;
            }
    }
    return false;
}

} // namespace

const char* const DesktopUsage =
    "qorview [FILE] [--lognow] [--exitifdone] [--practice] [--register] [--unregister]\n"
    "        [--version] [--help]\n"
    "  FILE          a session to open, a raw log to replay, or a definition or package\n"
    "                to begin a session with\n"
    "  --lognow      begin to log as soon as the session is open\n"
    "  --exitifdone  end the program when the log ends\n"
    "  --practice    open the practice session: simulated instruments, no hardware\n"
    "  --register    open such files with this program from now on, for this user\n"
    "                (Windows; elsewhere its installation does that)\n"
    "  --unregister  take that back\n"
    "A switch may begin with \"-\" or \"/\" as well.\n";

DesktopCommand ParseDesktopCommand(const std::vector<std::string>& arguments) {
    DesktopCommand command;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (TakeSwitch(argument, command))
            continue;
        if (argument.starts_with("-"))
            command.fault = "There is no option \"" + argument + "\".";
        else if (!command.file.empty())
            command.fault = "Only one file can be opened; \"" + argument + "\" is a second.";
        else
            command.file = argument;
    }
    if (command.fault.empty() && command.practice && !command.file.empty())
        command.fault = "--practice opens its own session; leave \"" + command.file + "\" out.";
    return command;
}

} // namespace qor
