// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/dialogs/PortPicker.h"

#include "app/ShownText.h"
#include "app/dialogs/Form.h"

#include <QButtonGroup>
#include <QClipboard>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include <algorithm>
#include <utility>

namespace qor {

namespace {

constexpr int PortSignSize = 16;
constexpr int OtherRow = 500; ///< below all ports

} // namespace

CPortPicker::CPortPicker(const CTheme& theme,
                         std::function<std::string(const std::string&)> lastLine)
    : Theme(theme), LastLine(std::move(lastLine)), Grid(new QGridLayout(this)),
      Group(new QButtonGroup(this)),
      Nothing(new QLabel(tr("No serial port is found. Plug in an adapter, or name a port."))) {
    Grid->setContentsMargins(0, 0, 0, 0);
    Grid->setHorizontalSpacing(Theme.Px(size::Between));
    Grid->setVerticalSpacing(Theme.Px(size::Grid));
    Grid->setColumnStretch(2, 1);
    Nothing->setWordWrap(true);
    Grid->addWidget(Nothing, 0, 0, 1, 4);
    Nothing->setText(tr("Looking for ports."));
    AddOther();
    AddWhyNot();
    setFocusProxy(Other);
    connect(this, &CPortPicker::Changed, this, &CPortPicker::ShowWhyNot);
}

void CPortPicker::AddWhyNot() {
    auto* line = new QHBoxLayout;
    line->setSpacing(Theme.Px(size::Grid));
    WhySign = new CSignLabel(Theme, Sign::Warning, PortSignSize);
    Why = new QLabel;
    Why->setTextFormat(Qt::PlainText);
    Why->setWordWrap(true);
    Why->setMinimumHeight(Why->fontMetrics().height());
    line->addWidget(WhySign, 0, Qt::AlignTop);
    line->addWidget(Why, 1);
    // The line keeps its place, so that nothing moves while one port after the other is chosen.
    QSizePolicy keeps = WhySign->sizePolicy();
    keeps.setRetainSizeWhenHidden(true);
    WhySign->setSizePolicy(keeps);
    WhySign->hide();
    Grid->addLayout(line, OtherRow + 1, 0, 1, 4);
}

/// A port that the session has is the form's to name.
void CPortPicker::ShowWhyNot() {
    const PortFound* chosen = Chosen();
    const bool needed = chosen && !chosen->inSession && !WhyNot(*chosen).empty();
    Why->setText(needed ? ShownInLanguage(WhyNot(*chosen)) : QString());
    WhySign->setVisible(needed);
}

void CPortPicker::AddOther() {
    Other = new QRadioButton(tr("&Other"));
    Other->setMinimumHeight(Theme.Target());
    OtherName = new QLineEdit;
    OtherName->setAccessibleName(tr("Name of another port"));
    Group->addButton(Other);
    Grid->addWidget(Other, OtherRow, 0);
    Grid->addWidget(OtherName, OtherRow, 1, 1, 3);
    connect(Other, &QRadioButton::toggled, this, [this](bool on) {
        OtherChosen = on;
        if (on)
            emit Changed();
    });
    connect(OtherName, &QLineEdit::textEdited, this, [this] {
        Other->setChecked(true);
        emit Changed();
    });
}

bool CPortPicker::HasSameRows(const std::vector<PortFound>& ports) const {
    return std::ranges::equal(ports, Ports, [](const PortFound& a, const PortFound& b) {
        return a.name == b.name && a.device == b.device && TitleOf(a) == TitleOf(b);
    });
}

void CPortPicker::SetPorts(std::vector<PortFound> ports) {
    Nothing->setText(tr("No serial port is found. Plug in an adapter, or name a port."));
    // A port that goes while it is chosen stays in sight.
    if (const PortFound* chosen = Chosen();
        chosen && std::ranges::find(ports, chosen->name, &PortFound::name) == ports.end()) {
        ports.push_back(*chosen);
        ports.back().access = {.state = PortState::Missing};
    }
    const bool same = HasSameRows(ports);
    Ports = std::move(ports);
    if (!same)
        Rebuild();
    ShowStates();
    const auto only = OnlyFree(Ports);
    if (ChosenName.empty() && !OtherChosen && only) {
        Rows[*only].button->setChecked(true);
        if (HasFocusIn())
            Rows[*only].button->setFocus();
    }
    emit Changed();
}

/// The hand is at the list and has chosen nothing else.
bool CPortPicker::HasFocusIn() const {
    const QWidget* focus = window()->focusWidget();
    return (focus == Other && !OtherChosen) ||
           std::ranges::any_of(Rows, [focus](const Row& row) { return focus == row.button; });
}

void CPortPicker::Rebuild() {
    const bool focused = HasFocusIn();
    for (const Row& row : std::exchange(Rows, {})) {
        row.button->disconnect(this);
        for (QWidget* widget : {static_cast<QWidget*>(row.button), static_cast<QWidget*>(row.sign),
                                static_cast<QWidget*>(row.state), static_cast<QWidget*>(row.copy)})
            delete widget;
    }
    Nothing->setVisible(Ports.empty());
    for (int place = 0; place < static_cast<int>(Ports.size()); ++place)
        AddRow(place);
    if (focused && !Rows.empty())
        Rows.front().button->setFocus();
    for (std::size_t i = 0; i < Rows.size(); ++i)
        if (Ports[i].name == ChosenName) {
            Rows[i].button->setChecked(true);
            if (focused)
                Rows[i].button->setFocus();
        }
}

void CPortPicker::AddRow(int place) {
    const PortFound& port = Ports[static_cast<std::size_t>(place)];
    Row row{};
    row.button = new QRadioButton(Shown(TitleOf(port)) + QStringLiteral("  ") + Shown(port.device));
    row.button->setMinimumHeight(Theme.Target());
    row.button->setToolTip(Shown(port.name));
    row.sign = new CSignLabel(Theme, SignOf(port), PortSignSize);
    row.state = new QLabel;
    row.state->setTextFormat(Qt::PlainText);
    row.copy = new QPushButton(tr("Copy command"));
    row.copy->setAutoDefault(false);
    Group->addButton(row.button);
    Grid->addWidget(row.button, place + 1, 0);
    Grid->addWidget(row.sign, place + 1, 1);
    Grid->addWidget(row.state, place + 1, 2);
    Grid->addWidget(row.copy, place + 1, 3);
    connect(row.button, &QRadioButton::toggled, this, [this, name = port.name](bool on) {
        if (on)
            Choose(name);
    });
    connect(row.copy, &QPushButton::clicked, this, [this, name = port.name] {
        const auto found = std::ranges::find(Ports, name, &PortFound::name);
        if (found != Ports.end())
            QGuiApplication::clipboard()->setText(Shown(RemedyCommand(*found)));
    });
    row.button->setVisible(true); // so that it can have the focus at once
    Rows.push_back(row);
}

void CPortPicker::ShowStates() {
    for (std::size_t i = 0; i < Rows.size(); ++i) {
        const Row& row = Rows[i];
        QString state = ShownInLanguage(StateOf(Ports[i]));
        if (const std::string last = LastLine(Ports[i].name); !last.empty())
            state = tr("%1, last time %2").arg(state, Shown(last));
        row.sign->SetSign(SignOf(Ports[i]));
        row.state->setText(state);
        row.button->setAccessibleDescription(state);
        const std::string command = RemedyCommand(Ports[i]);
        row.copy->setVisible(!command.empty());
        row.copy->setToolTip(Shown(command));
    }
}

void CPortPicker::Choose(const std::string& name) {
    if (std::exchange(ChosenName, name) != name || !OtherChosen)
        emit Changed();
}

const PortFound* CPortPicker::Chosen() const {
    const auto found = std::ranges::find(Ports, ChosenName, &PortFound::name);
    return OtherChosen || ChosenName.empty() || found == Ports.end() ? nullptr : &*found;
}

std::string CPortPicker::Name() const {
    if (OtherChosen)
        return OtherName->text().toStdString();
    const PortFound* chosen = Chosen();
    return chosen ? chosen->name : std::string();
}

} // namespace qor
