// SPDX-License-Identifier: GPL-3.0-or-later
//
// The dialogs of what telemetry comes from, apart from their widgets: port and file resource,
// instrument, package, roles. A form holds what stands in the fields; its check says what is wrong
// with each, and what OK would take. Pure but for looking whether named files can be read; on the
// user-interface thread, without a lock. Fields are named as the members.
#pragma once

#include "products/PackageSettings.h"
#include "session/InstrumentRole.h"
#include "telemetry/ResourceSettings.h"
#include "views/FormFaults.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qor {

struct PortForm {
    std::string name;           ///< "ttyUSB0", COM3
    std::string speed = "9600"; ///< baud
    std::string format = "8N1";
    std::vector<std::string> inUse = {}; ///< names of the session's other resources
};
/// The form of a port's settings.
PortForm FormOf(const SerialResourceSettings& settings);
FormFaults CheckForm(const PortForm& form);
/// What OK takes; empty while something is wrong.
std::optional<SerialResourceSettings> SettingsOf(const PortForm& form);

struct FileForm {
    std::string path;
    std::vector<std::string> inUse = {};
};
FormFaults CheckForm(const FileForm& form);

/// A definition or a package for a resource.
struct InstrumentForm {
    std::string path;
    std::string resource;                    ///< on which it is to be
    std::vector<std::string> resources = {}; ///< that there are
    bool calibrationMode = false;            ///< nothing can be added then
};
FormFaults CheckForm(const InstrumentForm& form);

/// What the operator sets of an instrument that there is.
struct InstrumentPropertiesForm {
    std::string title; ///< in window captions
};
FormFaults CheckForm(const InstrumentPropertiesForm& form);

struct PackageForm {
    bool useDefaultSalinity = false;
    std::string defaultSalinity = "35";
    std::string saturationIrradiance; ///< empty: not set
    std::string attenuationWindow = "5";
};
PackageForm FormOf(const PackageSettings& settings);
FormFaults CheckForm(const PackageForm& form);
std::optional<PackageSettings> SettingsOf(const PackageForm& form);

/// Who fills which role; the fields are the names of the roles ("gps").
struct RolesForm {
    std::map<InstrumentRole, std::string> holders; ///< empty: nobody
    std::vector<std::string> instruments = {};     ///< that there are
    std::vector<std::string> optical = {};         ///< those with a spectrum
    std::vector<std::string> receivers = {};       ///< those with a position
};
FormFaults CheckForm(const RolesForm& form);

} // namespace qor
