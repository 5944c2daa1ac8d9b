// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/LinesView.h"

#include "base/Text.h"
#include "views/NumberText.h"
#include "views/ShownInstrument.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::string_view LineEnd = "\r\n";
constexpr std::string_view StampEnd = "> ";
constexpr std::size_t StampLength = 20;               ///< "YYYY-MM-DD  HH:MM:SS"
constexpr std::size_t DayLength = 10, TimePlace = 12; ///< in it
constexpr std::string_view CommentMark = "Comment at ";

/// Messages come in the files' own texts: UTF-8 where they are that.
std::string ShownText(std::string_view text) {
    return IsUtf8(text) ? std::string(text) : Utf8Of(text);
}

} // namespace

CLinesView::CLinesView(bool onlyComments) : OnlyComments(onlyComments) {
    Grid.title = onlyComments ? "Comments" : "Session log";
    Grid.ownColours = false;
    Grid.newestLast = true;
    Grid.cutLast = true;
    Grid.columns = {{"Time"}, {"Text"}};
}

bool CLinesView::Refresh(CQorViewDoc& doc) {
    const std::string text = doc.SessionLog.ReadOn(Read);
    const std::uint64_t before = Lines;
    std::string_view rest = text; // whole lines
    for (std::size_t end; (end = rest.find(LineEnd)) != rest.npos;) {
        AddLine(rest.substr(0, end));
        rest.remove_prefix(end + LineEnd.size());
    }
    if (Grid.rows.size() > MostLines)
        Grid.rows.erase(Grid.rows.begin(),
                        Grid.rows.end() - static_cast<std::ptrdiff_t>(MostLines));
    const PageHead head =
        Grid.rows.empty() ? EmptyHead(OnlyComments ? "No comment yet." : "Nothing was said yet.")
                          : PageHead{};
    const bool changed = Lines != before || head != Grid.head;
    Grid.head = head;
    return changed;
}

void CLinesView::AddLine(std::string_view line) {
    const bool stamped =
        line.size() >= StampLength && line.substr(StampLength).starts_with(StampEnd);
    const std::string_view stamp = stamped ? line.substr(0, StampLength) : std::string_view();
    std::string_view text = stamped ? line.substr(StampLength + StampEnd.size()) : line;
    if (stamped)
        InComment = text.starts_with(CommentMark);
    if (text.empty() || (OnlyComments && !InComment))
        return;
    GridRow row;
    std::string time = ShownText(stamp);
    if (OnlyComments && stamped) {
        // The comment's own time counts: it may have been written for long.
        text.remove_prefix(CommentMark.size());
        const std::size_t colon = text.find(": ");
        time = ShownText(text.substr(0, colon));
        text = colon == text.npos ? std::string_view() : text.substr(colon + 2);
    }
    if (time.size() == StampLength) {
        BeginDay(time.substr(0, DayLength));
        time.erase(0, TimePlace);
    }
    row.label = std::move(time);
    row.value.text = ShownText(text);
    row.id = ++Lines;
    Grid.rows.push_back(std::move(row));
}

/// A line of its own, so that each line has the time alone.
void CLinesView::BeginDay(const std::string& day) {
    if (day == Day)
        return;
    Day = day;
    GridRow row;
    row.value.text = day;
    row.id = ++Lines;
    Grid.rows.push_back(std::move(row));
}

void AddComment(CQorViewDoc& doc, std::string_view text, const FrameTime& at) {
    std::string lines;
    for (std::string_view rest = Trim(text); !rest.empty();) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        lines += (lines.empty() ? "" : "\r\n\t") + std::string(Trim(rest.substr(0, end)));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    if (!lines.empty())
        doc.Report(std::string(CommentMark) + DayAndTimeText(at) + ": " + lines + "\r\n");
}

} // namespace qor
