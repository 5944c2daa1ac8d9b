// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/RealityCheckBar.h"

#include "app/ShownText.h"
#include "app/look/Tokens.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>

namespace qor {

namespace {

constexpr int LimitWidth = 90;

struct SwitchText {
    const char* text;
    const char* name; ///< for a screen reader
};
constexpr SwitchText SwitchTexts[] = {
    {QT_TRANSLATE_NOOP("CRealityCheckBar", "REF"),
     QT_TRANSLATE_NOOP("CRealityCheckBar", "Show the reference spectrum")},
    {QT_TRANSLATE_NOOP("CRealityCheckBar", "DUT"),
     QT_TRANSLATE_NOOP("CRealityCheckBar", "Show the spectrum of the device under test")},
    {QT_TRANSLATE_NOOP("CRealityCheckBar", "DUT/REF"),
     QT_TRANSLATE_NOOP("CRealityCheckBar", "Show the device under test relative to the reference")},
};

} // namespace

CRealityCheckBar::CRealityCheckBar(COSRCViewDlg& check, QWidget* parent)
    : QWidget(parent), Check(check), Switches(), Series(new QComboBox), Limit(new QLineEdit) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(size::Between, size::Grid, size::Between, size::Grid);
    row->setSpacing(size::Between);
    for (std::size_t i = 0; i < Switches.size(); ++i) {
        Switches[i] = new QCheckBox(tr(SwitchTexts[i].text));
        Switches[i]->setAccessibleName(tr(SwitchTexts[i].name));
        Switches[i]->setToolTip(tr(SwitchTexts[i].name));
        row->addWidget(Switches[i]);
        connect(Switches[i], &QCheckBox::toggled, this, [this, i](bool on) {
            Check.Enable(static_cast<OsrcDisplay>(i), on);
            emit Changed();
        });
    }
    Series->setAccessibleName(tr("Series of the display that leads"));
    Series->setToolTip(tr("Series of the display that leads"));
    Series->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    Series->setMinimumWidth(LimitWidth);
    row->addWidget(Series, 1);
    auto* label = new QLabel(tr("Limit"));
    label->setBuddy(Limit);
    row->addWidget(label);
    Limit->setAccessibleName(tr("Upper limit of the display that leads"));
    Limit->setToolTip(tr("Upper limit of the display that leads"));
    Limit->setFixedWidth(LimitWidth);
    row->addWidget(Limit);
    connect(Series, &QComboBox::activated, this, [this](int index) {
        Check.Select(index);
        emit Changed();
    });
    connect(Limit, &QLineEdit::editingFinished, this, &CRealityCheckBar::TakeLimit);
    Refresh();
}

void CRealityCheckBar::TakeLimit() {
    const std::string typed = Limit->text().toStdString();
    if (typed == Check.LimitText())
        return;
    // What is no number is put back.
    const bool taken = Check.SetLimit(typed);
    Limit->setText(Shown(Check.LimitText()));
    if (taken)
        emit Changed();
}

void CRealityCheckBar::Refresh() {
    for (std::size_t i = 0; i < Switches.size(); ++i) {
        const QSignalBlocker quiet(Switches[i]);
        Switches[i]->setChecked(Check.Settings.Enabled(static_cast<OsrcDisplay>(i)));
    }
    QStringList entries;
    for (const std::string& entry : Check.SelectorEntries())
        entries.append(Shown(entry));
    QStringList shown;
    for (int i = 0; i < Series->count(); ++i)
        shown.append(Series->itemText(i));
    if (entries != shown) {
        Series->clear();
        Series->addItems(entries);
    }
    if (Series->currentIndex() != Check.Selection())
        Series->setCurrentIndex(entries.isEmpty() ? -1 : Check.Selection());
    Series->setEnabled(!entries.isEmpty());
    Limit->setEnabled(Check.Settings.Leading().has_value());
    if (const QString text = Shown(Check.LimitText()); !Limit->hasFocus() && Limit->text() != text)
        Limit->setText(text);
}

} // namespace qor
