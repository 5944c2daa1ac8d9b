// SPDX-License-Identifier: GPL-3.0-or-later
//
// The command line itself: one argument a line, up to the parser's word on it. What it takes has a
// command to run, which is not run; what it refuses is refused in one line.
#include "Require.h"

#include "cli/CallText.h"
#include "cli/Commands.h"

#include <CLI/CLI.hpp>

using namespace qor;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> arguments(1, "qorview-cli");
    std::string_view text(reinterpret_cast<const char*>(data), size);
    while (!text.empty() && arguments.size() < 64) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view word = text.substr(0, end);
        arguments.emplace_back(word.substr(0, word.find('\0')));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    CLI::App app("", "qorview-cli");
    app.require_subcommand(1);
    app.allow_windows_style_options(false);
    // For all calls, and never ended: its end wakes its listener by a signal to the process, whose
    // other threads here are the fuzzer's.
    static CommandContext& context = *new CommandContext;
    context.body = nullptr;
    for (const auto add : {AddCheckCommand, AddDecodeCommand, AddCompareCommand, AddLogCommand,
                           AddSimulateCommand, AddInfoCommand, AddPageCommand, AddSessionCommand})
        add(app, context);
    if (!SettleBareOptions(arguments).empty())
        return 0;
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend() - 1));
        Require(static_cast<bool>(context.body));
    } catch (const CLI::CallForHelp&) { // answered before the parser is asked
    } catch (const CLI::ParseError& error) {
        const std::string why = WhyRefused(app, error, arguments);
        Require(!why.empty() && why.find('\n') == std::string::npos);
    }
    return 0;
}
