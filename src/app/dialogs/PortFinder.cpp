// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/dialogs/PortFinder.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSerialPortInfo>
#include <QThreadPool>
#include <QTimer>

#include <map>
#include <memory>
#include <utility>

namespace qor {

namespace {

constexpr int LookEveryMilliseconds = 2000;

/// What was found out of ports that are looked at only once, by their names.
using KnownPorts = std::map<std::string, PortAccess>;

PortFound Described(const QSerialPortInfo& info) {
    PortFound port;
    port.device = info.portName().toStdString();
    port.maker = info.manufacturer().toStdString();
    const std::string description = info.description().toStdString();
    const std::string number = info.serialNumber().toStdString();
#if defined(_WIN32)
    // A number of the system's own says nothing: what kind of adapter it is, and which one.
    port.name = info.portName().toStdString();
    port.detail = number.empty() ? description : description + ' ' + number;
#else
    port.name = StablePortName(info.systemLocation().toStdString());
    port.detail = number.empty() ? description : number;
#endif
    return port;
}

/// All in one look, but for those that may be looked at only once.
void LookAtAll(std::vector<PortFound>& ports, KnownPorts& known) {
    std::vector<std::string> names;
    for (const PortFound& port : ports)
        if (!LookingOpensPorts || !known.contains(port.name))
            names.push_back(port.name);
    const std::vector<PortAccess> looks = LookAtPorts(names);
    KnownPorts now;
    for (std::size_t i = 0; i < names.size(); ++i)
        now[names[i]] = looks[i];
    for (PortFound& port : ports) {
        now.insert(known.extract(port.name)); // what was looked at now stays
        port.access = now[port.name];
    }
    known = std::move(now);
}

std::vector<PortFound> LookAround(KnownPorts& known) {
    std::vector<PortFound> ports;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts())
        ports.push_back(Described(info));
    LookAtAll(ports, known);
    return ports;
}

} // namespace

std::function<std::vector<PortFound>()> SystemPorts() {
    return [known = std::make_shared<KnownPorts>()] { return LookAround(*known); };
}

CPortFinder::CPortFinder(std::function<std::vector<PortFound>()> find, QObject* parent)
    : QObject(parent), Find(std::move(find)) {
    auto* timer = new QTimer(this);
    timer->setInterval(LookEveryMilliseconds);
    connect(timer, &QTimer::timeout, this, &CPortFinder::Look);
    timer->start();
}

void CPortFinder::Look() {
    if (std::exchange(Busy, true))
        return;
    QThreadPool::globalInstance()->start([find = Find, guard = QPointer<CPortFinder>(this)] {
        auto ports = std::make_shared<std::vector<PortFound>>(find());
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [guard, ports] {
                if (!guard)
                    return;
                guard->Busy = false;
                emit guard->Found(*ports);
            },
            Qt::QueuedConnection);
    });
}

} // namespace qor
