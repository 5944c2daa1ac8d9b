// SPDX-License-Identifier: GPL-3.0-or-later
//
// The pressure tare: what the profiler's pressure sensor reads in air, which depths are less. The
// document holds it with the units in which it was taken, so that it stays the same pressure
// whoever is the profiler; logs have it in the units of the profiler's sensor, session files in
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

/// That of a session file.
void TakeSavedTare(SessionState& session, std::optional<double> dbar) REQUIRES(session.DocLock);
/// That of a log which is played, in the units of the sensor that it was logged with.
void TakeLoggedTare(SessionState& session, double tare) REQUIRES(session.DocLock);

/// A number in the tare's units in dbar; the number itself where they are not known.
double TareInDbar(const SessionState& session, double tare) REQUIRES(session.DocLock);
/// In the units of the profiler's pressure sensor, as a log's header has it. 0 without a tare.
double TareOfProfiler(const SessionState& session) REQUIRES(session.DocLock);
/// What a pressure sensor's depth is less, in the units of that sensor; the number itself where one
/// of the units is not known, 0 without a tare.
double TareIn(const SessionState& session, const std::optional<UnitScale>& units)
    REQUIRES(session.DocLock);

} // namespace qor
