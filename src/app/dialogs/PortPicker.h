// SPDX-License-Identifier: GPL-3.0-or-later
//
// The list of ports in a form: one row a port with what it is called and whether it can be had, and
// a row for a port that is not in the list. Rows stay as they are while only states change.
#pragma once

#include "app/look/Theme.h"
#include "views/PortList.h"

#include <QWidget>

#include <functional>
#include <string>
#include <vector>

class QButtonGroup;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace qor {

class CSignLabel;

class CPortPicker : public QWidget {
    Q_OBJECT

  public:
    /// `lastLine` gives what is said of a port's last use.
    CPortPicker(const CTheme& theme, std::function<std::string(const std::string&)> lastLine);

    /// Chooses the only one that is free, where nothing is chosen yet.
    void SetPorts(std::vector<PortFound> ports);
    /// The name for the session; empty: none is chosen.
    std::string Name() const;
    /// The chosen port of the list; null for one that is not in it.
    const PortFound* Chosen() const;

  signals:
    void Changed();

  private:
    struct Row {
        QRadioButton* button;
        CSignLabel* sign;
        QLabel* state;
        QPushButton* copy;
    };
    bool HasFocusIn() const;
    void Rebuild();
    void AddRow(int place);
    void AddOther();
    void AddWhyNot();
    void ShowStates();
    void ShowWhyNot();
    void Choose(const std::string& name);
    bool HasSameRows(const std::vector<PortFound>& ports) const;

    const CTheme& Theme;
    std::function<std::string(const std::string&)> LastLine;
    std::vector<PortFound> Ports;
    std::string ChosenName; ///< of a port of the list
    bool OtherChosen = false;
    std::vector<Row> Rows;
    QGridLayout* Grid;
    QButtonGroup* Group;
    QLabel* Nothing;
    QRadioButton* Other;
    QLineEdit* OtherName;
    CSignLabel* WhySign; ///< why the chosen one cannot be connected
    QLabel* Why;
};

} // namespace qor
