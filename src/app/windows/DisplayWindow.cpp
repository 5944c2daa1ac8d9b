// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/DisplayWindow.h"

#include "app/ShownText.h"
#include "app/plots/PlotWidget.h"
#include "app/windows/MenuPopup.h"
#include "app/windows/PageGrid.h"

#include <QMainWindow>
#include <QSplitter>
#include <QVBoxLayout>

#include <algorithm>

namespace qor {

CDisplayWindow::CDisplayWindow(const CTheme& theme, const QString& name, CWindowTitleBar::Has has,
                               QWidget* parent)
    : QDockWidget(parent), Theme(theme), Has(has), Bar(new CWindowTitleBar(theme, has, this)),
      Body(new QWidget), Notice(new CNotice(theme, Body)), Parts(new QSplitter(Qt::Vertical)) {
    setObjectName(name);
    setTitleBarWidget(Bar);
    setAllowedAreas(Qt::AllDockWidgetAreas);
    auto* whole = new QVBoxLayout(Body);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->setSpacing(0);
    whole->addWidget(Parts, 1);
    setWidget(Body);
    connect(Parts, &QSplitter::splitterMoved, this, [this] { PartsMoved = true; });
    connect(Bar, &CWindowTitleBar::PausePressed, this, [this] { SetPaused(!IsPaused()); });
    connect(Bar, &CWindowTitleBar::ClosePressed, this, &QDockWidget::close);
    connect(Bar, &CWindowTitleBar::FloatPressed, this, [this] { setFloating(!isFloating()); });
    connect(Bar, &CWindowTitleBar::MenuPressed, this, &CDisplayWindow::OpenMenuAt);
    connect(Notice, &CNotice::RemedyPressed, this, &CDisplayWindow::RemedyPressed);
    connect(this, &QDockWidget::visibilityChanged, this, [this](bool visible) {
        Seen = visible;
        emit SeenChanged(visible);
    });
}

void CDisplayWindow::SetContent(QWidget* content) {
    Parts->addWidget(content);
    Parts->setCollapsible(Parts->count() - 1, false);
    if (Parts->count() == 1)
        setFocusProxy(content);
    Notice->raise();
}

void CDisplayWindow::SetPlot(CPlotWidget* plot, QWidget* around) {
    Plots.push_back(plot);
    SetContent(around ? around : plot);
    connect(plot, &CPlotWidget::MenuAsked, this,
            [this, plot](const QPoint& place) { OpenMenuOf(plot, place); });
    connect(plot, &CPlotWidget::ExportAsked, this, &CDisplayWindow::ExportAsked);
    connect(plot, &CPlotWidget::PausedChanged, this, &CDisplayWindow::SetPaused);
    connect(Bar, &CWindowTitleBar::FitPressed, plot, &CPlotWidget::ResetView);
}

void CDisplayWindow::SetGrid(CPageGrid* grid) {
    SetContent(grid);
    connect(grid, &CPageGrid::MenuAsked, this,
            [this](int, const QPoint& place) { OpenMenuAt(place); });
    connect(grid, &CPageGrid::HintChanged, this, &CDisplayWindow::ArrangeParts);
}

void CDisplayWindow::SetBar(QWidget* bar) {
    static_cast<QVBoxLayout*>(Body->layout())->insertWidget(0, bar);
}

void CDisplayWindow::ArrangeParts() {
    const int width = Parts->width(), height = Parts->height();
    const bool across = width > height + height / 4;
    const Qt::Orientation wanted = across ? Qt::Horizontal : Qt::Vertical;
    if (Parts->orientation() != wanted) {
        Parts->setOrientation(wanted);
        PartsMoved = false;
    }
    if (PartsMoved || Parts->count() < 2)
        return;
    const int handles = Parts->handleWidth() * (Parts->count() - 1);
    const int room = (across ? width : height) - handles;
    int left = room, plots = 0;
    QList<int> sizes;
    for (int i = 0; i < Parts->count(); ++i) {
        const QWidget* part = Parts->widget(i);
        const auto* grid = qobject_cast<const CPageGrid*>(part);
        const QSize hint = part->sizeHint();
        const int needed = across ? hint.width() : hint.height();
        const bool shares = !part->isHidden() && !grid;
        sizes.append(part->isHidden() ? 0 : grid ? std::min(needed, room * 3 / 5) : -1);
        left -= std::max(sizes.back(), 0);
        plots += shares ? 1 : 0;
    }
    for (int& size : sizes)
        size = size < 0 ? left / plots : size;
    if (sizes != Parts->sizes())
        Parts->setSizes(sizes);
}

void CDisplayWindow::resizeEvent(QResizeEvent* event) {
    QDockWidget::resizeEvent(event);
    ArrangeParts();
}

bool CDisplayWindow::Floats() const {
    // Tabs that were taken out together have a window of Qt's own around them.
    return isFloating() || (parentWidget() && !qobject_cast<QMainWindow*>(parentWidget()));
}

bool CDisplayWindow::IsPaused() const {
    return std::ranges::any_of(Plots, &CPlotWidget::IsPaused);
}

void CDisplayWindow::SetPaused(bool paused) {
    for (CPlotWidget* plot : Plots)
        plot->SetPaused(paused);
    RefreshPaused();
}

void CDisplayWindow::ShowHead(const QString& title, const PageHead& head) {
    const bool otherSign = head.sign != Head.sign;
    const bool otherNotice =
        head.state != Head.state || head.sentence != Head.sentence || head.remedy != Head.remedy;
    Head = head;
    if (windowTitle() != title)
        setWindowTitle(title);
    Bar->SetTitle(title);
    Bar->SetSign(head.sign);
    RefreshPaused();
    if (otherNotice)
        Notice->ShowHead(head);
    if (otherSign)
        emit SignChanged();
}

void CDisplayWindow::RefreshPaused() {
    const auto plot = std::ranges::find_if(Plots, &CPlotWidget::IsPaused);
    const std::string paused = plot == Plots.end() ? std::string() : (*plot)->PausedText();
    Bar->SetLeading(Shown(Head.leading), Shown(paused));
    Bar->SetPauseDown(!paused.empty());
}

void CDisplayWindow::TellOfChoices(Menu& menu) {
    for (MenuEntry& entry : menu) {
        TellOfChoices(entry.entries);
        if (entry.choose)
            entry.choose = [this, choose = std::move(entry.choose)] {
                choose();
                emit MenuChosen();
            };
    }
}

Menu CDisplayWindow::WholeMenu(CPlotWidget* plot) {
    Menu menu = OwnMenu ? OwnMenu() : Menu();
    TellOfChoices(menu);
    const auto append = [&menu](Menu more) {
        if (!menu.empty() && !more.empty())
            menu.push_back({});
        for (MenuEntry& entry : more)
            menu.push_back(std::move(entry));
    };
    if (plot)
        append(plot->PlotMenu());
    const auto text = [](const QString& translated) { return translated.toStdString(); };
    append({{text(isFloating() ? tr("Put back into the frame") : tr("Take out of the frame")),
             [this] { setFloating(!isFloating()); }},
            {text(tr("Close")), [this] { close(); }}});
    return menu;
}

void CDisplayWindow::OpenMenuOf(CPlotWidget* plot, const QPoint& screenPlace) {
    OpenMenu(WholeMenu(plot), screenPlace, this);
}

/// Of several plots the one that has the focus, else the first that is shown.
void CDisplayWindow::OpenMenuAt(const QPoint& screenPlace) {
    CPlotWidget* chosen = nullptr;
    for (CPlotWidget* plot : Plots)
        if (!plot->isHidden() && (!chosen || plot->hasFocus()))
            chosen = plot;
    OpenMenuOf(chosen, screenPlace);
}

} // namespace qor
