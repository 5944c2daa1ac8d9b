// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli page: plays a raw log and prints a page as a window would show it at the end, or at a
// moment before. The windows and what they show are the views' business.
#include "base/NearName.h"
#include "base/Text.h"
#include "cli/Commands.h"
#include "cli/NumberOptions.h"
#include "cli/OutputOptions.h"
#include "cli/PlayedFile.h"
#include "cli/Report.h"
#include "views/LogBanner.h"
#include "views/PageText.h"
#include "views/Windows.h"

#include <CLI/CLI.hpp>

namespace qor {

namespace {

/// Its page is printed whole unless a part is selected.
constexpr const char* CheckWindow = "reality-check";

struct PageOptions : PlaybackOptions {
    std::string window;
    std::string instrument;
    std::vector<std::string> selected;
    std::string at;
    bool json = false;
};

/// Says what is wrong with the call; false then.
bool IsGoodCall(const PageOptions& options) {
    std::string wrong;
    if (!FindWindowKind(options.window))
        wrong = "page " + options.window + ": there is no such window." +
                NameAdvice(options.window, WindowNames());
    else if (options.files.size() != 1)
        wrong = "name one raw log behind the window's name.";
    if (!wrong.empty())
        ReportError(wrong);
    return wrong.empty();
}

bool IsThere(const CQorViewDoc& doc, const std::string& name) {
    return doc.FindInstrument(name) != InstrumentId::None ||
           doc.Packages.Named(name) != PackageId::None;
}

/// Tells the view what to show. What is wrong with that, or nothing: the page has everything that
/// it needs of the session.
std::string SetUp(CView& view, const PageOptions& options, CQorViewDoc& doc) {
    if (!options.instrument.empty() && !IsThere(doc, options.instrument))
        return "there is no instrument " + options.instrument + "." +
               NameAdvice(options.instrument, InstrumentNames(doc));
    view.Show(options.instrument);
    view.Refresh(doc);
    if (options.window == CheckWindow && options.selected.empty())
        for (const char* all : {"DUT", "DUT/REF Normalized"})
            (void)view.Select(doc, all); // both are in its menu
    for (const std::string& item : options.selected)
        if (std::string wrong = view.Select(doc, item); !wrong.empty())
            return wrong;
    view.Refresh(doc);
    const ViewPages pages = view.Pages();
    const PageHead& head = pages.grid ? pages.grid->head : pages.plots.front()->head;
    if (head.state == PageState::Empty && !head.remedy.empty())
        return head.sentence + " See --role, -d and -p.";
    if (!view.Notice().empty())
        ReportWarning(OneLine(view.Notice()));
    return {};
}

/// Plays the log, to its end or until a frame has come at the moment asked for, and says when the
/// page is of another one. False when reading failed (reported).
bool PlayUntil(CPlayedFile& playback, CommandContext& context, const PageOptions& options,
               const std::optional<std::int64_t>& until) {
    std::optional<std::int64_t> first;
    bool reached = false;
    const bool well = playback.Play(
        context,
        [&](CQorViewIns& instrument, const FrameCheckResult&) {
            const FrameTime& time = instrument.Live.CurrentFrame()->Info.time;
            if (!time.known)
                return;
            first = first.value_or(time.seconds);
            reached = reached || (until && time.seconds >= *until);
        },
        [&] { return !reached; });
    const char* const other = !until || !well ? nullptr
                              : !first        ? "its frames have no times; the page is of its end."
                              : !reached      ? "it ends before that; the page is of its end."
                              : *first > *until ? "it begins later; the page is of its first frame."
                                                : nullptr;
    if (other)
        ReportWarning(options.files.front() + ": --at " + options.at + ": " + other);
    return well;
}

int RunPage(PageOptions& options, CommandContext& context) {
    if (const int status = TakeInstruments(options); status != ExitWell)
        return status;
    if (!IsGoodCall(options))
        return ExitBadCall;
    const std::optional<std::int64_t> until = SecondsFromText(options.at);
    // One frame at a time, so that none is shown that came later.
    CPlayedFile playback(options.chunk, until ? 1 : FileResourceSettings().framesAtOnce);
    bool well = playback.Open(options.files.front(), options.instruments, options.strict);
    if (playback.IsBadCall())
        return ExitBadCall;
    if (!playback.IsOpen())
        return ExitFault;
    COutput output(ReportError);
    if (const int status = OutputExit(output.Open({}, {.inputs = options.Inputs()}));
        status != ExitWell)
        return status;
    CQorViewDoc& doc = playback.Doc();
    const std::unique_ptr<CView> view = FindWindowKind(options.window)->make(doc);
    if (const std::string wrong = SetUp(*view, options, doc); !wrong.empty()) {
        ReportError("page " + options.window + ": " + wrong);
        return ExitBadCall;
    }
    well = PlayUntil(playback, context, options, until) && well;
    if (options.window == "log") { // it says how long the disk lasts, and looks but once here
        doc.Room.Watch(LogFolder(doc));
        doc.Room.AwaitLook();
    }
    view->Refresh(doc);
    if (options.json)
        WritePageJson(output, options.window, view->Pages());
    else
        WritePageText(output, view->Pages());
    well = (output.Flush() || !output.Failed()) && well;
    return PlaybackExit(context, well);
}

} // namespace

void AddPageCommand(CLI::App& app, CommandContext& context) {
    static PageOptions options; // one command runs in a process
    CLI::App* command =
        app.add_subcommand("page", "Play a raw log and print a page as its window would show it");
    command->add_option("WINDOW", options.window, QuotedChoice(WindowNames()))
        ->type_name("")
        ->required();
    AddInstrumentOptions(*command, options.instruments);
    AddPackageOptions(*command, options.instruments.packageOptions);
    AddDerivedOption(*command, options.instruments, nullptr, "Derived products as usual");
    command->add_option("--instrument", options.instrument, "Whose page (the first that has such)")
        ->type_name("NAME");
    command
        ->add_option("--select", options.selected, "What the window shows, where it has a choice")
        ->type_name("ITEM")
        ->allow_extra_args(false);
    command->add_option("--at", options.at, "As it was at this time (at the end)")
        ->type_name("YYYY-MM-DDTHH:MM:SS")
        ->check(TimeOfLogs());
    command->add_flag("--json", options.json, "One JSON object");
    AddPlaybackOptions(*command, options, context);
    command->callback(
        [&context] { context.body = [&context] { return RunPage(options, context); }; });
}

} // namespace qor
