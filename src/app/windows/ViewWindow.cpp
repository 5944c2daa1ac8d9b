// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/ViewWindow.h"

#include "app/ShownText.h"
#include "app/dialogs/FileDialogs.h"
#include "app/plots/PlotWidget.h"
#include "app/windows/PageGrid.h"
#include "app/windows/RealityCheckBar.h"

#include <QCloseEvent>
#include <QRegularExpression>

#include <algorithm>

namespace qor {

namespace {

constexpr unsigned PlotTicks = 2, GridTicks = 5;

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

/// The plot of a page, made when the view shows the page for the first time.
CPlotWidget* CViewWindow::PlotOf(const PlotPage* page) {
    const auto known = std::ranges::find(Plots, page, &decltype(Plots)::value_type::first);
    if (known != Plots.end())
        return known->second;
    auto* plot = new CPlotWidget(Theme);
    Plots.emplace_back(page, plot);
    SetPlot(plot);
    connect(plot, &CPlotWidget::ExportAsked, this, [this, plot] { Export(*plot); });
    connect(plot, &CPlotWidget::ViewChanged, this, &CViewWindow::Altered);
    connect(plot, &CPlotWidget::CanvasResized, this,
            [this](QSize size) { Shown->SetPlotSize(size.width(), size.height()); });
    return plot;
}

std::vector<CPlotWidget*> CViewWindow::ShownPlots() const {
    std::vector<CPlotWidget*> plots;
    for (const PlotPage* page : Shown->Pages().plots)
        for (const auto& [known, plot] : Plots)
            if (known == page)
                plots.push_back(plot);
    return plots;
}

void CViewWindow::ShowInstrument(const std::string& name) {
    Name = name;
    Opened = false;
    Shown->Show(name);
}

void CViewWindow::Tick(unsigned tick) {
    if (IsSeen() && tick % (Grid ? GridTicks : PlotTicks) == 0)
        Refresh();
}

void CViewWindow::Refresh() {
    const bool changed = Shown->Refresh(Doc);
    if (changed || !Opened)
        ShowPages();
    RefreshPaused();
    if (std::exchange(Opened, true))
        return;
    if (const std::string notice = Shown->Notice(); !notice.empty())
        emit Told(qor::Shown(notice));
}

void CViewWindow::ShowPages() {
    const ViewPages pages = Shown->Pages();
    if (pages.grid && !IsPaused())
        Grid->ShowPage(*pages.grid);
    for (const PlotPage* page : pages.plots)
        PlotOf(page)->ShowPage(*page);
    for (const auto& [page, plot] : Plots)
        plot->setVisible(std::ranges::find(pages.plots, page) != pages.plots.end());
    if (CheckBar)
        CheckBar->Refresh();
    const std::string& title = pages.grid ? pages.grid->title : pages.plots.front()->title;
    const PageHead& head = pages.grid ? pages.grid->head : pages.plots.front()->head;
    // A window of several charts is called by its kind; each chart has its own title.
    const bool ofKind = title.empty() || CheckBar;
    ShowHead(ofKind ? ShownInLanguage(std::string(Row.title)) : ShownInLanguage(title), head);
    if (pages.grid && pages.grid->beep)
        emit AlarmSounds();
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
