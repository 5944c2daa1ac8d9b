// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frame/StartPage.h"

#include "app/ShownText.h"
#include "app/dialogs/Form.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace qor {

namespace {

constexpr int ColumnWidth = 620, MostRecent = 8;

} // namespace

CStartPage::CStartPage(const CTheme& theme, const CActions& actions, QWidget* parent)
    : QWidget(parent), Theme(theme), Actions(actions), Sessions(new QVBoxLayout),
      Title(new QLabel(QStringLiteral("QorView"))) {
    auto* column = new QWidget;
    auto* whole = new QVBoxLayout(column);
    whole->setSpacing(size::Between);
    whole->addWidget(Title);
    whole->addWidget(
        MakeButton(Do::Practice, tr("Practice"),
                   tr("Simulated instruments, no hardware needed. Curves move at once."), true));
    auto* grid = new QGridLayout;
    grid->setSpacing(size::Between);
    grid->addWidget(
        MakeButton(Do::NewSession, tr("New session"), tr("Port, instruments, log."), false), 0, 0);
    grid->addWidget(MakeButton(Do::FindInstruments, tr("Find instruments"),
                               tr("Listen on the free ports."), false),
                    0, 1);
    grid->addWidget(MakeButton(Do::OpenSession, tr("Open a session"), tr("A kept session."), false),
                    1, 0);
    grid->addWidget(MakeButton(Do::ReplayLog, tr("Replay a raw log"),
                               tr("With pause, speed and seeking."), false),
                    1, 1);
    whole->addLayout(grid);
    whole->addSpacing(size::Margin);
    whole->addLayout(Sessions);
    auto* drop =
        new QLabel(tr("Files can be dropped anywhere: definitions, packages, sessions, raw logs."));
    drop->setWordWrap(true);
    whole->addSpacing(size::Margin);
    whole->addWidget(drop);
    whole->addStretch(1);
    column->setMaximumWidth(Theme.Px(ColumnWidth));

    auto* scroll = new QScrollArea;
    auto* middle = new QWidget;
    auto* sides = new QHBoxLayout(middle);
    sides->addStretch(1);
    sides->addWidget(column, 100);
    sides->addStretch(1);
    scroll->setWidget(middle);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(scroll);
    connect(&Theme, &CTheme::Changed, this, [this, column] {
        column->setMaximumWidth(Theme.Px(ColumnWidth));
        TakeTheme();
    });
    TakeTheme();
}

void CStartPage::TakeTheme() {
    QFont font = Theme.Font(FontRole::Banner);
    font.setPixelSize(Theme.Px(32));
    Title->setFont(font);
    ShowSessions(Recent, Unfinished);
}

QWidget* CStartPage::MakeButton(Do action, const QString& text, const QString& below, bool large) {
    QAction* made = Actions[action];
    auto* place = new QWidget;
    auto* row = new QVBoxLayout(place);
    row->setContentsMargins(0, 0, 0, size::Grid);
    row->setSpacing(2);
    auto* button = new QPushButton(made->icon(), text);
    button->setToolTip(made->toolTip());
    button->setAccessibleDescription(below);
    button->setDefault(large);
    button->setAutoDefault(true); // Enter presses the one that has the focus
    if (large)
        setFocusProxy(button);
    connect(button, &QPushButton::clicked, made, &QAction::trigger);
    connect(made, &QAction::changed, button, [button, made] {
        button->setEnabled(made->isEnabled());
        button->setToolTip(made->toolTip());
    });
    const auto take = [this, button, large] {
        QFont font = Theme.Font(large ? FontRole::Tool : FontRole::Text);
        font.setBold(large);
        button->setFont(font);
        button->setMinimumHeight(Theme.Px(large ? 56 : size::LargeTarget));
        button->setIconSize(QSize(Theme.Px(large ? 32 : 24), Theme.Px(large ? 32 : 24)));
    };
    connect(&Theme, &CTheme::Changed, button, take);
    take();
    row->addWidget(button);
    auto* line = new QLabel(below);
    line->setWordWrap(true);
    row->addWidget(line);
    return place;
}

void CStartPage::ShowSessions(const std::vector<ShownSession>& recent,
                              const std::string& unfinished) {
    if (&recent != &Recent)
        Recent = recent;
    Unfinished = unfinished;
    while (QLayoutItem* item = Sessions->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    if (!Unfinished.empty()) {
        auto* place = new QWidget;
        auto* row = new QHBoxLayout(place);
        row->setContentsMargins(0, 0, 0, size::Between);
        row->addWidget(new CSignLabel(Theme, Sign::Warning, 22));
        auto* text = new QLabel(tr("%1 ended unexpectedly.").arg(Shown(Unfinished)));
        row->addWidget(text, 1);
        auto* restore = new QPushButton(tr("Restore"));
        restore->setAutoDefault(true);
        connect(restore, &QPushButton::clicked, this, &CStartPage::RestoreAsked);
        row->addWidget(restore);
        Sessions->addWidget(place);
    }
    auto* heading = new QLabel(Recent.empty() ? tr("No session was open here before.")
                                              : tr("Sessions of late"));
    QFont font = Theme.Font(FontRole::Text);
    font.setBold(!Recent.empty());
    heading->setFont(font);
    Sessions->addWidget(heading);
    for (std::size_t i = 0; i < Recent.size() && i < MostRecent; ++i) {
        auto* button =
            new QPushButton(Shown(Recent[i].name) + QStringLiteral("    ") + Shown(Recent[i].when));
        button->setFlat(true);
        button->setAutoDefault(true);
        button->setToolTip(Shown(Recent[i].path));
        connect(button, &QPushButton::clicked, this,
                [this, path = Shown(Recent[i].path)] { emit OpenAsked(path); });
        Sessions->addWidget(button, 0, Qt::AlignLeft);
    }
}

} // namespace qor
