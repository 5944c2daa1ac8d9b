// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/PlayedSession.h"

#include "base/Text.h"
#include "fakes/Sentences.h"
#include "session/Package.h"

#include <cmath>

namespace qor {

namespace {

constexpr std::int64_t Start = 1'795'163'400'000; // 2026-11-20 08:30 UTC
constexpr double CastDepth = 60.0;

std::string WithSum(const std::string& text) {
    unsigned sum = 0;
    for (const char c : text)
        sum ^= static_cast<unsigned char>(c);
    return Format("$%s*%02X\r\n", text.c_str(), sum);
}

} // namespace

CPlayedSession::CPlayedSession()
    : Clock(Start), Doc(
                        Clock, [] { return nullptr; }, User, Profile),
      Simulator(7, static_cast<double>(Start) / 1000.0, {}) {
    CRecursiveLock lock(Doc.DocLock);
    Doc.NoDialogs = true;
    Doc.Naming.logDirectory = Temp.Path;
    Doc.Station.stationId = "S4";
}

ResourceId CPlayedSession::AddPort(const std::string& name) {
    SerialResourceSettings settings;
    settings.portName = name;
    return Doc.AddSerialResource(settings);
}

void CPlayedSession::AddPlayed(InstrumentId id, double rate, bool immersed) {
    CRecursiveLock lock(Doc.DocLock);
    const CInstrument& definition = Doc.Find(id)->Definition();
    Played.emplace_back(&definition, id);
    Simulator.Add(definition, {rate, immersed, CastDepth});
}

InstrumentId CPlayedSession::AddPlayed(const std::string& name, const std::string& definition,
                                       double rate) {
    const ResourceId port = AddPort("ttyS" + name);
    const InstrumentId id = Doc.AddInstrument(Temp.Put(name + ".cal", definition), port).id;
    AddPlayed(id, rate, false);
    return id;
}

void CPlayedSession::AddCast() {
    const ResourceId port = AddPort("ttyUSB0");
    Doc.Packages.AddPackage(ReadPackage(QORVIEW_SOURCE_DIR "/examples/cast.sip"), port);
    std::vector<InstrumentFigures> members = Doc.Snapshot().Find(port)->instruments;
    for (const InstrumentFigures& member : members) {
        const bool inAir = member.name.find("ESR") != std::string::npos;
        AddPlayed(member.id, member.nominalRate > 0.0 ? member.nominalRate : 1.0, !inAir);
        if (inAir)
            (void)Doc.SetRole(InstrumentRole::Reference, member.id);
        if (member.name.find("FAL") != std::string::npos)
            (void)Doc.SetRole(InstrumentRole::Profiler, member.id);
        if (member.name.find("EDW") != std::string::npos)
            (void)Doc.SetRole(InstrumentRole::DeviceUnderTest, member.id);
    }
}

void CPlayedSession::AddShip() {
    const ResourceId port = AddPort("ttyS1");
    Receiver = Doc.AddInstrument(Temp.Put("gps.tdf", RmcDefinition("$GPRMC")), port).id;
    Weather = Doc.AddInstrument(Temp.Put("wind.tdf", WeatherDefinition("$WIMWV")), port).id;
    (void)Doc.SetRole(InstrumentRole::Gps, Receiver);
    (void)Doc.SetRole(InstrumentRole::WeatherStation, Weather);
}

void CPlayedSession::Send(InstrumentId instrument, const std::vector<std::uint8_t>& bytes) {
    CFrameQueue queue;
    CFrameInfo info;
    info.identity = static_cast<std::uint32_t>(instrument);
    info.time = Clock.Now();
    info.frameCounter = ++Sent;
    queue.Push(info, bytes, 0);
    Doc.Acquisition.ProcessFrames(queue);
}

void CPlayedSession::SendShip() {
    const double turn = Now / 600.0;
    const auto degrees = [](double value) {
        return Format("%02d%07.4f", static_cast<int>(value), 60.0 * (value - std::floor(value)));
    };
    const std::string time = FormatTime("%H%M%S", CalendarFromSeconds(Clock.Now().seconds));
    const std::string fix = Format("GPRMC,%s,A,%s,N,0%s,E,4.2,%05.1f,201126,,", time.c_str(),
                                   degrees(48.1173 + 0.004 * std::sin(turn)).c_str(),
                                   degrees(11.5167 + 0.006 * (std::cos(turn) - 1.0)).c_str(),
                                   std::fmod(360.0 - turn * 57.3 + 720.0, 360.0));
    const std::string wind =
        Format("WIMWV,%.1f,R,%.1f,M,%.1f,%.1f,%.2f", 45.0 + 40.0 * std::sin(Now / 37.0),
               9.0 + 2.0 * std::sin(Now / 11.0), 61.0 + Now / 3000.0, 81.0, 101.32);
    for (const auto& [id, text] : {std::pair{Receiver, fix}, std::pair{Weather, wind}}) {
        const std::string sentence = WithSum(text);
        Send(id, {sentence.begin(), sentence.end()});
    }
}

void CPlayedSession::Play(double seconds) {
    const double end = Now + seconds;
    const auto passTo = [this](double time) {
        const auto milliseconds = std::llround(time * 1000.0) - std::llround(Now * 1000.0);
        Clock.Advance(milliseconds);
        Now = time;
    };
    for (;;) {
        const double frame = Simulator.Empty() ? end + 1.0 : Simulator.NextDue();
        const double ship = Receiver == InstrumentId::None ? end + 1.0 : NextShip;
        if (std::min(frame, ship) > end)
            break;
        passTo(std::max(std::min(frame, ship), Now));
        if (ship <= frame) {
            SendShip();
            NextShip += 1.0;
            continue;
        }
        const SimulatedFrame sent = Simulator.Next();
        for (const auto& [definition, id] : Played)
            if (definition == sent.instrument)
                Send(id, sent.bytes);
    }
    passTo(end);
}

void CPlayedSession::Silence(double seconds) {
    Clock.Advance(std::llround(seconds * 1000.0));
    Now += seconds;
    NextShip = Now;
    if (!Simulator.Empty())
        Simulator.SkipTo(Now);
}

} // namespace qor
