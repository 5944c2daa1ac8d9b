// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desk/Engine.h"

#include "session/InstrumentDefaults.h"
#include "session/SessionFile.h"
#include "session/SessionSetup.h"

#include <utility>

namespace qor {

namespace {

/// More than anybody reads; the session log has them all.
constexpr std::size_t MostWaiting = 1000;

} // namespace

CEngine::CEngine(CProfileStore& profile, QObject* parent)
    : QObject(parent), Document(
                           Clock, [this] { return MakePort(); }, Asker, profile),
      FrameRates(Document), Loop(Document) {
    Document.MakeManifests();
    Document.Instruments.DefaultsPath = InstrumentDefaultsPath();
    Document.SessionLog.WaitsForOperator = true;
    Document.Acquisition.OnEvent = [this](const Event& event) { Note(event); };
    Document.OnChange = [this] {
        QMetaObject::invokeMethod(this, &CEngine::Changed, Qt::QueuedConnection);
    };
}

CEngine::~CEngine() {
    Asker.CancelQuestions();
    FinishWork();
    Document.DisconnectAll();
    Document.RawLog.EndLogFile(true);
    Loop.Stop();
}

std::string CEngine::Start() {
    return Loop.Start() && PortWork.Start() && LogWork.Start()
               ? std::string()
               : "The system has no threads to give; close other programs.";
}

std::string CEngine::BeginPractice(const std::string& path, const std::string& logFolder) {
    SessionReading reading = LoadSession(path);
    if (!reading.session)
        return reading.refusal;
    reading.session->log.directory = logFolder;
    auto bench = std::make_unique<CPractice>(Clock);
    if (std::string fault = bench->Begin(*reading.session); !fault.empty())
        return fault;
    if (std::string fault = Document.Session.CloseSession(); !fault.empty())
        return fault;
    Bench = std::move(bench);
    CSessionSetup setup(Document);
    return Document.Session.OpenSession(*reading.session, {}, setup);
}

void CEngine::FinishWork() {
    do
        Asker.Decline();
    while (!LogWork.IsDone() || !PortWork.IsDone());
}

std::unique_ptr<CSerialPort> CEngine::MakePort() {
    return Bench ? Bench->MakePort() : MakeSystemSerialPort();
}

/// On the thread that acquires.
void CEngine::Note(const Event& event) {
    if (event.kind == EventKind::Note)
        return;
    CLock lock(EventLock);
    if (Waiting.empty())
        QMetaObject::invokeMethod(this, &CEngine::Deliver, Qt::QueuedConnection);
    if (Waiting.size() < MostWaiting)
        Waiting.push_back(event);
}

void CEngine::Deliver() {
    std::vector<Event> events;
    {
        CLock lock(EventLock);
        events.swap(Waiting);
    }
    emit Happened(events);
}

} // namespace qor
