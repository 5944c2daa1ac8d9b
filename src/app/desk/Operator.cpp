// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desk/Operator.h"

#include "app/ShownText.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>

namespace qor {

namespace {

constexpr int AnswerLookMilliseconds = 1000;

} // namespace

void COperator::ShowMessage(const std::string& text) {
    QMetaObject::invokeMethod(
        this, [this, shown = Shown(text)] { emit Told(shown); }, Qt::QueuedConnection);
}

void COperator::Beep(BeepKind) {
    QMetaObject::invokeMethod(
        this, [this] { emit Beeped(); }, Qt::QueuedConnection);
}

void COperator::RequestClose() {
    QMetaObject::invokeMethod(
        this, [this] { emit CloseAsked(); }, Qt::QueuedConnection);
}

bool COperator::AskYesNo(const std::string& text) {
    return Wait([this, shown = Shown(text)](quint64 question) { emit Asked(question, shown); }) ==
           LogAnswer::LogAsShown;
}

LogAnswer COperator::ConfirmLog(const LogQuestion& question) {
    return Wait([this, question](quint64 number) { emit LogShown(number, question); });
}

/// A plain question's yes is LogAsShown.
LogAnswer COperator::Wait(const std::function<void(quint64)>& put) {
    quint64 question = 0;
    {
        CLock lock(Guard);
        if (Cancelled)
            return LogAnswer::Cancel;
        question = ++Last;
        Questions[question];
    }
    QMetaObject::invokeMethod(
        this, [put, question] { put(question); }, Qt::QueuedConnection);
    if (QThread::currentThread() == thread())
        while (!IsAnswered(question))
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    CLock lock(Guard);
    const auto answered = [this, question]()
                              REQUIRES(Guard) { return Questions[question].has_value(); };
    while (!Changed.WaitFor(Guard, AnswerLookMilliseconds, answered)) {
    }
    const LogAnswer answer = *Questions[question];
    Questions.erase(question);
    return answer;
}

bool COperator::IsAnswered(quint64 question) const {
    CLock lock(Guard);
    return Questions.at(question).has_value();
}

void COperator::Answer(quint64 question, bool yes) {
    Answer(question, yes ? LogAnswer::LogAsShown : LogAnswer::Cancel);
}

void COperator::Answer(quint64 question, LogAnswer answer) {
    {
        CLock lock(Guard);
        const auto found = Questions.find(question);
        if (found != Questions.end() && !found->second)
            found->second = answer;
        Changed.NotifyAll();
    }
    // The event loop in which the user interface waits looks again.
    QMetaObject::invokeMethod(
        this, [] {}, Qt::QueuedConnection);
}

void COperator::Decline() {
    std::vector<quint64> open;
    {
        CLock lock(Guard);
        for (const auto& [question, answer] : Questions)
            if (!answer)
                open.push_back(question);
    }
    for (const quint64 question : open) {
        Answer(question, LogAnswer::Cancel);
        QMetaObject::invokeMethod(
            this, [this, question] { emit TakenBack(question); }, Qt::QueuedConnection);
    }
}

void COperator::CancelQuestions() {
    {
        CLock lock(Guard);
        Cancelled = true;
    }
    Decline();
}

} // namespace qor
