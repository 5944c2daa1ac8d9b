// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/DisplayWindow.h"

#include "app/ShownText.h"
#include "app/plots/PlotWidget.h"
#include "app/windows/MenuPopup.h"
#include "app/windows/PageGrid.h"

#include <QVBoxLayout>

namespace qor {

CDisplayWindow::CDisplayWindow(const CTheme& theme, const QString& name, CWindowTitleBar::Has has,
                               QWidget* parent)
    : QDockWidget(parent), Theme(theme), Has(has), Bar(new CWindowTitleBar(theme, has, this)),
      Body(new QWidget), Notice(new CNotice(theme, Body)) {
    setObjectName(name);
    setTitleBarWidget(Bar);
    setAllowedAreas(Qt::AllDockWidgetAreas);
    auto* whole = new QVBoxLayout(Body);
    whole->setContentsMargins(0, 0, 0, 0);
    setWidget(Body);
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
    Body->layout()->addWidget(content);
    setFocusProxy(content);
    Notice->raise();
}

void CDisplayWindow::SetPlot(CPlotWidget* plot) {
    Plot = plot;
    SetContent(plot);
    connect(plot, &CPlotWidget::MenuAsked, this, &CDisplayWindow::OpenMenuAt);
    connect(plot, &CPlotWidget::ExportAsked, this, &CDisplayWindow::ExportAsked);
    connect(plot, &CPlotWidget::PausedChanged, this, &CDisplayWindow::RefreshPaused);
    connect(Bar, &CWindowTitleBar::PausePressed, plot,
            [plot] { plot->SetPaused(!plot->IsPaused()); });
    connect(Bar, &CWindowTitleBar::FitPressed, plot, &CPlotWidget::ResetView);
}

void CDisplayWindow::SetGrid(CPageGrid* grid) {
    SetContent(grid);
    connect(grid, &CPageGrid::MenuAsked, this,
            [this](int, const QPoint& place) { OpenMenuAt(place); });
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
    const std::string paused = Plot ? Plot->PausedText() : std::string();
    Bar->SetLeading(Shown(Head.leading), Shown(paused));
    Bar->SetPauseDown(!paused.empty());
}

Menu CDisplayWindow::WholeMenu() {
    Menu menu = OwnMenu ? OwnMenu() : Menu();
    const auto append = [&menu](Menu more) {
        if (!menu.empty() && !more.empty())
            menu.push_back({});
        for (MenuEntry& entry : more)
            menu.push_back(std::move(entry));
    };
    if (Plot)
        append(Plot->PlotMenu());
    const auto text = [](const QString& translated) { return translated.toStdString(); };
    append({{text(isFloating() ? tr("Put back into the frame") : tr("Take out of the frame")),
             [this] { setFloating(!isFloating()); }},
            {text(tr("Close")), [this] { close(); }}});
    return menu;
}

void CDisplayWindow::OpenMenuAt(const QPoint& screenPlace) {
    OpenMenu(WholeMenu(), screenPlace, this);
}

} // namespace qor
