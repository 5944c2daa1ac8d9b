// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/SourceForms.h"

#include "base/TerminalText.h"
#include "base/Text.h"
#include "platform/File.h"
#include "platform/FileErrorText.h"
#include "session/FileKind.h"
#include "session/PortText.h"
#include "session/SessionFields.h"
#include "views/FormNumbers.h"

#include <algorithm>

namespace qor {

namespace {

bool IsIn(const std::vector<std::string>& names, const std::string& name) {
    return std::ranges::find(names, name) != names.end();
}

/// Why a file cannot be read, or nothing.
std::string ReadingFault(const std::string& path) {
    if (path.empty())
        return "Name a file.";
    if (IsDirectory(path))
        return "This is a folder, not a file.";
    CFile file;
    const FileCause cause = file.OpenForReading(path);
    return cause == FileCause::None ? std::string() : std::string(GetFileErrorText(cause));
}

/// What is wrong with a number of a package, by its name in session files.
std::string PackageNumberFault(std::string_view name, const std::string& text) {
    const auto row = std::ranges::find(PackageNumbers, name, &PackageNumber::name);
    return NumberFault(text, row->range.least, row->range.greatest);
}

} // namespace

PortForm FormOf(const SerialResourceSettings& settings) {
    PortForm form;
    form.name = settings.portName;
    form.speed = std::to_string(settings.baudRate);
    form.format = LineFormatText({settings.dataBits, settings.parity, settings.stopBits});
    return form;
}

FormFaults CheckForm(const PortForm& form) {
    FormFaults faults;
    if (Trim(form.name).empty())
        faults.Add("name", "Name a port.");
    if (HasControlCharacter(form.name))
        faults.Add("name", "A port's name holds no control characters.");
    if (IsIn(form.inUse, std::string(Trim(form.name))))
        faults.Add("name", "The session has this port already.");
    faults.Add("speed", NumberFault(form.speed, BaudRange.least, BaudRange.greatest, true));
    if (!ParseLineFormat(Trim(form.format)))
        faults.Add("format", "Give data bits, parity and stop bits such as 8N1.");
    return faults;
}

std::optional<SerialResourceSettings> SettingsOf(const PortForm& form) {
    const auto speed = WholeCount(Trim(form.speed));
    const auto format = ParseLineFormat(Trim(form.format));
    if (!CheckForm(form).Ok() || !speed || !format)
        return std::nullopt;
    SerialResourceSettings settings;
    settings.portName = Trim(form.name);
    settings.baudRate = *speed;
    settings.dataBits = format->dataBits;
    settings.parity = format->parity;
    settings.stopBits = format->stopBits;
    return settings;
}

FormFaults CheckForm(const FileForm& form) {
    FormFaults faults;
    faults.Add("path", ReadingFault(form.path));
    const FileKind kind = KindByName(form.path);
    if (kind == FileKind::Definition || kind == FileKind::Package || kind == FileKind::Session)
        faults.Add("path", "This is no recorded telemetry; name a raw log.");
    if (IsIn(form.inUse, form.path))
        faults.Add("path", "The session has this file already.");
    return faults;
}

FormFaults CheckForm(const InstrumentForm& form) {
    FormFaults faults;
    if (form.calibrationMode)
        faults.Add("path", "In calibration mode no instrument can be added.");
    faults.Add("path", ReadingFault(form.path));
    if (!form.path.empty() && faults.Ok()) {
        const FileKind kind = KindOfFile(form.path);
        if (kind != FileKind::Definition && kind != FileKind::Package)
            faults.Add("path", OneLine(NotInstrumentFile(form.path)));
    }
    if (form.resource.empty() || !IsIn(form.resources, form.resource))
        faults.Add("resource", form.resources.empty() ? "Add a port first." : "Choose a port.");
    return faults;
}

FormFaults CheckForm(const InstrumentPropertiesForm& form) {
    FormFaults faults;
    if (HasControlCharacter(form.title))
        faults.Add("title", "A title is one line without control characters.");
    return faults;
}

PackageForm FormOf(const PackageSettings& settings) {
    PackageForm form;
    form.useDefaultSalinity = settings.UseDefSalinity;
    form.defaultSalinity = ShortestNumber(settings.DefaultSalinity);
    form.saturationIrradiance = settings.SaturationIrradiance > 0.0
                                    ? ShortestNumber(settings.SaturationIrradiance)
                                    : std::string();
    form.attenuationWindow = ShortestNumber(settings.AttenuationWindow);
    return form;
}

FormFaults CheckForm(const PackageForm& form) {
    FormFaults faults;
    if (form.useDefaultSalinity)
        faults.Add("defaultSalinity", PackageNumberFault("default-salinity", form.defaultSalinity));
    if (!Trim(form.saturationIrradiance).empty())
        faults.Add("saturationIrradiance",
                   PackageNumberFault("saturation-irradiance", form.saturationIrradiance));
    faults.Add("attenuationWindow",
               PackageNumberFault("attenuation-window", form.attenuationWindow));
    return faults;
}

std::optional<PackageSettings> SettingsOf(const PackageForm& form) {
    if (!CheckForm(form).Ok())
        return std::nullopt;
    PackageSettings settings;
    settings.UseDefSalinity = form.useDefaultSalinity;
    settings.DefaultSalinity = NumberIn(form.defaultSalinity).value_or(settings.DefaultSalinity);
    settings.SaturationIrradiance = NumberIn(form.saturationIrradiance).value_or(0.0);
    settings.AttenuationWindow =
        NumberIn(form.attenuationWindow).value_or(settings.AttenuationWindow);
    return settings;
}

FormFaults CheckForm(const RolesForm& form) {
    FormFaults faults;
    for (const auto& [role, holder] : form.holders) {
        if (holder.empty())
            continue;
        std::string fault;
        if (!IsIn(form.instruments, holder))
            fault = "There is no instrument " + Utf8Of(holder) + ".";
        else if (role == InstrumentRole::DeviceUnderTest && !IsIn(form.optical, holder))
            fault = Utf8Of(holder) + " has no optical series to compare.";
        else if (role == InstrumentRole::Gps && !IsIn(form.receivers, holder))
            fault = Utf8Of(holder) + " brings no position.";
        faults.Add(RowOf(role).name, fault);
    }
    return faults;
}

} // namespace qor
