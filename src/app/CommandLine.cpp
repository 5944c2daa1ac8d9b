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
    {"lognow", &DesktopCommand::logNow},     {"exitifdone", &DesktopCommand::exitIfDone},
    {"practice", &DesktopCommand::practice}, {"version", &DesktopCommand::version},
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
    "qorview [FILE.qor] [--lognow] [--exitifdone] [--practice] [--version] [--help]\n"
    "  FILE.qor      the session to open\n"
    "  --lognow      begin to log as soon as the session is open\n"
    "  --exitifdone  end the program when the log ends\n"
    "  --practice    open the practice session: simulated instruments, no hardware\n"
    "A switch may begin with \"-\" or \"/\" as well.\n";

DesktopCommand ParseDesktopCommand(const std::vector<std::string>& arguments) {
    DesktopCommand command;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (TakeSwitch(argument, command))
            continue;
        if (argument.starts_with("-"))
            command.fault = "There is no option \"" + argument + "\".";
        else if (!command.sessionFile.empty())
            command.fault = "Only one session can be opened; \"" + argument + "\" is a second.";
        else
            command.sessionFile = argument;
    }
    if (command.fault.empty() && command.practice && !command.sessionFile.empty())
        command.fault =
            "--practice opens its own session; leave \"" + command.sessionFile + "\" out.";
    return command;
}

} // namespace qor
