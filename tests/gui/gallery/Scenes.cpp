// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/gallery/Scenes.h"

#include "app/dialogs/Boxes.h"
#include "app/dialogs/FileDialogs.h"
#include "app/dialogs/Form.h"
#include "app/frame/MainWindow.h"
#include "app/look/Icons.h"
#include "app/plots/PlotWidget.h"
#include "app/windows/MenuPopup.h"
#include "app/windows/PageGrid.h"
#include "gui/SamplePages.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <QToolTip>
#include <QTreeView>

namespace qor {

namespace {

CDisplayWindow* PlotWindow(CTheme& theme, const char* name, const PlotPage& page) {
    auto* window = new CDisplayWindow(theme, QString::fromLatin1(name), {true, true, true});
    auto* plot = new CPlotWidget(theme);
    window->SetPlot(plot);
    plot->ShowPage(page);
    window->ShowHead(QString::fromStdString(page.title), page.head);
    return window;
}

CDisplayWindow* GridWindow(CTheme& theme, const char* name, const GridPage& page) {
    auto* window = new CDisplayWindow(theme, QString::fromLatin1(name), {false, false, true});
    auto* grid = new CPageGrid(theme);
    window->SetGrid(grid);
    grid->ShowPage(page);
    window->ShowHead(QString::fromStdString(page.title), page.head);
    return window;
}

StripMessage LostPort() {
    return {"ttyUSB1",
            Sign::Error,
            "09:41:07",
            "ttyUSB1 lost at 09:41:04. Trying again every 2 s; the log goes on.",
            {{"Show", {}}}};
}

StripMessage TiltAlarm() {
    return {"tilt",
            Sign::Alarm,
            "09:42:10",
            "TILT 46.12 deg is in its alarm range, 45.00 to 180.00.",
            {{"Show", {}}, {"Silence 2 min", {}}}};
}

CMainWindow* Shell(CTheme& theme, QSize screen) {
    auto* main = new CMainWindow(theme);
    main->resize(screen);
    main->ShowStart(false);
    main->Tree().ShowPage(SampleTree());
    main->ShowLog(SampleLog(LogState::Open, RunKind::Live));
    main->Strip().Post(LostPort());
    auto& area = main->Area();
    auto* profile = PlotWindow(theme, "profile", SampleProfile());
    auto* spectrum = PlotWindow(theme, "spectrum", SampleSpectrum());
    auto* ancillary = GridWindow(theme, "ancillary", SampleAncillary());
    auto* series = PlotWindow(theme, "series", SampleSeries());
    auto* status = GridWindow(theme, "status", SampleStatus());
    area.AddDisplay(profile);
    area.AddDisplay(spectrum, profile, CDisplayArea::Place::Right);
    area.AddDisplay(ancillary, spectrum, CDisplayArea::Place::Below);
    area.AddDisplay(series, ancillary, CDisplayArea::Place::Right);
    area.AddDisplay(status, series, CDisplayArea::Place::Tab);
    series->raise();
    auto* log = new QListWidget;
    log->setWordWrap(true);
    log->addItems({QStringLiteral("09:30:15  Log 2026-325-093015.raw begun."),
                   QStringLiteral("09:41:04  ttyUSB1 lost.")});
    auto* logDock = main->AddDock(Do::LogDock, QStringLiteral("log"), QStringLiteral("Session log"),
                                  log, Qt::LeftDockWidgetArea);
    auto* comments =
        main->AddDock(Do::CommentDock, QStringLiteral("comments"), QStringLiteral("Comments"),
                      new QPlainTextEdit, Qt::LeftDockWidgetArea);
    main->tabifyDockWidget(logDock, comments);
    logDock->raise();
    return main;
}

QWidget* ArrangeShell(QWidget* widget) {
    auto* main = static_cast<CMainWindow*>(widget);
    const auto windows = main->Area().Windows();
    main->resizeDocks({main->findChild<QDockWidget*>(QStringLiteral("tree"))}, {286},
                      Qt::Horizontal);
    main->resizeDocks({main->findChild<QDockWidget*>(QStringLiteral("tree")),
                       main->findChild<QDockWidget*>(QStringLiteral("log"))},
                      {450, 120}, Qt::Vertical);
    main->Area().resizeDocks({windows[0], windows[1]}, {360, 640}, Qt::Horizontal);
    main->Area().resizeDocks({windows[1], windows[2]}, {55, 45}, Qt::Vertical);
    main->Area().resizeDocks({windows[2], windows[3]}, {330, 380}, Qt::Horizontal);
    return main;
}

QWidget* MakeShell(CTheme& theme, QSize screen) {
    return Shell(theme, screen);
}

QWidget* MakePracticeShell(CTheme& theme, QSize screen) {
    CMainWindow* main = Shell(theme, screen);
    main->ShowLog(SampleLog(LogState::Open, RunKind::Practice));
    main->ShowReplay(true);
    main->Replay().ShowPage({true, "x4", 0.31, "00:12:34", "01:02:10", {0.1, 0.4, 0.8}});
    main->Strip().Post(TiltAlarm());
    return main;
}

QWidget* MakeWatch(CTheme& theme, QSize screen) {
    CMainWindow* main = Shell(theme, screen);
    main->SetWatch(true);
    main->resize(screen);
    return main;
}

QWidget* MakeEmptyShell(CTheme& theme, QSize screen) {
    auto* main = new CMainWindow(theme);
    main->resize(screen);
    main->ShowStart(false);
    main->ShowLog(SampleLog(LogState::Idle, RunKind::Live));
    return main;
}

QWidget* MakeStart(CTheme& theme, QSize screen) {
    auto* main = new CMainWindow(theme);
    main->resize(screen);
    main->Start().ShowSessions({{"/data/HE-612.qor", "HE-612 profiling", "yesterday 18:02"},
                                {"/data/Helgoland.qor", "Helgoland Reede", "2025-11-02"}},
                               "HE-612 profiling");
    return main;
}

QWidget* MakeBanners(CTheme& theme, QSize) {
    auto* all = new QWidget;
    auto* column = new QVBoxLayout(all);
    const auto add = [&](LogPage page) {
        auto* banner = new CBanner(theme);
        banner->ShowPage(page);
        column->addWidget(banner);
    };
    add(SampleLog(LogState::Idle, RunKind::Live));
    LogPage nagging = SampleLog(LogState::Idle, RunKind::Live);
    nagging.nagging = true;
    add(nagging);
    LogPage low = SampleLog(LogState::Open, RunKind::Live);
    low.left = "5 h left";
    low.leftSign = Sign::Warning;
    add(low);
    LogPage full = SampleLog(LogState::Open, RunKind::Replay);
    full.left = "29 min left";
    full.leftSign = Sign::Alarm;
    add(full);
    add(SampleLog(LogState::Open, RunKind::Practice));
    add(SampleLog(LogState::Between, RunKind::Live));
    add(SampleLog(LogState::Failed, RunKind::Live));
    all->resize(900, 760);
    return all;
}

QWidget* MakeGrids(CTheme& theme, QSize) {
    auto* all = new QWidget;
    auto* row = new QHBoxLayout(all);
    auto* own = new CPageGrid(theme);
    own->ShowPage(SampleAncillary());
    row->addWidget(own);
    auto* table = new CPageGrid(theme);
    table->ShowPage(SampleStatus());
    table->selectRow(1);
    row->addWidget(table, 1);
    all->resize(1100, 320);
    return all;
}

QWidget* MakePlots(CTheme& theme, QSize) {
    auto* all = new QWidget;
    auto* grid = new QGridLayout(all);
    int place = 0;
    for (const PlotPage& page : {SampleSpectrum(), SampleWavelengths(), SampleSeries(),
                                 SampleProfile(), SampleTrack(), SampleComparison()}) {
        auto* plot = new CPlotWidget(theme);
        plot->ShowPage(page);
        grid->addWidget(plot, place / 3, place % 3);
        ++place;
    }
    all->resize(1600, 900);
    return all;
}

QWidget* UsePlots(QWidget* all) {
    const auto plots = all->findChildren<CPlotWidget*>();
    plots[0]->SetCursor(CPlotWidget::CursorMode::On);
    plots[1]->ToggleCurve(555);
    plots[2]->SetCursor(CPlotWidget::CursorMode::Difference);
    plots[2]->MoveCursor(QPoint(plots[2]->width() / 3, 80));
    plots[4]->Zoom(0.5);
    plots[3]->setFocus();
    return all;
}

QWidget* MakeForm(CTheme& theme, QSize) {
    auto* form = new CForm(theme, QStringLiteral("Add port"), nullptr);
    form->AddHeading(QStringLiteral("Port"));
    form->AddChoice(QStringLiteral("Port"), {QStringLiteral("FTDI A50285BI ttyUSB0, free")}, 0);
    form->AddText(QStringLiteral("Speed"), QStringLiteral("57600x"),
                  [] { return std::string("Give a speed such as 9600, 57600 or 115200."); });
    form->AddSwitch(QStringLiteral("try again when lost"), true);
    form->AddHeading(QStringLiteral("First log"));
    form->AddText(QStringLiteral("Station"), QStringLiteral("S4"), [] { return std::string(); });
    form->AddNote(
        QStringLiteral("First log: (TIME STAMP) in logs, station S4. The form shows the next "
                       "file and the station, so the first log begins as shown."));
    form->SetOkText(QStringLiteral("Add and connect"));
    form->Check();
    form->setAttribute(Qt::WA_DeleteOnClose, false);
    return form;
}

QWidget* MakeBox(CTheme& theme, QSize) {
    auto* parent = new QWidget;
    parent->resize(200, 100);
    auto* boxes = new CBoxes(theme, parent);
    boxes->Ask(
        QStringLiteral("The log file \"2026-325-093015.raw\"\nalready exists. Do you want to "
                       "replace this file on the next log?"),
        [](bool) {});
    return boxes->Current();
}

QWidget* MakeControls(CTheme& theme, QSize) {
    auto* all = new QWidget;
    auto* grid = new QGridLayout(all);
    auto* group = new QGroupBox(QStringLiteral("Warning Ranges"));
    auto* column = new QVBoxLayout(group);
    for (const bool on : {true, false}) {
        auto* check = new QCheckBox(QStringLiteral("Enable"));
        check->setChecked(on);
        column->addWidget(check);
        auto* radio = new QRadioButton(QStringLiteral("Raw Counts"));
        radio->setChecked(on);
        column->addWidget(radio);
    }
    auto* edit = new QLineEdit(QStringLiteral("45.00"));
    column->addWidget(edit);
    auto* spin = new QSpinBox;
    column->addWidget(spin);
    auto* combo = new QComboBox;
    combo->addItems({QStringLiteral("8N1"), QStringLiteral("7E1")});
    column->addWidget(combo);
    grid->addWidget(group, 0, 0, 2, 1);
    auto* right = new QVBoxLayout;
    for (const bool enabled : {true, false}) {
        auto* button =
            new QPushButton(ThemeIcon(theme, QStringLiteral("connect")), QStringLiteral("Connect"));
        button->setEnabled(enabled);
        right->addWidget(button);
        auto* slider = new QSlider(Qt::Horizontal);
        slider->setValue(40);
        slider->setEnabled(enabled);
        right->addWidget(slider);
        auto* field = new QLineEdit(QStringLiteral("text"));
        field->setEnabled(enabled);
        right->addWidget(field);
    }
    auto* standard = new QPushButton(QStringLiteral("Default"));
    standard->setDefault(true);
    right->addWidget(standard);
    auto* progress = new QProgressBar;
    progress->setValue(40);
    right->addWidget(progress);
    grid->addLayout(right, 0, 1);
    auto* tabs = new QTabWidget;
    auto* text = new QPlainTextEdit(QStringLiteral("09:41:07  CTD at the surface\n").repeated(30));
    tabs->addTab(text, SignIcon(theme, Sign::Alarm), QStringLiteral("Comments"));
    tabs->addTab(new QWidget, QStringLiteral("Log"));
    grid->addWidget(tabs, 1, 1);
    auto* tree = new CSessionTree(theme);
    tree->ShowPage(SampleTree());
    grid->addWidget(tree, 0, 2, 2, 1);
    all->resize(1000, 620);
    edit->setFocus();
    return all;
}

QWidget* MakeMenu(CTheme& theme, QSize) {
    auto* plot = new CPlotWidget(theme);
    plot->ShowPage(SampleSpectrum());
    plot->resize(300, 200);
    plot->show();
    auto* menu = new QMenu;
    FillMenu(*menu, plot->PlotMenu());
    menu->addSeparator();
    menu->addAction(ThemeIcon(theme, QStringLiteral("connect")), QStringLiteral("&Connect"),
                    QKeySequence(QStringLiteral("Ctrl+K")), menu, [] {});
    return menu;
}

QWidget* ChooseInMenu(QWidget* widget) {
    auto* menu = static_cast<QMenu*>(widget);
    menu->setActiveAction(menu->actions()[2]);
    return menu;
}

QWidget* MakeSessionMenu(CTheme& theme, QSize screen) {
    auto* main = new CMainWindow(theme);
    main->resize(screen);
    main->show();
    QMenu* menu = main->findChild<QMenuBar*>()->actions()[4]->menu();
    menu->popup(main->mapToGlobal(QPoint(300, 30)));
    return menu;
}

QWidget* MakeTip(CTheme&, QSize) {
    auto* parent = new QWidget;
    parent->resize(400, 100);
    parent->show();
    QToolTip::showText(parent->mapToGlobal(QPoint(20, 20)),
                       QStringLiteral("Take the present pressure as that of the surface. (Ctrl+T)"),
                       parent);
    return parent;
}

QWidget* FindTip(QWidget* parent) {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->inherits("QTipLabel"))
            return window;
    return parent;
}

QWidget* MakeIcons(CTheme& theme, QSize) {
    auto* all = new QWidget;
    auto* grid = new QGridLayout(all);
    int place = 0;
    for (const char* name : IconNames) {
        auto* picture = new QLabel;
        const QIcon icon = ThemeIcon(theme, QString::fromLatin1(name));
        picture->setPixmap(icon.pixmap(48, 48));
        auto* small = new QLabel;
        small->setPixmap(icon.pixmap(20, 20));
        grid->addWidget(picture, place / 9 * 2, place % 9 * 2);
        grid->addWidget(small, place / 9 * 2, place % 9 * 2 + 1);
        grid->addWidget(new QLabel(QString::fromLatin1(name)), place / 9 * 2 + 1, place % 9 * 2, 1,
                        2);
        ++place;
    }
    auto* signs = new QHBoxLayout;
    for (int i = 1; i < SignCount; ++i) {
        signs->addWidget(new CSignLabel(theme, static_cast<Sign>(i), 20));
        signs->addWidget(new CSignLabel(theme, static_cast<Sign>(i), 40));
        signs->addWidget(new QLabel(SignName(static_cast<Sign>(i))));
    }
    grid->addLayout(signs, 100, 0, 1, 18);
    return all;
}

QWidget* MakeFiles(CTheme& theme, QSize) {
    QFileDialog* dialog = AskOpenFiles(
        theme, nullptr, QStringLiteral("Open a session"),
        {QStringLiteral("Sessions (*.qor)"), QStringLiteral("All files (*)")}, false, {});
    dialog->setAttribute(Qt::WA_DeleteOnClose, false);
    dialog->resize(760, 480);
    return dialog;
}

QWidget* MakeKeys(CTheme& theme, QSize) {
    OpenKeys(theme, nullptr);
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->findChild<CPageGrid*>()) {
            window->setAttribute(Qt::WA_DeleteOnClose, false);
            return window;
        }
    return new QWidget;
}

