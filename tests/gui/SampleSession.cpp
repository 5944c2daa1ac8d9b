// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/SampleSession.h"

#include <cstdlib>
#include <utility>

namespace qor {

std::string Example(const std::string& name) {
    const char* folder = std::getenv("QORVIEW_EXAMPLES");
    return std::string(folder ? folder : QORVIEW_SOURCE_DIR "/examples") + "/" + name;
}

namespace {

SerialResourceSettings PortOf(const char* name, std::uint32_t speed) {
    SerialResourceSettings settings;
    settings.portName = name;
    settings.baudRate = speed;
    return settings;
}

} // namespace

CSampleSession::CSampleSession()
    : Doc(
          Clock, [] { return nullptr; }, User, Profile) {
    Port = Doc.AddSerialResource(PortOf("ttyUSB7", 57600));
    Package = Doc.Packages.AddPackage(Example("cast.sip"), Port);
    const ResourceId second = Doc.AddSerialResource(PortOf("ttyUSB8", 4800));
    Doc.AddInstrument(Example("gps.tdf"), second);
    RememberLine(Profile, PortOf("/dev/serial/by-id/usb-FTDI_A50285BI", 57600));
    LogNaming naming;
    naming.logDirectory = Temp.Path;
    Doc.RawLog.SetNaming(naming);
    StationInformation station;
    station.stationId = "S4";
    station.cruiseId = "HE-612";
    Doc.RawLog.SetStation(station);
}

FormFrame CSampleSession::Frame(const CTheme& theme, QWidget* parent) {
    return {theme, parent, Doc, [this](const QString& text) { Told.append(text); }};
}

QStringList CSampleSession::TakeTold() {
    return std::exchange(Told, {});
}

std::string CSampleSession::Reported() {
    while (Doc.Acquisition.TakeCommands(0)) {
    }
    std::string text = Doc.SessionLog.SessionLogText(Read);
    Read += text.size();
    return text;
}

std::vector<PortFound> SamplePorts() {
    return {
        {.name = "/dev/serial/by-id/usb-FTDI_A50285BI",
         .device = "ttyUSB0",
         .maker = "FTDI",
         .detail = "A50285BI"},
        {.name = "/dev/serial/by-id/usb-Prolific_2303",
         .device = "ttyUSB1",
         .maker = "Prolific",
         .detail = "2303",
         .access = {.state = PortState::NotAllowed, .group = "dialout"}},
        {.name = "/dev/ttyS0",
         .device = "ttyS0",
         .access = {.state = PortState::InUse, .holder = "gpsd", .pid = 812}},
        {.name = "ttyUSB7", .device = "ttyUSB7", .maker = "FTDI", .detail = "A9GZ11"},
    };
}

} // namespace qor
