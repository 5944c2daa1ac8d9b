// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/PortList.h"

#include "base/Text.h"
#include "platform/SystemText.h"
#include "session/PortText.h"

#include <algorithm>

namespace qor {

namespace {

constexpr const char* LastLineSection = "Ports";

/// The program that holds a port, as far as it is known.
std::string HolderOf(const PortAccess& access) {
    const std::string name = access.holder.empty() ? "another program" : Utf8Of(access.holder);
    return access.pid > 0 ? name + " (" + std::to_string(access.pid) + ")" : name;
}

std::string NotAllowedText(const PortFound& port) {
    const std::string may = "You may not open " + Utf8Of(port.device);
    if (port.access.group.empty())
        return may + ". Ask who looks after this computer.";
    const std::string group = "group " + Utf8Of(port.access.group);
    if (port.access.groupAtNextLogin)
        return may + " yet: you are in " + group + " from your next login on.";
    return may + ": it belongs to " + group + ".";
}

bool CanBeHad(const PortFound& port) {
    return port.access.state == PortState::Free && !port.inSession;
}

} // namespace

std::string TitleOf(const PortFound& port) {
    if (port.maker.empty())
        return port.detail.empty() ? "on board" : port.detail;
    return port.detail.empty() ? port.maker : port.maker + ' ' + port.detail;
}

std::string StateOf(const PortFound& port) {
    if (port.inSession)
        return "in this session";
    switch (port.access.state) {
    case PortState::Free:
        return "free";
    case PortState::Missing:
        return "not there";
    case PortState::NoPort:
        return "no serial port";
    case PortState::NotAllowed:
        return port.access.group.empty() ? "not allowed"
                                         : "not allowed: group " + Utf8Of(port.access.group);
    case PortState::InUse:
        return "in use by " + HolderOf(port.access);
    }
    return {};
}

Sign SignOf(const PortFound& port) {
    if (port.inSession)
        return Sign::Off;
    switch (port.access.state) {
    case PortState::Free:
        return Sign::Ok;
    case PortState::Missing:
    case PortState::NoPort:
        return Sign::Off;
    case PortState::NotAllowed:
    case PortState::InUse:
        return Sign::Warning;
    }
    return Sign::None;
}

std::string WhyNot(const PortFound& port) {
    const std::string device = Utf8Of(port.device);
    if (port.inSession)
        return "The session has " + device + " already.";
    switch (port.access.state) {
    case PortState::Free:
        return {};
    case PortState::Missing:
        return "There is no port " + device + ".";
    case PortState::NoPort:
        return device + " is no serial port.";
    case PortState::NotAllowed:
        return NotAllowedText(port);
    case PortState::InUse:
        return device + " is in use by " + HolderOf(port.access) +
               ". Stop it or choose another port.";
    }
    return {};
}

std::string RemedyCommand(const PortFound& port) {
    const PortAccess& access = port.access;
    if (access.state != PortState::NotAllowed || access.group.empty() || access.groupAtNextLogin)
        return {};
    return "sudo usermod -aG " + access.group + " $USER";
}

std::string PortTrouble(const PortFound& port, std::span<const std::string> there) {
    const std::string why = WhyNot(port);
    if (why.empty())
        return "Is it a serial port, not in use, and may you open it?";
    if (const std::string command = RemedyCommand(port); !command.empty())
        return why + " Run " + command + " and log in again.";
    if (port.access.state != PortState::Missing)
        return why;
    constexpr std::size_t MostNamed = 8;
    std::string names;
    for (const std::string& name : there.first(std::min(there.size(), MostNamed)))
        names += (names.empty() ? "" : ", ") + Utf8Of(name);
    return why + (names.empty()
                      ? " This computer has none now; is its adapter plugged in?"
                      : " There are: " + names + (there.size() > MostNamed ? " and others." : "."));
}

std::string PortTrouble(const std::string& name, std::uint32_t error) {
    if (error ==
        SystemErrorNoHandle) // nothing is wrong with the port, and nothing can be looked up
        return "This program has as many files and ports open as the system allows it; allow it "
               "more (ulimit -n), or name fewer ports.";
    const std::vector<std::string> names{name};
    const PortFound port{.name = name, .device = name, .access = LookAtPorts(names).front()};
    return PortTrouble(port, PortNames());
}

void MarkInSession(std::span<PortFound> ports, std::span<const std::string> names) {
    for (PortFound& port : ports)
        port.inSession = std::ranges::any_of(names, [&](const std::string& name) {
            return name == port.name || name == port.device || name == "/dev/" + port.device;
        });
}

std::optional<std::size_t> OnlyFree(std::span<const PortFound> ports) {
    if (std::ranges::count_if(ports, CanBeHad) != 1)
        return std::nullopt;
    return static_cast<std::size_t>(std::ranges::find_if(ports, CanBeHad) - ports.begin());
}

std::string LastLineText(const CProfileStore& store, const std::string& name) {
    const auto last = LastLine(store, name);
    return last ? std::to_string(last->baudRate) + ' ' +
                      LineFormatText({last->dataBits, last->parity, last->stopBits})
                : std::string();
}

std::optional<SerialResourceSettings> LastLine(const CProfileStore& store,
                                               const std::string& name) {
    const std::string text = store.ReadText(LastLineSection, name);
    if (text.empty())
        return std::nullopt;
    std::optional<PortText> last = ParsePort("port:" + text);
    if (!last || !last->baudGiven)
        return std::nullopt;
    last->settings.portName = name;
    return last->settings;
}

void RememberLine(CProfileStore& store, const SerialResourceSettings& settings) {
    store.WriteText(LastLineSection, settings.portName, LineTextOf(settings));
}

} // namespace qor
