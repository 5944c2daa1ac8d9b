// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/CallText.h"

#include "base/NearName.h"
#include "cli/Commands.h"
#include "cli/DecodeRun.h"
#include "cli/InstrumentOptions.h"
#include "cli/Report.h"
#include "export/Output.h"
#include "session/FileKind.h"
#include "views/Windows.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <span>

namespace qor {

namespace {

/// The names of a command's options, or those of the commands.
std::vector<std::string> OptionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}
std::vector<std::string> CommandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands(nullptr))
        names.push_back(command->get_name());
    return names;
}

/// A word that is no file and cannot have been meant for one, or for a window.
bool MayBeName(const std::string& word) {
    return !word.empty() && word[0] != '-' && ExtensionOf(word).empty() &&
           word.find_first_of("/\\") == std::string::npos && !FileExists(word) &&
           !FindWindowKind(word);
}

int Print(const std::string& text) {
    COutput output(ReportError);
    output.Text(text);
    return output.Flush() || !output.Failed() ? ExitWell : ExitFault;
}

std::string NoCommand(const CLI::App& app, const std::string& word) {
    if (word.starts_with('-'))
        return "There is no option " + word + "." + NameAdvice(word, OptionNames(app));
    return "There is no command \"" + word + "\"." + NameAdvice(word, CommandNames(app));
}

} // namespace

std::string SettleBareOptions(std::vector<std::string>& arguments) {
    const struct {
        std::string_view option;
        std::string_view value;
    } bare[] = {{"--wet", EveryInstrument}, {"--derived", UsualDerived}, {"--qc", NoLimitsFile}};
    for (std::size_t i = 1; i < arguments.size() && arguments[i] != "--"; ++i)
        for (const auto& row : bare) {
            std::string& word = arguments[i];
            if (word != row.option)
                continue;
            if (word == "--qc" && i + 1 < arguments.size() &&
                ExtensionOf(arguments[i + 1]) == "txt")
                break; // the file of its limits
            if (i + 1 < arguments.size() && MayBeName(arguments[i + 1]))
                return word + " " + arguments[i + 1] +
                       ": there is no file of that name. Did you mean " + word + "=" +
                       arguments[i + 1] + "?";
            word += "=" + std::string(row.value);
        }
    return {};
}

std::optional<int> AnswerCall(const CLI::App& app, const std::vector<std::string>& arguments) {
    const auto end = std::ranges::find(arguments, "--");
    const auto has = [&](const char* word) {
        return std::find(arguments.begin(), end, word) != end;
    };
    if (has("--version") || has("-V"))
        return Print("qorview-cli " QORVIEW_VERSION "\n");
    const bool asked = arguments.size() > 1 && arguments[1] == "help";
    if (!asked && !has("--help") && !has("-h"))
        return std::nullopt;
    for (const std::string& word : std::span(arguments).subspan(1))
        for (const CLI::App* command : app.get_subcommands(nullptr))
            if (command->get_name() == word)
                return Print(command->help(app.get_name()));
    if (!asked || arguments.size() == 2 || has("--help") || has("-h"))
        return Print(app.help());
    ReportError(NoCommand(app, arguments[2]) + " See qorview-cli --help.");
    return ExitBadCall;
}

std::string WhyRefused(const CLI::App& app, const CLI::ParseError& error,
                       const std::vector<std::string>& arguments) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    if (arguments.size() < 2)
        return "A command is required." + NameAdvice("", CommandNames(app));
    if (chosen.empty())
        return NoCommand(app, arguments[1]) + " See qorview-cli --help.";
    const CLI::App& command = *chosen.front();
    std::string text = error.what();
    // An unknown option is why, whatever the parser has missed first.
    const std::vector<std::string> extra = command.remaining();
    const auto option = std::ranges::find_if(
        extra, [](const std::string& word) { return word.size() > 1 && word[0] == '-'; });
    if (option != extra.end()) {
        const std::string name = option->substr(0, option->find('='));
        text = command.get_name() + " has no option " + name + "." +
               NameAdvice(name, OptionNames(command));
    }
    std::ranges::replace(text, '\n', ' ');
    const bool ended = text.ends_with('.') || text.ends_with('?');
    return text + (ended ? "" : ".") + " See qorview-cli " + command.get_name() + " --help.";
}

} // namespace qor
