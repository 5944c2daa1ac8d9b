// SPDX-License-Identifier: GPL-3.0-or-later
//
// The engine under the desktop: document, acquisition loop, operator and practice bench, and the
// way back from their threads onto that of the user interface. No widget. Made, commanded and
// destroyed on the user-interface thread; acquisition and logging go on without it.
#pragma once

#include "app/desk/JobThread.h"
#include "app/desk/Operator.h"
#include "app/desk/Practice.h"
#include "session/AcquisitionLoop.h"
#include "views/FrameRates.h"

#include <QObject>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qor {

class CEngine : public QObject {
    Q_OBJECT

  public:
    /// The store outlives the engine.
    explicit CEngine(CProfileStore& profile, QObject* parent = nullptr);
    /// Disconnects, ends an open log and waits until the disk has it.
    ~CEngine() override;

    /// Frames are acquired from now on. What is wrong, as one sentence, or nothing.
    std::string Start();

    CQorViewDoc& Doc() { return Document; }
    COperator& Operator() { return Asker; }
    const CFrameRates& Rates() const { return FrameRates; }

    // What may wait runs beside the user interface, in the order asked: for ports, and, because a
    // log waits for its operator's answer, for logs apart.
    void WorkOnPorts(std::function<void()> job) { PortWork.Add(std::move(job)); }
    void WorkOnLog(std::function<void()> job) { LogWork.Add(std::move(job)); }
    /// Questions that wait are answered with no, and what was asked for is done when this returns.
    void FinishWork();

    /// The practice becomes the session, with its logs in that folder. What is wrong, as one
    /// sentence, or nothing.
    std::string BeginPractice(const std::string& path, const std::string& logFolder);
    /// Null while the session is no practice.
    CPractice* Practice() { return Bench.get(); }
    /// The practice's ports have gone with their session: its bench may go too.
    void EndPractice() { Bench.reset(); }

  signals:
    // On the user-interface thread.
    /// What happened, notes for the session log apart, in order.
    void Happened(const std::vector<qor::Event>& events);
    /// Something that faces show has changed.
    void Changed();

  private:
    std::unique_ptr<CSerialPort> MakePort();
    void Note(const Event& event);
    void Deliver();

    CSystemClock Clock;
    COperator Asker;
    std::unique_ptr<CPractice> Bench; ///< outlives the ports of the document
    CQorViewDoc Document;
    CFrameRates FrameRates;
    CAcquisitionLoop Loop;
    CMutex EventLock; ///< a leaf
    std::vector<Event> Waiting GUARDED_BY(EventLock);
    CJobThread PortWork, LogWork; ///< the last members
};

} // namespace qor
