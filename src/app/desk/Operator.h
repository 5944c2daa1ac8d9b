// SPDX-License-Identifier: GPL-3.0-or-later
//
// The operator at the desktop, as the engine sees him: what is shown or beeped is posted to the
// user interface and returns at once, from any thread. Only questions wait: on another thread for
// the answer, on the user interface's own in an event loop, so that windows and frames go on.
#pragma once

#include "base/Lock.h"
#include "session/UserService.h"

#include <QObject>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>

namespace qor {

class COperator final : public QObject, public CUserService {
    Q_OBJECT

  public:
    using QObject::QObject;
    ~COperator() override { CancelQuestions(); }

    void ShowMessage(const std::string& text) override;
    bool AskYesNo(const std::string& text) override;
    void Beep(BeepKind kind) override;
    void CancelQuestions() override;
    LogAnswer ConfirmLog(const LogQuestion& question) override;
    void RequestClose() override;

    // The first answer to a question counts.
    void Answer(quint64 question, bool yes);
    void Answer(quint64 question, LogAnswer answer);
    /// Answers what waits with no, so that the caller comes back.
    void Decline();

  signals:
    // On the user interface's thread. A question waits until it is answered, so somebody listens.
    void Told(QString text);
    void Beeped();
    void CloseAsked();
    void Asked(quint64 question, QString text);
    void LogShown(quint64 question, const qor::LogQuestion& shown);
    /// The engine wants no answer any more.
    void TakenBack(quint64 question);

  private:
    LogAnswer Wait(const std::function<void(quint64)>& put);
    bool IsAnswered(quint64 question) const;

    mutable CMutex Guard; ///< a leaf
    CCondition Changed;
    quint64 Last GUARDED_BY(Guard) = 0;
    std::map<quint64, std::optional<LogAnswer>> Questions GUARDED_BY(Guard); ///< that wait
    bool Cancelled GUARDED_BY(Guard) = false;
};

} // namespace qor
