// SPDX-License-Identifier: GPL-3.0-or-later
//
// What stands above the charts of the reality check: the three switches, and the series selector
// and the limit field of the display that leads. What they hold and accept is the check's.
// User-interface thread.
#pragma once

#include "views/RealityCheck.h"

#include <QWidget>

#include <array>

class QCheckBox;
class QComboBox;
class QLineEdit;

namespace qor {

class CRealityCheckBar : public QWidget {
    Q_OBJECT

  public:
    /// The check outlives the bar.
    explicit CRealityCheckBar(COSRCViewDlg& check, QWidget* parent = nullptr);

    /// Shows the check's state; a field that is being edited is left alone.
    void Refresh();

  signals:
    /// The operator changed the check.
    void Changed();

  private:
    void TakeLimit();

    COSRCViewDlg& Check;
    std::array<QCheckBox*, 3> Switches;
    QComboBox* Series;
    QLineEdit* Limit;
};

} // namespace qor