QWidget* MakeHistory(CTheme& theme, QSize) {
    auto* strip = new CMessageStrip(theme);
    strip->Post(LostPort());
    strip->Post(TiltAlarm());
    strip->Post(
        {"tare", Sign::None, "09:43:00", "Tare 0.42 dbar taken from profiler.", {{"Undo", {}}}});
    strip->resize(1000, strip->sizeHint().height());
    return strip;
}

QWidget* MakeStates(CTheme& theme, QSize) {
    auto* all = new QWidget;
    auto* row = new QHBoxLayout(all);
    const auto add = [&](const char* name, PageState state, const char* sentence,
                         const char* remedy, Sign sign, int width) {
        PlotPage page = SampleSpectrum();
        page.head = {state, sign, sign == Sign::Stale ? "ED 443 nm 81.2" : "", sentence, remedy};
        if (state != PageState::Live)
            page.curves.clear();
        CDisplayWindow* window = PlotWindow(theme, name, page);
        window->setFixedWidth(width);
        row->addWidget(window);
        return window;
    };
    add("empty", PageState::Empty, "No instrument with an optical series.", "Add instrument",
        Sign::None, 340);
    add("waiting", PageState::Waiting, "waiting for ed", "", Sign::Waiting, 340);
    add("gone", PageState::Gone, "ed was removed.", "Close", Sign::Off, 260);
    auto* paused = add("paused", PageState::Live, "", "", Sign::Stale, 380);
    paused->findChild<CPlotWidget*>()->SetPaused(true);
    all->resize(1400, 340);
    return all;
}

} // namespace

void ClearStage() {
    std::vector<QPointer<QWidget>> windows;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (!window->parent())
            windows.emplace_back(window);
    for (const QPointer<QWidget>& window : windows)
        delete window.data();
}

const std::vector<Scene> Scenes{
    {"start", MakeStart},
    {"shell", MakeShell, ArrangeShell},
    {"practice", MakePracticeShell, ArrangeShell},
    {"watch", MakeWatch, ArrangeShell},
    {"nothing", MakeEmptyShell},
    {"banners", MakeBanners},
    {"strip", MakeHistory},
    {"grids", MakeGrids},
    {"plots", MakePlots, UsePlots},
    {"states", MakeStates},
    {"form", MakeForm},
    {"box", MakeBox},
    {"controls", MakeControls},
    {"menu", MakeMenu, ChooseInMenu},
    {"viewmenu", MakeSessionMenu},
    {"tip", MakeTip, FindTip},
    {"icons", MakeIcons},
    {"files", MakeFiles},
    {"keys", MakeKeys},
};

} // namespace qor
