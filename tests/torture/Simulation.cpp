// SPDX-License-Identifier: GPL-3.0-or-later
//
// Programs begin and end, and their ledgers. See Simulation.h; what happens meanwhile is
// SimulatedWorld.cpp.
#include "torture/Simulation.h"

#include "base/Text.h"

#include <cstdio>
#include <cstdlib>

namespace qor {

namespace fs = std::filesystem;

void CSimulation::Fail(const std::string& what) {
    if (!std::exchange(Failed, true))
        std::printf("seed %llu, after %lld s: %s\n", static_cast<unsigned long long>(Seed),
                    static_cast<long long>(Now() / 1000), what.c_str());
}

void CSimulation::MakePorts() {
    for (int i = 0; i < 3; ++i) {
        FrameLengths lengths;
        std::int64_t instruments = Chance.Between(1, 3);
        for (std::int64_t k = 0; k < instruments; ++k) {
            const std::string name = Format("~P%d%c", i, static_cast<char>('A' + k));
            const auto values = static_cast<std::size_t>(Chance.Between(0, 12));
            std::string text =
                Format("INSTRUMENT %s '' 4 AS 0 NONE\nNUMBER NONE '' 4 BU 0 COUNT\n", name.c_str());
            for (std::size_t v = 0; v < values; ++v)
                text += Format("VALUE %zu '' 2 BU 0 COUNT\n", v);
            Temp.Put(name + ".cal", text + "FRAME COUNTER '' 1 BU 0 COUNT\n");
            lengths[name] = 9 + 2 * values;
        }
        AllLengths.insert(lengths.begin(), lengths.end());
        SimulatedPort& port = Ports.emplace_back();
        port.name = Format("PORT%d", i);
        port.lengths = std::move(lengths);
    }
}

void CSimulation::BeginProgram() {
    const auto find = [this](const std::string& name) -> CStepLine& {
        return std::ranges::find(Ports, name, &SimulatedPort::name)->line;
    };
    Doc = std::make_unique<CQorViewDoc>(
        Clock, [find] { return std::make_unique<CStepPort>(find); }, User, Profile);
    Loop = std::make_unique<CAcquisitionLoop>(*Doc);
    Doc->Acquisition.OnEvent = [this](const Event& event) { Hear(event); };
    Watch = std::make_unique<CFrameWatch>(
        *Doc, [this](CQorViewIns& instrument, const FrameCheckResult&) { Seen(instrument); });
    {
        CRecursiveLock lock(Doc->DocLock);
        Doc->SessionLog.KeepText = false;
        Doc->NoDialogs = true;
        Doc->ExitOnError = Stops = Chance.Once(4);
        if (!Chance.Once(3))
            Doc->SpareDirectories = {Spare};
    }
    Check.emplace(AllLengths);
    Files.clear();
    Ended.clear();
    Told.clear();
    Unstored = Steps = StepsTold = 0;
    for (SimulatedPort& port : Ports)
        AddPort(port);
    Step();
    ++Total.programs;
}

void CSimulation::AddPort(SimulatedPort& port) {
    port.sent.emplace(port.lengths);
    port.lost = 0;
    port.period = Chance.Between(300, 8000);
    port.next = Now() + port.period;
    port.id = Doc->AddSerialResource({.portName = port.name,
                                      .globalSyncString = "",
                                      .maxFrameDepth = static_cast<int>(Chance.Between(20, 100))});
    for (const auto& [name, length] : port.lengths)
        Require(Doc->AddInstrument(Temp.Path + name + ".cal", port.id).Added(), name + " refused");
    Doc->SetReconnect(port.id, true);
    static_cast<void>(Doc->ConnectResource(port.id)); // one that is unplugged comes later
}

void CSimulation::EndProgram() {
    // Where the disk stays full, what waits for it is lost, and said to be.
    const bool staysFull = FullUntil != 0 && Chance.Once(2);
    for (std::int64_t* until : {&StallUntil, &GoneUntil})
        *until = std::min(*until, Now());
    FullUntil = staysFull ? Now() + 1 : std::min(FullUntil, Now());
    EndTroubles();
    if (Chance.Once(3))
        Disconnect(Ports[0]);
    for (SimulatedPort& port : Ports) {
        port.line.LetGo();
        port.sent->End();
    }
    Doc->DisconnectAll();
    Doc->RawLog.ShutDown();
    Doc->Acquisition.TakeFrames();
    Doc->Acquisition.TakeCommands(0);
    FullUntil = std::min(FullUntil, Now());
    EndTroubles();
    const SessionSnapshot snapshot = Doc->Snapshot();
    for (const SimulatedPort& port : Ports)
        CheckPort(port, snapshot.Find(port.id)->figures);
    Require(StepsTold == Steps, Format("%llu of %llu steps of the clock told",
                                       static_cast<unsigned long long>(StepsTold),
                                       static_cast<unsigned long long>(Steps)));
    Watch.reset();
    Loop.reset();
    Doc.reset();
    CheckLogs();
}

/// Every byte is in a frame, discarded, or of a frame that the end of a connection cut short.
void CSimulation::CheckPort(const SimulatedPort& port, const ResourceFigures& figures) {
    const auto same = [&](const char* what, std::uint64_t program, std::uint64_t truth) {
        Require(program == truth, Format("%s: %s: %llu, and were %llu", port.name.c_str(), what,
                                         static_cast<unsigned long long>(program),
                                         static_cast<unsigned long long>(truth)));
    };
    same("bytes received", figures.bytesReceived, port.sent->Given);
    same("bytes discarded", figures.bytesDiscarded - figures.bytesLost, port.sent->Discarded);
    same("bytes cut short", figures.bytesCutShort,
         port.sent->Given - port.sent->Whole - port.sent->Discarded);
    same("frames cut", figures.framesCut, port.sent->Count);
    same("frames lost", figures.framesLost, port.lost + port.sent->Frames.size());
    Total.bytes += port.sent->Given;
    Total.frames += port.sent->Count;
    Total.lost += figures.framesLost;
}

/// Every frame that was to be logged stands in one log, or was said not to.
void CSimulation::CheckLogs() {
    for (const LogFile& file : Files) {
        std::ostringstream content;
        content << std::ifstream(file.kept, std::ios::binary).rdbuf();
        const std::string wrong = Check->Read(content.str());
        Require(wrong.empty(), file.path + " " + wrong);
        Require(Ended.contains(file.path), file.path + ": nobody said that it ended");
    }
    const std::uint64_t missing = Check->CountMissing();
    Require(missing == Unstored, Format("%llu frames are in no log, %llu are said to be",
                                        static_cast<unsigned long long>(missing),
                                        static_cast<unsigned long long>(Unstored)));
    Total.logged += Check->Logged;
    Total.sentences += Check->Sentences;
    Total.unstored += missing;
    Total.logs += Files.size();
    if (Chance.Once(2)) // else their names are taken
        for (const std::string& folder : {Logs, Spare, Kept}) {
            fs::remove_all(folder);
            fs::create_directory(folder);
        }
}

void CSimulation::Hear(const Event& event) {
    if (event.kind == EventKind::LogBegun || event.kind == EventKind::LogGoesOn) {
        Files.push_back({event.subject, event.subject});
        const std::string name = TimeStampFileName(LocalCalendar(Clock.Now()));
        Require(!TimeNamed ||
                    event.subject.find(name.substr(0, name.size() - 4)) != std::string::npos,
                event.subject + " is not of this second");
    } else if (event.kind == EventKind::LogEnded) {
        Ended.insert(event.subject);
    } else if (event.kind == EventKind::LogFailed || event.kind == EventKind::SyncFailed) {
        Told.insert(event.subject);
    } else if (event.kind == EventKind::FramesUnstored) {
        Unstored += std::strtoull(event.text.c_str(), nullptr, 10);
    } else if (event.kind == EventKind::ClockStepped) {
        ++StepsTold;
    }
}

/// Each frame that comes is one that was sent, in order; those before it were lost.
void CSimulation::Seen(const CQorViewIns& instrument) {
    const auto bytes = std::string(AsText(instrument.Live.CurrentFrame()->Span()));
    SimulatedPort& port = Ports[static_cast<std::size_t>(instrument.Name()[2] - '0')];
    std::deque<SentFrame>& frames = port.sent->Frames;
    for (; !frames.empty() && frames.front().bytes != bytes; frames.pop_front())
        ++port.lost;
    if (frames.empty())
        return Fail(port.name + ": a frame that was never sent, or twice");
    Doc->RawLog.LockIsHeld();
    if (Doc->RawLog.Takes(instrument)) {
        frames.front().tagged = Doc->Role(InstrumentRole::Gps) != instrument.Id;
        Check->Expect(instrument.Name(), std::move(frames.front()));
    }
    frames.pop_front();
}

bool CSimulation::Run(std::int64_t hours) {
    for (const std::string& folder : {Logs, Spare, Kept})
        fs::create_directory(folder);
    Pass(Chance.Between(0, 4 * 86'400'000));
    MakePorts();
    const std::int64_t end = Now() + hours * 3'600'000;
    while (Now() < end && !Failed) {
        const std::int64_t programEnds =
            std::min(end, Now() + Chance.Between(1'200'000, 90'000'000));
        BeginProgram();
        while (Now() < programEnds && !Failed)
            Round();
        EndProgram();
    }
    return !Failed;
}

std::string CSimulation::Summary() const {
    const auto number = [](std::uint64_t value) { return std::to_string(value); };
    return number(Total.programs) + " programs, " + number(Total.bytes) + " bytes, " +
           number(Total.frames) + " frames, " + number(Total.lost) + " lost, " +
           number(Total.unstored) + " not stored, " + number(Total.logged) + " and " +
           number(Total.sentences) + " sentences in " + number(Total.logs) + " logs; " +
           number(Total.losses) + " unplugged, " + number(Total.full) + " full and " +
           number(Total.stalls) + " stalled disks, " + number(Total.touched) + " files taken, " +
           number(Total.steps) + " clock steps";
}

} // namespace qor
