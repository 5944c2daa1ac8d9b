// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/ViewWindow.h"

#include "app/ShownText.h"
#include "app/dialogs/FileDialogs.h"
#include "app/plots/PlotWidget.h"
#include "app/windows/PageGrid.h"
#include "app/windows/RealityCheckBar.h"
#include "base/Text.h"
#include "views/AncRows.h"

#include <QCloseEvent>
#include <QLabel>
#include <QRegularExpression>
#include <QVBoxLayout>

#include <algorithm>

namespace qor {

namespace {

constexpr unsigned PlotTicks = CViewWindow::TicksASecond / 10;
constexpr unsigned GridTicks = CViewWindow::TicksASecond / 4;
/// A view that gathers what comes (a track, a wind rose) has to find its instrument also while
/// nobody looks: every 10 s, without a page being drawn.
constexpr unsigned HiddenTicks = 10U * CViewWindow::TicksASecond;
constexpr const char* KeptPrefix = "View";

CWindowTitleBar::Has ButtonsOf(const ViewPages& pages) {
    const bool plots = !pages.plots.empty();
    return {plots, plots, true};
}

/// A name for a file after what is shown.
QString FileNameOf(const std::string& title) {
    static const QRegularExpression notForNames(QStringLiteral("[^\\w.()+-]+"));
    QString name = Shown(title).replace(notForNames, QStringLiteral("_"));
    while (name.endsWith(QLatin1Char('_')))
        name.chop(1);
    return name.isEmpty() ? QStringLiteral("plot") : name;
}

} // namespace

CViewWindow::CViewWindow(const CTheme& theme, const QString& name, const WindowKind& kind,
                         CQorViewDoc& doc)
    : CViewWindow(theme, name, kind, doc, kind.make(doc)) {}

CViewWindow::CViewWindow(const CTheme& theme, const QString& name, const WindowKind& kind,
                         CQorViewDoc& doc, std::unique_ptr<CView> view)
    : CDisplayWindow(theme, name, ButtonsOf(view->Pages())), Theme(theme), Row(kind), Doc(doc),
      Shown(std::move(view)) {
    setAttribute(Qt::WA_DeleteOnClose);
    OwnMenu = [this] { return Shown->ContextMenu(Doc); };
    if (auto* check = dynamic_cast<COSRCViewDlg*>(Shown.get())) {
        CheckBar = new CRealityCheckBar(*check);
        SetBar(CheckBar);
        connect(CheckBar, &CRealityCheckBar::Changed, this, [this] {
            Refresh();
            emit Altered();
        });
    }
    const ViewPages pages = Shown->Pages();
    if (pages.grid)
        AddGrid();
    for (const PlotPage* page : pages.plots)
        PlotOf(page);
    ShowHead(ShownInLanguage(std::string(kind.title)), {});
    connect(this, &CDisplayWindow::SeenChanged, this, [this](bool seen) {
        if (seen)
            Refresh();
    });
    connect(this, &CDisplayWindow::MenuChosen, this, [this] {
        Refresh();
        emit Altered();
    });
    connect(this, &CDisplayWindow::RemedyPressed, this, [this] {
        if (CurrentHead().state == PageState::Gone)
            close();
        else
            emit RemedyAsked(qor::Shown(CurrentHead().remedy));
    });
}

CViewWindow::~CViewWindow() = default;

void CViewWindow::AddGrid() {
    Grid = new CPageGrid(Theme);
    SetGrid(Grid);
    connect(Grid, &CPageGrid::RowActivated, this, [this](int row) {
        if (Shown->RangesOfRow(static_cast<std::size_t>(row)))
            emit RangesAsked(row);
    });
    connect(Grid, &CPageGrid::VisibleRowsChanged, this, [this](int first, int end) {
        Shown->SetVisibleRows({static_cast<std::size_t>(first), static_cast<std::size_t>(end)});
    });
}

CViewWindow::ShownPlot& CViewWindow::PlotOf(const PlotPage* page) {
    const auto known = std::ranges::find(Plots, page, &ShownPlot::page);
    return known != Plots.end() ? *known : Plots.emplace_back(MakePlot(page));
}

CViewWindow::ShownPlot CViewWindow::MakePlot(const PlotPage* page) {
    ShownPlot made{page, new CPlotWidget(Theme), nullptr, nullptr};
    made.whole = made.plot;
    if (CheckBar) {
        made.whole = new QWidget;
        made.caption = new QLabel;
        made.caption->setTextFormat(Qt::PlainText);
        made.caption->setAlignment(Qt::AlignCenter);
        auto* column = new QVBoxLayout(made.whole);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(0);
        column->addWidget(made.caption);
        column->addWidget(made.plot, 1);
    }
    SetPlot(made.plot, made.whole);
    connect(made.plot, &CPlotWidget::ExportAsked, this,
            [this, plot = made.plot] { Export(*plot); });
    connect(made.plot, &CPlotWidget::ViewChanged, this, &CViewWindow::Altered);
    connect(made.plot, &CPlotWidget::ViewChanged, this,
            [this, page, plot = made.plot] { ShowDetail(*page, *plot); });
    connect(made.plot, &CPlotWidget::CanvasResized, this,
            [this](QSize size) { Shown->SetPlotSize(size.width(), size.height()); });
    return made;
}

std::vector<CPlotWidget*> CViewWindow::ShownPlots() const {
    std::vector<CPlotWidget*> plots;
    for (const PlotPage* page : Shown->Pages().plots)
        for (const ShownPlot& shown : Plots)
            if (shown.page == page)
                plots.push_back(shown.plot);
    return plots;
}

void CViewWindow::ShowInstrument(const std::string& name) {
    Name = name;
    Opened = false;
    InAlarm.clear();
    Waiting.clear();
    Shown->Show(name);
}

void CViewWindow::Tick(unsigned tick) {
    const bool due = tick % (Grid ? GridTicks : PlotTicks) == 0;
    if (IsSeen() && due)
        Refresh();
    else if (due && (!InAlarm.empty() || Shown->Watches()))
        RefreshUnseen();
    else if (!IsSeen() && tick % HiddenTicks == 0)
        Behind = Shown->Refresh(Doc) || Behind;
}

/// An alarm is told wherever its window is: by the tab's sign, the sound and the strip.
void CViewWindow::RefreshUnseen() {
    if (!Shown->Refresh(Doc))
        return;
    Behind = true;
    TellPages(Shown->Pages());
}

void CViewWindow::Refresh() {
    const bool changed = Shown->Refresh(Doc);
    if (std::exchange(Behind, false) || changed || !Opened)
        ShowPages();
    RefreshPaused();
    if (std::exchange(Opened, true))
        return;
    if (const std::string notice = Shown->Notice(); !notice.empty())
        emit Told(qor::Shown(notice));
}

/// What a hand has zoomed to is drawn with all the points that it has room for, paused or not.
void CViewWindow::ShowDetail(const PlotPage& page, CPlotWidget& plot) {
    Shown->SetKeyRange(plot.ZoomedKeys());
    if (!plot.IsPaused() || !Shown->Refresh(Doc))
        return;
    plot.ShowPage(page);
    plot.ShowDetail(page);
}

void CViewWindow::ShowPages() {
    const ViewPages pages = Shown->Pages();
    if (pages.grid && !IsPaused())
        Grid->ShowPage(*pages.grid);
    for (const PlotPage* page : pages.plots)
        PlotOf(page).plot->ShowPage(*page);
    if (!Waiting.empty())
        RestorePlots();
    bool arrange = false;
    for (const ShownPlot& shown : Plots) {
        const bool there = std::ranges::find(pages.plots, shown.page) != pages.plots.end();
        arrange = arrange || there == shown.whole->isHidden();
        shown.whole->setVisible(there);
        if (shown.caption)
            shown.caption->setText(qor::Shown(shown.page->title));
    }
    if (arrange)
        ArrangeParts();
    if (CheckBar)
        CheckBar->Refresh();
    TellPages(pages);
}

/// What is told of the pages without their being drawn: title, sign and alarm.
void CViewWindow::TellPages(const ViewPages& pages) {
    const std::string& title = pages.grid ? pages.grid->title : pages.plots.front()->title;
    const PageHead& head = pages.grid ? pages.grid->head : pages.plots.front()->head;
    // A window of several charts is called by its kind; each chart has its own title.
    const bool ofKind = title.empty() || CheckBar;
    ShowHead(ofKind ? ShownInLanguage(std::string(Row.title)) : ShownInLanguage(title), head);
    if (pages.grid && pages.grid->beep)
        emit AlarmSounds();
    TellAlarm(pages.grid);
}

/// Each row once when it comes into its range, and again after it was out of it.
void CViewWindow::TellAlarm(const GridPage* grid) {
    const std::set<std::uint64_t> before = std::exchange(InAlarm, {});
    for (std::size_t i = 0; grid && i < grid->rows.size(); ++i) {
        const GridRow& row = grid->rows[i];
        if (row.sign != Sign::Alarm || !InAlarm.insert(row.id).second || before.contains(row.id))
            continue;
        if (const WarningRanges* ranges = Shown->RangesOfRow(i))
            emit AlarmBegan(qor::Shown(AlarmText(row, *ranges)), row.id);
    }
}

std::string CViewWindow::Alarmed() const {
    return InAlarm.empty() ? std::string() : Utf8Of(Shown->Watched());
}

KeptWindow CViewWindow::Kept() const {
    KeptWindow kept;
    kept.kind = Row.name;
    kept.name = objectName().toStdString();
    kept.instrument = Name;
    Shown->SaveSettings(kept.settings, KeptPrefix);
    for (std::size_t i = 0; i < Plots.size(); ++i)
        kept.plots.push_back(i < Waiting.size() && !Waiting[i].IsEmpty()
                                 ? Waiting[i]
                                 : KeepPlot(Plots[i].plot->Page(), Plots[i].plot->Hidden(),
                                            Plots[i].plot->Choices()));
    // Decided: tabs that were taken out together come back as floats at one place.
    SetPlace(kept, Floats() ? KeptPlace{window()->x(), window()->y()} : KeptPlace());
    if (Floats()) {
        kept.width = window()->width();
        kept.height = window()->height();
    }
    return kept;
}

void CViewWindow::Restore(const KeptWindow& kept) {
    Shown->LoadSettings(kept.settings, KeptPrefix);
    ShowInstrument(kept.instrument);
    Waiting = kept.plots;
}

void CViewWindow::RestorePlots() {
    for (std::size_t i = 0; i < std::min(Waiting.size(), Plots.size()); ++i) {
        const ShownPlot& shown = Plots[i];
        if (Waiting[i].IsEmpty() || shown.page->curves.empty())
            continue;
        shown.plot->SetHidden(HiddenOf(Waiting[i], *shown.page));
        for (const auto& [axis, choice] : ChoicesOf(Waiting[i], *shown.page))
            shown.plot->SetChoice(axis, choice);
        Waiting[i] = {};
    }
}

void CViewWindow::Export(CPlotWidget& plot) {
    AskSaveFile(Theme, this, tr("Save the picture or the data"),
                {tr("Pictures (*.png *.svg *.pdf)"), tr("Data (*.csv)")},
                FileNameOf(plot.Page().title) + QStringLiteral(".png"),
                [this, &plot](const QStringList& paths) {
                    QString fault;
                    if (!paths.isEmpty() && !plot.SaveFile(paths.front(), fault))
                        emit Failed(fault);
                });
}

void CViewWindow::closeEvent(QCloseEvent* event) {
    emit Closing();
    CDisplayWindow::closeEvent(event);
}

} // namespace qor
