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
constexpr int LookMilliseconds = 50;

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
    {
        CLock lock(JobLock);
        Ending = true;
        JobsChanged.NotifyAll();
    }
    Patient.Join();
    Document.DisconnectAll();
    Document.RawLog.EndLogFile(true);
    Loop.Stop();
}

std::string CEngine::Start() {
    return Loop.Start() && Patient.Start(ThreadPriority::Normal, [this] { RunJobs(); })
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

void CEngine::Work(std::function<void()> job, std::function<void()> then) {
    CLock lock(JobLock);
    Jobs.push_back({std::move(job), std::move(then)});
    JobsChanged.NotifyAll();
}

void CEngine::FinishWork() {
    for (;;) {
        Asker.Decline();
        CLock lock(JobLock);
        const auto done = [this]() REQUIRES(JobLock) { return Jobs.empty(); };
        if (!Patient.IsRunning() || JobsChanged.WaitFor(JobLock, LookMilliseconds, done))
            return;
    }
}

void CEngine::RunJobs() {
    for (Job job; TakeJob(job);) {
        job.job();
        if (job.then)
            QMetaObject::invokeMethod(this, job.then, Qt::QueuedConnection);
        CLock lock(JobLock);
        Jobs.pop_front();
        JobsChanged.NotifyAll();
    }
}

bool CEngine::TakeJob(Job& job) {
    CLock lock(JobLock);
    const auto any = [this]() REQUIRES(JobLock) { return Ending || !Jobs.empty(); };
    while (!JobsChanged.WaitFor(JobLock, LookMilliseconds, any)) {
    }
    if (Ending)
        return false;
    job = Jobs.front();
    return true;
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
