// SPDX-License-Identifier: GPL-3.0-or-later
//
// The frame of every dialog: labelled fields below each other, a fault beside the field that has
// it, and an OK that can be pressed only when it would work. It checks nothing itself: each field
// brings a function that names its fault. Never modal.
#pragma once

#include "app/look/Theme.h"
#include "views/PageHead.h"

#include <QDialog>

#include <functional>
#include <string>
#include <vector>

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace qor {

class CForm : public QDialog {
    Q_OBJECT

  public:
    /// What is wrong with a field now; empty: nothing.
    using FaultOf = std::function<std::string()>;

    CForm(const CTheme& theme, const QString& title, QWidget* parent);

    QLineEdit* AddText(const QString& label, const QString& value, FaultOf fault = {});
    QComboBox* AddChoice(const QString& label, const QStringList& entries, int chosen,
                         FaultOf fault = {});
    QCheckBox* AddSwitch(const QString& text, bool on);
    /// A field of the caller's making; the caller calls Check when it changes.
    void AddField(const QString& label, QWidget* field, FaultOf fault = {});
    void AddHeading(const QString& text);
    /// A sentence across the form.
    QLabel* AddNote(const QString& text);
    /// A widget of the caller's making across the form.
    void AddWide(QWidget* widget);
    /// Something small beside a field that was added: a button, a few words.
    void AddBeside(QWidget* field, QWidget* beside);

    void SetOkText(const QString& text);
    QPushButton* OkButton() const { return Ok; }
    QPushButton* AddButton(const QString& text);
    QPushButton* CancelButton() const;

    /// What OK does; false keeps the form open. Without it OK closes the form.
    void SetAction(std::function<bool()> action) { Action = std::move(action); }
    /// What went wrong with OK, above the buttons, until the next change of a field.
    void ShowFault(const QString& sentence);

    /// Asks every field for its fault; done by itself after each change of a field that the form
    /// made.
    void Check();
    bool IsValid() const;

    /// Shows the form beside what else is open, and has it delete itself when it closes.
    void Open();

    void accept() override;
    /// Once: a form that is closed and not deleted yet stays closed.
    void done(int result) override;
    /// Fields in the order in which they are seen, then the buttons.
    void OrderTabs();

  signals:
    /// Every field was asked for its fault.
    void Checked(bool valid);

  private:
    struct Row {
        QWidget* field;
        QWidget* faultLine;
        QLabel* faultText;
        FaultOf fault;
    };
    QLabel* AddLabel(const QString& text, QWidget* buddy);
    /// A line with the sign of an error, hidden, that keeps its place.
    QWidget* MakeFaultLine(QLabel*& text);

    const CTheme& Theme;
    QGridLayout* Fields;
    QPushButton* Ok;
    std::vector<Row> Rows;
    QDialogButtonBox* Buttons;
    QWidget* Content;  ///< holds the fields
    QWidget* Area;     ///< scrolls the fields where the screen is low
    QWidget* LastLine; ///< what went wrong with OK
    QLabel* LastText;
    std::function<bool()> Action;
    bool Finished = false;
};

/// A sign as a widget of a fixed size; takes the palette that is in force.
class CSignLabel : public QWidget {
    Q_OBJECT

  public:
    CSignLabel(const CTheme& theme, Sign sign, int size, QWidget* parent = nullptr);
    void SetSign(Sign sign);
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    const CTheme& Theme;
    Sign Shown;
    int Size;
};

} // namespace qor
