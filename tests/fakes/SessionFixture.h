// SPDX-License-Identifier: GPL-3.0-or-later
//
// A session on a bench: a document with a manual clock, a scripted operator and a folder of its
// own. Frames are offered to the log as if a port had cut them.
#pragma once

#include "base/Text.h"
#include "fakes/ManualClock.h"
#include "fakes/ScriptedPort.h"
#include "fakes/ScriptedUser.h"
#include "fakes/TempFolder.h"
#include "platform/File.h"
#include "session/QorViewDoc.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

namespace qor {

/// A definition of fixed frames: sync header, two-byte value, frame counter.
inline std::string CounterDefinition(const std::string& name) {
    return Format("INSTRUMENT %s '' %zu AS 0 NONE\nVALUE NONE '' 2 BU 0 COUNT\n"
                  "FRAME COUNTER '' 1 BU 0 COUNT\n",
                  name.c_str(), name.size());
}
inline std::string CounterFrame(const std::string& name, int counter) {
    return name + "\x01\x02" + static_cast<char>(counter);
}

/// A base before ASession for what has a port whose script the test writes.
struct ALine {
    CPortScript Script;
};

class ASession : public testing::Test {
  protected:
    explicit ASession(SerialPortFactory makePort = [] { return nullptr; })
        : Doc(Clock, std::move(makePort), User, Profile) {
        // It is 14:23:05.250 on 3 May 2005, three hours behind UTC.
        Clock.StepWall(3 * 3600 * 1000);
        Clock.UtcOffsetMinutes = -180;
        CRecursiveLock lock(Doc.DocLock);
        Doc.NoDialogs = true;
        Doc.Naming.logDirectory = Folder;
        Port = Doc.AddSerialResource(
            {.portName = "PORT1", .globalSyncString = "", .maxFrameDepth = 2000});
    }
    /// The content of a file that no log has open. Windows gives a closed log free only when its
    /// last synchronisation has ended, which opening it for reading waits for.
    static std::string Content(const std::string& path) {
        CFile file;
        std::string content;
        std::uint8_t buffer[4096];
        std::size_t got = 0;
        EXPECT_EQ(file.OpenForReading(path), FileCause::None) << path;
        while (file.IsOpen() && file.Read(buffer, got) == FileCause::None && got > 0)
            content += AsText({buffer, got});
        return content;
    }
    CQorViewIns* Add(const std::string& name, ResourceId resource) {
        return Find(
            Doc.AddInstrument(Temp.Put(name + ".cal", CounterDefinition(name)), resource).id);
    }
    CQorViewIns* Find(InstrumentId id) {
        CRecursiveLock lock(Doc.DocLock);
        return Doc.Find(id);
    }
    CQorViewIns* Find(const std::string& name) { return Find(Doc.FindInstrument(name)); }
    OwnerFrames FramesThisLog(const CQorViewIns& instrument) {
        CRecursiveLock lock(Doc.DocLock);
        Doc.RawLog.LockIsHeld();
        return Doc.RawLog.FramesThisLog(instrument);
    }

    /// Leads frames through the session as if a port had cut them, stamped with now.
    void Process(const CQorViewIns& instrument, const std::vector<std::string>& frames,
                 bool error = false) {
        CFrameQueue queue;
        CFrameInfo info;
        info.identity = static_cast<std::uint32_t>(instrument.Id);
        info.time = Clock.Now();
        for (const std::string& bytes : frames)
            queue.Push(info, AsBytes(bytes), 0).Error = error;
        Doc.Acquisition.ProcessFrames(queue);
    }
    /// The same, and waits until the disk has what was logged.
    void Offer(const CQorViewIns& instrument, const std::vector<std::string>& frames,
               bool error = false) {
        Process(instrument, frames, error);
        Doc.RawLog.WaitForDisk();
        Doc.RawLog.ShowPending();
    }
    /// Begins a log of this user file name.
    bool Begin(const std::string& name = "cast.raw") {
        SetMode(LogNamingMode::UserFileName, name);
        return Doc.RawLog.BeginLogFile();
    }
    void SetMode(LogNamingMode mode, const std::string& userName = "") {
        LogNaming naming;
        naming.logNamingMode = mode;
        naming.logDirectory = Folder;
        naming.logUserFileName = userName;
        naming.sqmBaseName = "sqm";
        EXPECT_EQ(Doc.RawLog.SetNaming(naming), "");
    }
    /// Changes options or one member of the session under the lock.
    template <class Change> void Set(Change change) {
        CRecursiveLock lock(Doc.DocLock);
        change(Doc.Options);
    }
    template <class Owner, class Value>
    void Set(Value Owner::*member, std::type_identity_t<Value> value) {
        CRecursiveLock lock(Doc.DocLock);
        Doc.*member = std::move(value);
    }
    /// The session log's lines so far without stamps, each followed by "|".
    std::string Reported() {
        while (Doc.Acquisition.TakeCommands(0)) {
        }
        std::string text = Doc.SessionLog.SessionLogText(Read), lines;
        Read += text.size();
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            if (!line.empty() && line.back() == '\r')
                line.pop_back();
            std::size_t stamp = line.find("> ");
            lines += (stamp == 20 ? line.substr(22) : line) + "|";
        }
        return lines;
    }
    /// The frames of a log behind its header block.
    static std::string Data(const std::string& path) {
        std::string content = Content(path);
        std::size_t at = 0;
        while (content.compare(at, 7, "QORHDR ") == 0)
            at += 128;
        return content.substr(at);
    }

    CManualClock Clock;
    CScriptedUser User;
    CMemoryProfileStore Profile;
    CTempFolder Temp;
    const std::string Folder = Temp.Path;
    CQorViewDoc Doc;
    ResourceId Port = ResourceId::None;
    std::size_t Read = 0;
};

} // namespace qor
