// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frame/ReplayBar.h"

#include "app/ShownText.h"
#include "app/look/Icons.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QSignalBlocker>
#include <QToolButton>

#include <cmath>

namespace qor {

namespace {

constexpr int SeekSteps = 10000;

} // namespace

CSeekSlider::CSeekSlider(const CTheme& theme, QWidget* parent)
    : QSlider(Qt::Horizontal, parent), Theme(theme) {
    setRange(0, SeekSteps);
    setPageStep(SeekSteps / 20);
    setSingleStep(SeekSteps / 200);
    setMinimumWidth(120);
}

void CSeekSlider::SetMarks(std::vector<double> marks) {
    if (marks == Marks)
        return;
    Marks = std::move(marks);
    update();
}

void CSeekSlider::paintEvent(QPaintEvent* event) {
    QSlider::paintEvent(event);
    QPainter painter(this);
    painter.setPen(QPen(QColor(Theme.Colours().text), 2));
    for (const double mark : Marks) {
        const int x = static_cast<int>(std::lround(mark * (width() - 1)));
        painter.drawLine(x, 0, x, height() / 4);
    }
}

CReplayBar::CReplayBar(const CTheme& theme, const QStringList& speeds, QWidget* parent)
    : QWidget(parent), Theme(theme), Restart(new QToolButton), Play(new QToolButton),
      Speed(new QComboBox), Seek(new CSeekSlider(theme)), Times(new QLabel) {
    Restart->setIcon(ThemeIcon(Theme, QStringLiteral("rewind")));
    Restart->setToolTip(tr("Back to the start."));
    Restart->setAccessibleName(Restart->toolTip());
    Play->setIcon(ThemeIcon(Theme, QStringLiteral("play")));
    Speed->addItems(speeds);
    Speed->setToolTip(tr("How fast the replay runs."));
    Speed->setAccessibleName(tr("Speed"));
    Seek->setAccessibleName(tr("Place in the replay"));
    Times->setFont(Theme.Font(FontRole::Fixed));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(size::Between, size::Grid, size::Between, size::Grid);
    row->addWidget(Restart);
    row->addWidget(Play);
    row->addWidget(Speed);
    row->addWidget(Seek, 1);
    row->addWidget(Times);
    connect(Restart, &QToolButton::clicked, this, &CReplayBar::RestartPressed);
    connect(Play, &QToolButton::clicked, this, &CReplayBar::PlayPressed);
    connect(Speed, &QComboBox::activated, this, &CReplayBar::SpeedChosen);
    // While the hand is on it the place is only looked for; it is gone to when the hand lets go.
    connect(Seek, &QSlider::sliderReleased, this,
            [this] { emit SeekAsked(static_cast<double>(Seek->value()) / SeekSteps); });
    connect(Seek, &QSlider::actionTriggered, this, [this](int action) {
        if (action != QAbstractSlider::SliderMove)
            emit SeekAsked(static_cast<double>(Seek->sliderPosition()) / SeekSteps);
    });
    connect(&Theme, &CTheme::Changed, this,
            [this] { Times->setFont(Theme.Font(FontRole::Fixed)); });
    ShowPage({});
}

void CReplayBar::ShowPage(const ReplayPage& page) {
    Play->setIcon(
        ThemeIcon(Theme, page.playing ? QStringLiteral("pause") : QStringLiteral("play")));
    Play->setToolTip(page.playing ? tr("Hold the replay (Ctrl+Space).")
                                  : tr("Play on (Ctrl+Space)."));
    Play->setAccessibleName(Play->toolTip());
    if (const int speed = Speed->findText(Shown(page.speed)); speed >= 0)
        Speed->setCurrentIndex(speed);
    Seek->SetMarks(page.marks);
    if (!Seek->isSliderDown()) {
        const QSignalBlocker quiet(Seek);
        Seek->setValue(static_cast<int>(std::lround(page.place * SeekSteps)));
    }
    Times->setText(Shown(page.elapsed) + QStringLiteral(" / ") + Shown(page.length));
}

} // namespace qor
