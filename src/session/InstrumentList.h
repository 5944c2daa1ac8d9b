// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the operator sets for the instruments of the session, on instruments that run: checks,
// beep, logging, acquisition, immersion, title, and to which resource one belongs. An instrument
// that is added begins with what Instruments.ini says of its name. The instruments belong to the
// document, which owns this room. Called on the thread that commands the document, without its
// lock; an operation gives what was wrong as one sentence, empty when it was done.
#pragma once

#include "session/Handles.h"
#include "session/InstrumentDefaults.h"

#include <string>
#include <vector>

namespace qor {

class CQorViewDoc;
class CQorViewIns;

class CInstrumentList {
  public:
    /// The document that it is a part of.
    explicit CInstrumentList(CQorViewDoc& doc) : Doc(doc) {}

    /// Where Instruments.ini stands; empty: the built-in settings hold and none can be kept. Set
    /// before instruments are added.
    std::string DefaultsPath;

    /// What an instrument of that name begins with. A damaged line is reported once.
    InstrumentDefaults DefaultsOf(const std::string& name);

    /// The settings now; the built-in ones when the instrument has gone.
    InstrumentDefaults Settings(InstrumentId instrument) const;
    /// Takes effect with the next frame.
    std::string ChangeSettings(InstrumentId instrument, const InstrumentDefaults& settings);
    std::string SetAcquisition(InstrumentId instrument, bool on);
    /// Keeps the settings in Instruments.ini.
    std::string UseAsDefault(InstrumentId instrument);

    /// Counts of the checks begin anew; frames received go on.
    std::string ResetCounts(InstrumentId instrument);

    /// Attaches the instrument to another resource; settings, counts and roles stay. The handle
    /// becomes that of the new attachment. A package's instruments share a resource.
    std::string MoveInstrument(InstrumentId& instrument, ResourceId resource);

  private:
    std::string WhyNotMoved(InstrumentId instrument, ResourceId resource) const;

    CQorViewDoc& Doc;
    std::vector<std::string> Told; ///< of Instruments.ini, so that each is said once
};

} // namespace qor
