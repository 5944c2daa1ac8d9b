// SPDX-License-Identifier: GPL-3.0-or-later
//
// A session of the examples on two ports that are never opened, and ports of all kinds, for looking
// at forms and for testing them.
#pragma once

#include "app/dialogs/Forms.h"
#include "fakes/ManualClock.h"
#include "fakes/ScriptedUser.h"
#include "fakes/TempFolder.h"
#include "session/QorViewDoc.h"

#include <QStringList>

namespace qor {

/// An example's path, in the folder that QORVIEW_EXAMPLES names or that of the sources.
std::string Example(const std::string& name);

class CSampleSession {
  public:
    CSampleSession();

    FormFrame Frame(const CTheme& theme, QWidget* parent);
    /// Forgets what was told.
    QStringList TakeTold();
    InstrumentId Instrument(const std::string& name) const { return Doc.FindInstrument(name); }
    /// The session log since the last call.
    std::string Reported();

    CTempFolder Temp;
    CManualClock Clock;
    CScriptedUser User;
    CMemoryProfileStore Profile;
    CQorViewDoc Doc;
    ResourceId Port = ResourceId::None; ///< holds the package
    PackageId Package = PackageId::None;

  private:
    QStringList Told;
    std::size_t Read = 0;
};

/// Free, not allowed, in use, in the session.
std::vector<PortFound> SamplePorts();

} // namespace qor
