// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/gallery/FormScenes.h"

#include "app/dialogs/Form.h"
#include "app/dialogs/PortFinder.h"
#include "gui/SampleSession.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QLineEdit>

namespace qor {

namespace {

CSampleSession& Session() {
    static CSampleSession session;
    return session;
}

FormFrame Frame(CTheme& theme) {
    return Session().Frame(theme, nullptr);
}

/// A form that the gallery deletes itself.
QWidget* Kept(CForm* form) {
    form->setAttribute(Qt::WA_DeleteOnClose, false);
    return form;
}

QWidget* MakePort(CTheme& theme, QSize) {
    const auto ports = [] {
        std::vector<PortFound> found = SamplePorts();
        found.pop_back();
        return found;
    };
    return Kept(OpenPort(Frame(theme), {ports, {Example("cast.sip"), Example("gps.tdf")}}, {}));
}

QWidget* MakeRefusedPort(CTheme& theme, QSize) {
    return Kept(OpenPort(Frame(theme), {[] { return SamplePorts(); }, {"/nowhere/x.cal"}}, {}));
}

QWidget* MakeNoPort(CTheme& theme, QSize) {
    return Kept(OpenPort(Frame(theme), {[] { return std::vector<PortFound>(); }}, {}));
}

/// Until the ports have been looked for on their thread.
QWidget* AwaitPorts(QWidget* widget) {
    bool found = false;
    const QObject meanwhile;
    QObject::connect(widget->findChild<CPortFinder*>(), &CPortFinder::Found, &meanwhile,
                     [&found] { found = true; });
    widget->findChild<CPortFinder*>()->Look();
    for (const QDeadlineTimer end(2000); !found && !end.hasExpired();)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    return widget;
}

template <int Number> QWidget* ChooseRadio(QWidget* widget) {
    AwaitPorts(widget);
    const auto buttons = widget->findChildren<QAbstractButton*>();
    int seen = 0;
    for (QAbstractButton* button : buttons)
        if (button->inherits("QRadioButton") && seen++ == Number)
            button->click();
    return widget;
}

QWidget* MakePortProperties(CTheme& theme, QSize) {
    return Kept(OpenPortProperties(Frame(theme), Session().Port, {}));
}

QWidget* MakeInstrument(CTheme& theme, QSize) {
    const CSampleSession& session = Session();
    const SessionSnapshot now = session.Doc.Snapshot();
    return Kept(OpenInstrumentProperties(Frame(theme), now.resources[0].instruments[0].id, {}));
}

QWidget* MakePackage(CTheme& theme, QSize) {
    return Kept(OpenPackageProperties(Frame(theme), Session().Package, {}));
}

QWidget* MakeRoles(CTheme& theme, QSize) {
    return Kept(OpenRoles(Frame(theme), {}));
}

QWidget* MakeStation(CTheme& theme, QSize) {
    return Kept(OpenStation(Frame(theme), {}));
}

QWidget* MakeOptions(CTheme& theme, QSize) {
    return Kept(OpenLogOptions(Frame(theme), {}));
}

QWidget* SpoilOptions(QWidget* widget) {
    widget->findChildren<QCheckBox*>()[1]->click();
    return widget;
}

QWidget* MakeNaming(CTheme& theme, QSize) {
    return Kept(OpenNaming(Frame(theme), {}));
}

QWidget* SpoilNaming(QWidget* widget) {
    widget->findChild<QComboBox*>()->setCurrentIndex(2);
    return widget;
}

QWidget* MakeOverride(CTheme& theme, QSize) {
    StationInformation station;
    station.stationId = "S4";
    station.cruiseId = "HE-612";
    station.operatorName = "watch 2";
    return Kept(OpenOverride(Frame(theme), {"2026-325-093015.raw", station}, [](LogAnswer) {}));
}

QWidget* MakeRanges(CTheme& theme, QSize) {
    return Kept(OpenWarningRanges(Frame(theme), DefaultTiltRanges, "TILT", {}));
}

QWidget* MakeSettings(CTheme& theme, QSize) {
    return Kept(OpenSettings(Frame(theme), theme, {}));
}

QWidget* MakeTare(CTheme& theme, QSize) {
    return Kept(OpenTare(Frame(theme), {}));
}

QWidget* MakeComment(CTheme& theme, QSize) {
    return Kept(OpenComment(Frame(theme), QStringLiteral("09:41:07"), {}));
}

QWidget* MakeAbout(CTheme& theme, QSize) {
    return Kept(OpenAbout(theme, nullptr));
}

} // namespace

std::vector<Scene> FormScenes() {
    return {
        {"forms-port", MakePort, AwaitPorts},
        {"forms-port-refused", MakeRefusedPort, ChooseRadio<2>},
        {"forms-port-none", MakeNoPort, AwaitPorts},
        {"forms-port-properties", MakePortProperties},
        {"forms-instrument", MakeInstrument},
        {"forms-package", MakePackage},
        {"forms-roles", MakeRoles},
        {"forms-station", MakeStation},
        {"forms-options", MakeOptions, SpoilOptions},
        {"forms-naming", MakeNaming, SpoilNaming},
        {"forms-override", MakeOverride},
        {"forms-ranges", MakeRanges},
        {"forms-settings", MakeSettings},
        {"forms-tare", MakeTare},
        {"forms-comment", MakeComment},
        {"forms-about", MakeAbout},
    };
}

} // namespace qor
