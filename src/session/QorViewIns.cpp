// SPDX-License-Identifier: GPL-3.0-or-later
//
// One instrument's frame is checked and becomes its current one. See QorViewIns.h.
#include "session/QorViewIns.h"

#include <utility>

namespace qor {

CQorViewIns::CQorViewIns(const CInstrument& definition, InstrumentId id, std::string resourceName,
                         CMessageSink& sink)
    : Id(id), Live(definition), Products(Live), Resource(std::move(resourceName)) {
    Checks.SetUp(definition, definition.ShownName(), Resource, sink);
    Live.FrameRate = NominalFrameRate(definition, sink);
}

void CQorViewIns::TakeOver(const CQorViewIns& before) {
    Live.Immersed = before.Live.Immersed;
    LoggingEnabled = before.LoggingEnabled;
    AcquisitionEnabled = before.AcquisitionEnabled;
    Title = before.Title;
    SlotLog = before.SlotLog;
    Slot = before.Slot;
    FramesReceived = before.FramesReceived;
    Checks.TakeOver(before.Checks);
}

} // namespace qor
