// SPDX-License-Identifier: GPL-3.0-or-later
//
// The forms of the desktop: port, instrument, package, roles, station, logging, warning ranges,
// settings, tare, comment, about. Each opens beside what is open, returns at once, acts on the
// document when its OK is pressed, and then calls `done`. What is wrong with a field is said by
// views/SourceForms and views/LogForms. A form that is open already comes to the front instead of
// opening twice, but for the forms of single ports, instruments, rows and comments. User-interface
// thread.
#pragma once

#include "session/Handles.h"
#include "session/UserService.h"
#include "views/PortList.h"
#include "views/WarningRanges.h"

#include <QString>

#include <functional>
#include <string>
#include <vector>

class QWidget;

namespace qor {

class CForm;
class CQorViewDoc;
class CTheme;

/// What every form needs: the looks, the window it belongs to, the session, and where that is told
/// which went wrong after OK (one sentence). All but `parent` outlive the form.
struct FormFrame {
    const CTheme& theme;
    QWidget* parent;
    CQorViewDoc& doc;
    std::function<void(const QString&)> tell;
    /// Does what may wait for a port or a disk beside the user interface, and tells its fault when
    /// the form has gone. Empty: the form waits.
    std::function<void(std::function<std::string()>)> work = {};
};

/// May be empty.
using FormDone = std::function<void()>;

/// What a form of a port is opened with.
struct PortChoices {
    /// The ports that there are; asked again every two seconds, on another thread. Empty: those of
    /// this computer.
    std::function<std::vector<PortFound>()> find = {};
    std::vector<std::string> files = {};       ///< definitions and packages, ticked
    std::function<void()> changeFirstLog = {}; ///< what [Change] does; empty: the naming form
};
/// The resource that was added, and whether it is to be connected.
using PortAdded = std::function<void(ResourceId added, bool connect)>;
/// The port is added with what is ticked; connecting is the caller's.
CForm* OpenPort(const FormFrame& frame, const PortChoices& choices, PortAdded done);

/// Speed, format and reconnection of a port; the facts of a file.
CForm* OpenPortProperties(const FormFrame& frame, ResourceId resource, FormDone done);
CForm* OpenInstrumentProperties(const FormFrame& frame, InstrumentId instrument, FormDone done);
CForm* OpenPackageProperties(const FormFrame& frame, PackageId package, FormDone done);
CForm* OpenRoles(const FormFrame& frame, FormDone done);

CForm* OpenStation(const FormFrame& frame, FormDone done);
CForm* OpenLogOptions(const FormFrame& frame, FormDone done);
CForm* OpenNaming(const FormFrame& frame, FormDone done);
/// The question before a run; `done` hears the answer exactly once, also when the form is closed
/// (Cancel). "Log as shown" is OK.
CForm* OpenOverride(const FormFrame& frame, const LogQuestion& question,
                    std::function<void(LogAnswer)> done);
/// A tare by hand.
CForm* OpenTare(const FormFrame& frame, FormDone done);
/// A line into the session log, with the time at which the key was pressed.
CForm* OpenComment(const FormFrame& frame, const QString& stamp, FormDone done);

/// The ranges of one watched row. OK is always possible; what it refuses the session's operator is
/// told in a message box (CUserService), and the form stays open. `done` hears the new ranges.
CForm* OpenWarningRanges(const FormFrame& frame, const WarningRanges& ranges,
                         const std::string& quantity,
                         std::function<void(const WarningRanges&)> done);

/// Session log, text size, palette, large targets, logging sounds. Looks change as they are chosen
/// and go back with Cancel.
CForm* OpenSettings(const FormFrame& frame, CTheme& theme, FormDone done);

CForm* OpenAbout(const CTheme& theme, QWidget* parent);

/// Closes the forms and file dialogs of a window as Cancel does; before the session goes.
void CloseForms(QWidget* parent);

} // namespace qor
