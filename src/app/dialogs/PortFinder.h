// SPDX-License-Identifier: GPL-3.0-or-later
//
// Looks for the ports of this computer, at once and every two seconds, on a thread of its own: a
// system that is slow to answer holds up nobody. What was found comes back on the thread of the
// user interface.
#pragma once

#include "views/PortList.h"

#include <QObject>

#include <functional>
#include <vector>

namespace qor {

/// The ports of this computer, with what is known of each. Any thread.
std::function<std::vector<PortFound>()> SystemPorts();

class CPortFinder : public QObject {
    Q_OBJECT

  public:
    CPortFinder(std::function<std::vector<PortFound>()> find, QObject* parent);
    /// Looks now, unless that is being done already.
    void Look();

  signals:
    void Found(const std::vector<qor::PortFound>& ports);

  private:
    std::function<std::vector<PortFound>()> Find;
    bool Busy = false;
};

} // namespace qor
