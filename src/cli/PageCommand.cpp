// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli page: plays a raw log and prints a page as a window would show it at the end, or at a
// moment before. A window is one row of the table.
#include "base/Text.h"
#include "cli/Commands.h"
#include "cli/PageText.h"
#include "cli/PlayedFile.h"
#include "cli/Report.h"
#include "views/AncView.h"
#include "views/PkgAncView.h"
#include "views/RealityCheck.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace qor {

namespace {

struct PageOptions : PlaybackOptions {
    std::string window;
    std::string instrument;
    std::vector<std::string> selected;
    std::string at;
    bool json = false;
};

/// Fills a page and prints it; what is wrong with the call, or nothing.
using ShowFunction = std::string (*)(CPlayedFile&, const PageOptions&,
                                     const std::function<void(const ShownPages&)>&);
using Print = std::function<void(const ShownPages&)>;

std::string ShowAncillary(CPlayedFile& playback, const PageOptions& options, const Print& print,
                          int page) {
    CAncViewDlg view(false);
    view.Show(options.instrument);
    view.SetPage(page);
    view.Refresh(playback.Doc());
    print({&view.Page(), {}});
    return {};
}

std::string ShowDerived(CPlayedFile& playback, const PageOptions& options, const Print& print) {
    return ShowAncillary(playback, options, print, CAncViewSettings::DerivedPage);
}

std::string ShowSensors(CPlayedFile& playback, const PageOptions& options, const Print& print) {
    return ShowAncillary(playback, options, print, CAncViewSettings::SensorPage);
}

std::string ShowPackage(CPlayedFile& playback, const PageOptions& options, const Print& print) {
    const PackageId package = playback.Doc().Packages.PackageOf(options.instrument);
    if (package == PackageId::None)
        return options.instrument + " belongs to no package: name one with -p FILE.";
    CPkgAncViewDlg view(false);
    view.Show(package);
    view.Refresh(playback.Doc());
    if (!view.MissingSalinity().empty())
        ReportWarning(OneLine(view.MissingSalinity()));
    print({&view.Page(), {}});
    return {};
}

std::string ShowRealityCheck(CPlayedFile& playback, const PageOptions&, const Print& print) {
    std::unique_ptr<COSRCViewDlg> window;
    COSRCViewDlg* view = OpenRealityCheck(window, playback.Doc());
    if (!view)
        return "give the roles dut and reference with --role NAME=ROLE.";
    for (const OsrcDisplay display : {OsrcDisplay::DeviceUnderTest, OsrcDisplay::Comparison})
        view->Enable(display, true);
    view->Refresh(playback.Doc());
    print({nullptr,
           {&view->Page(OsrcDisplay::Reference), &view->Page(OsrcDisplay::DeviceUnderTest),
            &view->Page(OsrcDisplay::Comparison)}});
    return {};
}

struct Window {
    const char* name;
    ShowFunction show;
};
constexpr Window Windows[] = {
    {"ancillary", ShowDerived},
    {"sensors", ShowSensors},
    {"package", ShowPackage},
    {"reality-check", ShowRealityCheck},
};

std::string WindowNames() {
    std::vector<std::string_view> names;
    for (const Window& window : Windows)
        names.push_back(window.name);
    return QuotedChoice(names);
}

int RunPage(PageOptions& options, CommandContext& context) {
    if (!NamesInstrument(options.instruments))
        return ExitBadCall;
    const Window* window = std::ranges::find(Windows, options.window,
                                             [](const Window& w) { return std::string(w.name); });
    const std::optional<std::int64_t> until = SecondsFromText(options.at);
    if (window == std::end(Windows) || options.files.size() != 1 ||
        (!options.at.empty() && !until)) {
        ReportError(window == std::end(Windows)
                        ? "page " + options.window + ": give " + WindowNames() + "."
                    : options.files.size() != 1
                        ? "name one raw log behind the window's name."
                        : "--at " + options.at + ": give a time such as 2026-06-21T12:00:00.");
        return ExitBadCall;
    }
    CPlayedFile playback(options.chunk ? options.chunk : until ? 2048 : 0);
    bool well = playback.Open(options.files.front(), options.instruments, options.strict);
    if (playback.IsBadCall())
        return ExitBadCall;
    if (!playback.IsOpen())
        return ExitFault;
    if (options.instrument.empty())
        options.instrument = playback.Instruments().front()->Name();
    if (playback.Doc().FindInstrument(options.instrument) == InstrumentId::None) {
        ReportError("--instrument " + options.instrument +
                    ": there is no instrument of that name.");
        return ExitBadCall;
    }
    bool reached = false;
    well = playback.Play(
               context,
               [&](CQorViewIns& instrument, const FrameCheckResult&) {
                   const FrameTime& time = instrument.Live.CurrentFrame()->Info.time;
                   reached = reached || (until && time.known && time.seconds >= *until);
               },
               [&] { return !reached; }) &&
           well;
    COutput output(ReportError);
    const std::string wrong = window->show(playback, options, [&](const ShownPages& pages) {
        if (options.json)
            WritePageJson(output, options.window, pages);
        else
            WritePageText(output, pages);
    });
    if (!wrong.empty()) {
        ReportError("page " + options.window + ": " + wrong);
        return ExitBadCall;
    }
    well = (output.Flush() || !output.Failed()) && well;
    return PlaybackExit(context, well);
}

} // namespace

void AddPageCommand(CLI::App& app, CommandContext& context) {
    static PageOptions options; // one command runs in a process
    CLI::App* command =
        app.add_subcommand("page", "Play a raw log and print a page as its window would show it");
    command->add_option("WINDOW", options.window, WindowNames())->type_name("")->required();
    AddInstrumentOptions(*command, options.instruments);
    AddPackageOptions(*command, options.instruments.packageSettings);
    command->add_option("--instrument", options.instrument, "Whose page (the first instrument's)")
        ->type_name("NAME");
    command
        ->add_option("--select", options.selected, "What the window shows, where it has a choice")
        ->type_name("ITEM")
        ->allow_extra_args(false);
    command->add_option("--at", options.at, "As it was at this time (at the end)")
        ->type_name("YYYY-MM-DDTHH:MM:SS");
    command->add_flag("--json", options.json, "One JSON object");
    AddPlaybackOptions(*command, options, context);
    command->callback(
        [&context] { context.body = [&context] { return RunPage(options, context); }; });
}

} // namespace qor
