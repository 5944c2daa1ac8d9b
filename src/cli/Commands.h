// SPDX-License-Identifier: GPL-3.0-or-later
//
// The commands of qorview-cli. Each Add... function describes its command to the parser and says
// what runs when it was chosen; main parses and runs. One file a command.
#pragma once

#include "platform/Console.h"

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace qor {

/// Exit status, as the shell sees it.
enum : int { ExitWell = 0, ExitFault = 1, ExitBadCall = 2, ExitInterrupted = 130 };

/// What every command shares: the operator's request to stop, and the chosen command's body.
struct CommandContext {
    CEvent stopEvent;
    CStopWatch stop{stopEvent};
    std::string call;          ///< the command line, for results that keep it
    bool quiet = false;        ///< no progress
    std::function<int()> body; ///< set by the parser for the chosen command; gives the exit status
};

void AddCheckCommand(CLI::App& app, CommandContext& context);
void AddDecodeCommand(CLI::App& app, CommandContext& context);
void AddCompareCommand(CLI::App& app, CommandContext& context);
void AddLogCommand(CLI::App& app, CommandContext& context);
void AddSimulateCommand(CLI::App& app, CommandContext& context);
void AddInfoCommand(CLI::App& app, CommandContext& context);
void AddVerifyCommand(CLI::App& app, CommandContext& context);
void AddDiffCommand(CLI::App& app, CommandContext& context);
void AddPageCommand(CLI::App& app, CommandContext& context);
void AddSessionCommand(CLI::App& app, CommandContext& context);

} // namespace qor
