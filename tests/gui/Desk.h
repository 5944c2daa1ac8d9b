// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the desktop's tests share: the application's theme, and letting the event loop run.
#pragma once

#include "app/look/Theme.h"

#include <QCoreApplication>
#include <QEventLoop>

namespace qor {

CTheme& TestTheme();

/// Lets queued events, layouts and replots happen.
inline void Settle() {
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
}

/// A look for the length of a test.
class CWithLook {
  public:
    explicit CWithLook(Look look) { TestTheme().SetLook(look); }
    ~CWithLook() { TestTheme().SetLook(Look::Light); }
    CWithLook(const CWithLook&) = delete;
    CWithLook& operator=(const CWithLook&) = delete;
};

} // namespace qor
