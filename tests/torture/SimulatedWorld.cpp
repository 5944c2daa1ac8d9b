// SPDX-License-Identifier: GPL-3.0-or-later
//
// A round of the world: instruments talk, the operator acts, the disk and the cables fail. See
// Simulation.h.
#include "torture/Simulation.h"

#include "base/Text.h"
#include "torture/TroubledDisk.h"

namespace qor {

namespace fs = std::filesystem;

void CSimulation::Pass(std::int64_t milliseconds) {
    Clock.Advance(milliseconds);
    Clock.UtcOffsetMinutes = SystemLocalOffset(Clock.Now().seconds).minutes;
}

/// One round of the loop. The writer has done its part when it returns, unless the disk stalls.
void CSimulation::Step() {
    Loop->Step(0);
    Doc->Acquisition.TakeCommands(0);
    if (StallUntil == 0)
        Doc->RawLog.WaitForDisk();
}

void CSimulation::Round() {
    ++Rounds;
    Pass(Chance.Between(250, 1750));
    EndTroubles();
    for (SimulatedPort& port : Ports)
        Talk(port);
    if (StallUntil == 0 && Chance.Once(Calm))
        Operate();
    Step();
}

void CSimulation::EndTroubles() {
    const auto over = [this](std::int64_t& until) {
        const bool is = until != 0 && until <= Now();
        until = is ? 0 : until;
        return is;
    };
    if (over(FullUntil))
        disk::SetRoom(-1);
    if (over(StallUntil)) {
        disk::SetStalled(false);
        Doc->RawLog.WaitForDisk();
    }
    if (over(GoneUntil) && fs::exists(Temp.Path + "away"))
        fs::rename(Temp.Path + "away", Logs.substr(0, Logs.size() - 1));
    for (SimulatedPort& port : Ports)
        if (over(port.backAt))
            port.line.SetPresent(true);
}

std::string CSimulation::Frame(const std::string& header, std::size_t length) {
    std::string frame = header;
    ++Number;
    for (int shift : {24, 16, 8, 0})
        frame += static_cast<char>(Number >> shift);
    while (frame.size() + 1 < length)
        frame += static_cast<char>(Chance.Below(256));
    return frame + static_cast<char>(Number);
}

/// What an instrument has to say: a frame, seldom a torn one, many at once or noise.
std::string CSimulation::Utterance(const SimulatedPort& port) {
    auto kind = port.lengths.begin();
    std::advance(kind, Chance.Below(port.lengths.size()));
    std::string text = Frame(kind->first, kind->second);
    const std::uint64_t what = Chance.Below(1000);
    if (what < 30)
        text.erase(Chance.Below(text.size()), 1 + Chance.Below(text.size()));
    else if (what < 32)
        for (std::int64_t more = Chance.Between(20, 100); more > 0; --more)
            text += Frame(kind->first, kind->second);
    else if (what < 60)
        for (std::int64_t more = Chance.Between(1, 60); more > 0; --more)
            text += Chance.Once(8) ? '~' : static_cast<char>(Chance.Below(256));
    return text;
}

void CSimulation::Talk(SimulatedPort& port) {
    for (; port.next <= Now(); port.next += port.period)
        port.waiting += Utterance(port);
    if (!port.line.IsOpen())
        port.waiting.clear(); // nobody hears it
    if (port.waiting.empty()) {
        if (Chance.Once(100))
            port.line.Silence(static_cast<int>(Chance.Between(1, 20)));
        return;
    }
    const std::size_t length =
        Chance.Once(4) ? Chance.Below(port.waiting.size()) + 1 : port.waiting.size();
    const FrameTime now = Clock.Now();
    port.sent->Take(port.waiting.substr(0, length),
                    (now.seconds + now.utcOffsetMinutes * 60) * 1000 + now.milliseconds);
    port.line.Bytes(port.waiting.substr(0, length));
    port.waiting.erase(0, length);
}

void CSimulation::Operate() {
    SimulatedPort& port = Ports[Chance.Below(Ports.size())];
    auto kind = port.lengths.begin();
    std::advance(kind, Chance.Below(port.lengths.size()));
    switch (Chance.Below(11)) {
    case 0:
    case 1:
    case 2:
        return BeginLog();
    case 3:
        Doc->RawLog.EndLogFile(true);
        return;
    case 4:
        return Disconnect(port);
    case 5:
        return Unplug(port);
    case 6:
        return StepClock();
    case 7:
        return TroubleDisk();
    case 8:
        port.line.LineErrors(Chance.Once(2) ? LineFraming : LineOverrun);
        return;
    case 9:
        Doc->SetRole(InstrumentRole::Gps,
                     Chance.Once(2) ? InstrumentId::None : Doc->FindInstrument(kind->first));
        Doc->SetImmersed(kind->first, Chance.Once(2));
        return;
    case 10:
        if (Touches > 0)
            TouchFile();
        return;
    }
}

void CSimulation::BeginLog() {
    if (Doc->RawLog.Status().loggingActive)
        return;
    LogOptions options;
    options.timeStampEnabled = Chance.Once(3);
    const std::uint64_t kind = Chance.Below(4);
    options.durationEnabled = kind == 1 || kind == 2;
    options.duration = {0, static_cast<std::int32_t>(Chance.Between(1, 200)), 0};
    options.repeatEnabled = kind == 2;
    options.repeatInterval = {0, 0, static_cast<std::int32_t>(Chance.Between(1, 90))};
    options.everyEnabled = kind == 3;
    options.every = {0, static_cast<std::int32_t>(Chance.Between(3, 600)), 0};
    LogNaming naming;
    naming.logNamingMode = std::array{LogNamingMode::TimeStamp, LogNamingMode::UserFileName,
                                      LogNamingMode::Sqm}[Chance.Below(3)];
    naming.logDirectory = Logs;
    naming.logUserFileName = Format("cast%llu.raw", static_cast<unsigned long long>(++Names));
    naming.numbered = !Chance.Once(4);
    naming.sqmBaseName = Format("sqm%llu", static_cast<unsigned long long>(Names));
    TimeNamed = naming.logNamingMode == LogNamingMode::TimeStamp;
    Require(Doc->RawLog.SetNaming(naming).empty() && Doc->RawLog.SetLogOptions(options).empty(),
            "the settings of a log are refused");
    Doc->RawLog.SetWaitingCapacity(std::size_t{1} << Chance.Between(14, 17));
    const bool begun = Doc->RawLog.BeginLogFile();
    Require(begun || FullUntil != 0 || GoneUntil != 0, "no log is begun");
}

/// The operator disconnects, and connects again at once or leaves it to the next time.
void CSimulation::Disconnect(SimulatedPort& port) {
    if (port.line.IsOpen()) {
        port.line.LetGo();
        port.sent->End();
        Require(Doc->DisconnectResource(port.id) == CommResult::Success, "no disconnection");
    }
    if (!Chance.Once(3))
        static_cast<void>(Doc->ConnectResource(port.id)); // it may be unplugged
}

void CSimulation::Unplug(SimulatedPort& port) {
    if (!port.line.IsOpen() || port.backAt != 0)
        return;
    port.sent->End();
    port.line.Lose();
    while (Doc->Snapshot().Find(port.id)->figures.connected)
        Doc->Acquisition.TakeCommands(1000);
    port.backAt = Now() + Chance.Between(100, 400'000);
    ++Total.losses;
}

void CSimulation::StepClock() {
    const std::int64_t size =
        Chance.Once(2) ? Chance.Between(50, 2000) : Chance.Between(2000, 9'000'000);
    Clock.StepWall(Chance.Once(2) ? size : -size);
    ++Steps;
    ++Total.steps;
    Pass(1100);
    Step();
}

/// The disk is full for a while, or stalls while no log is to end: its end would wait for ever.
void CSimulation::TroubleDisk() {
    const std::int64_t until = Now() + Chance.Between(1000, Chance.Once(3) ? 3'000'000 : 100'000);
    if (FullUntil != 0)
        return;
    Doc->RawLog.WaitForDisk();
    CRecursiveLock lock(Doc->DocLock);
    if (Chance.Once(2)) {
        disk::SetRoom(Chance.Between(0, 4000));
        FullUntil = until;
        ++Total.full;
    } else if (!Doc->Options.everyEnabled && Doc->RawLog.NextTimer() > until + 10'000) {
        disk::SetStalled(true);
        StallUntil = until;
        ++Total.stalls;
    }
}

/// Somebody lays hands on the file that is written; the program must notice and go on or end.
void CSimulation::TouchFile() {
    Step(); // what has come goes into the file as it is
    const LogStatus log = Doc->RawLog.Status();
    if (!log.logOpen || log.recovering || FullUntil != 0 || GoneUntil != 0)
        return;
    Doc->RawLog.WaitForDisk();
    LogFile& file = Files.back();
    const std::string kept = Kept + std::to_string(++Names);
    const std::uint64_t number = disk::FileNumber(file.path);
    Require(disk::AwaitSync(number), "the log is not synchronised");
    const std::uint64_t what = Chance.Below(Stops ? 5 : 6);
    if (what <= 1) { // deleted; another file has its name
        fs::create_hard_link(file.path, kept);
        fs::remove(file.path);
        if (what == 1)
            std::ofstream(file.path) << "other";
        file.kept = kept;
    } else if (what == 2) {
        fs::rename(file.path, kept);
        file.kept = kept;
    } else if (what == 3) { // what it held is gone, and must be said to be
        fs::copy_file(file.path, kept);
        fs::resize_file(file.path, 0);
        file.kept = kept;
    } else if (what == 4 && file.path.starts_with(Logs)) {
        fs::rename(Logs.substr(0, Logs.size() - 1), Temp.Path + "away");
        GoneUntil = Now() + Chance.Between(1000, 100'000);
    } else if (what == 5 && Now() - LastSyncFailure > 60'000) {
        disk::SetSyncFails(true);
        LastSyncFailure = Now();
    } else {
        return;
    }
    const std::string path = file.path;
    for (int rounds = 0; rounds < 10 && !Ended.contains(path); ++rounds) {
        Require(disk::AwaitSync(number), "the log is not synchronised");
        Step();
    }
    disk::SetSyncFails(false);
    Require(Ended.contains(path) && Told.contains(path),
            Format("%s: nobody noticed what befell it (%d)", path.c_str(), static_cast<int>(what)));
    ++Total.touched;
    --Touches;
}

} // namespace qor
