// SPDX-License-Identifier: GPL-3.0-or-later
//
// The desktop's tests share one application on a platform that needs no display.
#include "gui/Desk.h"

#include "app/Application.h"

#include <QApplication>

#include <gtest/gtest.h>

namespace qor {

CTheme& TestTheme() {
    static CTheme theme;
    return theme;
}

} // namespace qor

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    qor::PrepareApplication(application, qor::TestTheme());
    return RUN_ALL_TESTS();
}
