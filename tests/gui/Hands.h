// SPDX-License-Identifier: GPL-3.0-or-later
//
// What tests do at a window as an operator does: find a thing by what it is called, type, press.
#pragma once

#include <QAbstractButton>
#include <QLineEdit>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

namespace qor {

/// The visible widget that is called so to a screen reader.
template <class Widget> Widget* Named(QWidget* within, const char* name) {
    for (auto* widget : within->findChildren<Widget*>())
        if (widget->accessibleName() == QString::fromLatin1(name))
            return widget;
    ADD_FAILURE() << "no " << name;
    return nullptr;
}

/// The button whose text begins so.
template <class Button> Button* WithText(QWidget* within, const char* text) {
    for (auto* button : within->findChildren<Button*>())
        if (button->text().remove(QLatin1Char('&')).startsWith(QString::fromLatin1(text)))
            return button;
    ADD_FAILURE() << "no " << text;
    return nullptr;
}

/// Replaces what stands in a field by typing.
inline void Type(QWidget* within, const char* name, const QString& text) {
    auto* edit = Named<QLineEdit>(within, name);
    edit->setFocus();
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, text);
}

/// Return in a form or box, as by hand.
inline void PressReturn(QWidget* form) {
    QTest::keyClick(form, Qt::Key_Return);
}

} // namespace qor
