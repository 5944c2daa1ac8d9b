// SPDX-License-Identifier: GPL-3.0-or-later
//
// What tests do at a window as an operator does: find a thing by what it is called, type, press.
#pragma once

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

namespace qor {

/// What is called so to a screen reader.
template <class Widget> Widget* Named(QWidget* within, const char* name) {
    for (auto* widget : within->findChildren<Widget*>())
        if (widget->accessibleName() == QString::fromLatin1(name) && !widget->focusProxy())
            return widget;
    ADD_FAILURE() << "no " << name;
    return nullptr;
}

/// The button with the shortest text that begins so.
template <class Button> Button* WithText(QWidget* within, const char* text) {
    Button* found = nullptr;
    for (auto* button : within->findChildren<Button*>())
        if (button->text().remove(QLatin1Char('&')).startsWith(QString::fromLatin1(text)) &&
            (!found || button->text().size() < found->text().size()))
            found = button;
    if (!found)
        ADD_FAILURE() << "no " << text;
    return found;
}

/// Replaces what stands in a field by typing.
inline void Type(QWidget* within, const char* name, const std::string& text) {
    auto* field = Named<QWidget>(within, name);
    auto* combo = qobject_cast<QComboBox*>(field);
    auto* edit = combo ? combo->lineEdit() : qobject_cast<QLineEdit*>(field);
    ASSERT_NE(edit, nullptr) << name;
    edit->setFocus();
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, QString::fromStdString(text));
}

/// Return in a form or box, as by hand.
inline void PressReturn(QWidget* form) {
    QTest::keyClick(form, Qt::Key_Return);
}

} // namespace qor
