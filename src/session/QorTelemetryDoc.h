// SPDX-License-Identifier: GPL-3.0-or-later
//
// What every document with telemetry has: the controller that owns resources and definitions, and
// the way by which a message reaches the session log. Nothing here touches the session log itself.
#pragma once

#include "base/MessageSink.h"
#include "telemetry/TelemControl.h"

#include <memory>
#include <string>

namespace qor {

class CQorTelemetryDoc : public CMessageSink {
  public:
    /// Queues one message (lines that end in CR LF) for the session log, in the order reported.
    /// From any thread, under any lock of the chain. Does nothing while no controller is attached.
    void ReportMessage(const std::string& message);

    /// An event with its kind, by the same way.
    void Raise(Event event) final;

    /// Attaches a controller, or takes it away (null). Not while a loop or a worker runs.
    void AttachController(std::unique_ptr<CTelemControl> controller);
    /// The controller, or null. Its tables change only on the thread that commands the document and
    /// only under the document's lock.
    CTelemControl* Controller() const { return Control.get(); }

  private:
    std::unique_ptr<CTelemControl> Control;
};

} // namespace qor
