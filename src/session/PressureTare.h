// SPDX-License-Identifier: GPL-3.0-or-later
//
// The pressure tare: what the profiler's pressure sensor reads in air, which depths are less. The
// document holds it in the sensor's own units, as logs and displays take it; session files hold
// dbar. Called on the thread that commands the document.
#pragma once

#include "session/QorViewDoc.h"

#include <string>

namespace qor {

/// Takes the profiler's current pressure. What is wrong, in one sentence; then the tare that was
/// there stands.
std::string TakePressureTare(CQorViewDoc& doc);
/// A tare by hand. What is wrong, in one sentence; then the tare that was there stands.
std::string SetPressureTare(CQorViewDoc& doc, double dbar);
/// There is none any more: that is not a tare of zero.
void ClearTare(CQorViewDoc& doc);

/// Between the units of the profiler's pressure sensor and dbar; the number itself where there is
/// no such sensor or its units are not known.
double TareInDbar(const SessionState& session, double tare) REQUIRES(session.DocLock);
double TareFromDbar(const SessionState& session, double dbar) REQUIRES(session.DocLock);
/// What a pressure sensor's depth is less, in the units of that sensor: the tare, converted where
/// the profiler's sensor has others. 0 without a tare.
double TareFor(const SessionState& session, const CLiveInstrument& carrier, int sensor)
    REQUIRES(session.DocLock);

} // namespace qor
