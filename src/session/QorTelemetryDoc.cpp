// SPDX-License-Identifier: GPL-3.0-or-later
//
// The document's way to the command queue. See QorTelemetryDoc.h.
#include "session/QorTelemetryDoc.h"

#include <utility>

namespace qor {

void CQorTelemetryDoc::ReportMessage(const std::string& message) {
    Report(message);
}

void CQorTelemetryDoc::Raise(Event event) {
    if (Control)
        Control->Commands().Raise(std::move(event));
}

void CQorTelemetryDoc::AttachController(std::unique_ptr<CTelemControl> controller) {
    Control = std::move(controller);
}

} // namespace qor
