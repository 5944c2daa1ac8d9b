// SPDX-License-Identifier: GPL-3.0-or-later
//
// An operator who answers as told and remembers what was shown. Any thread may ask.
#pragma once

#include "base/Lock.h"
#include "session/UserService.h"

#include <atomic>
#include <functional>
#include <utility>
#include <vector>

namespace qor {

class CScriptedUser : public CUserService {
  public:
    // Set before use.
    bool AnswersYes = true;
    LogAnswer Answer = LogAnswer::LogAsShown;
    std::function<void()> WhileAsked; ///< runs inside every question and dialog
    std::function<void()> WhileBeeping;

    void ShowMessage(const std::string& text) override {
        CLock held(Guard);
        Messages.push_back(text);
    }
    bool AskYesNo(const std::string& text) override {
        Note(Questions, text);
        return AnswersYes;
    }
    LogAnswer ConfirmLog(const LogQuestion& question) override {
        const std::string& cast = question.station.cast;
        Note(Dialogs, question.displayName + (cast.empty() ? "" : " of cast " + cast));
        return Answer;
    }
    void Beep(BeepKind kind) override {
        Asterisks += kind == BeepKind::Asterisk;
        if (WhileBeeping)
            WhileBeeping();
    }
    void RequestClose() override { ++CloseRequests; }

    std::vector<std::string> TakeMessages() { return Take(Messages); }
    std::vector<std::string> TakeQuestions() { return Take(Questions); }
    std::vector<std::string> TakeDialogs() { return Take(Dialogs); }
    std::atomic<int> Asterisks{0}, CloseRequests{0};

  private:
    void Note(std::vector<std::string>& list, const std::string& text) {
        {
            CLock held(Guard);
            list.push_back(text);
        }
        if (WhileAsked)
            WhileAsked();
    }
    std::vector<std::string> Take(std::vector<std::string>& list) {
        CLock held(Guard);
        return std::exchange(list, {});
    }

    CMutex Guard;
    std::vector<std::string> Messages, Questions, Dialogs;
};

} // namespace qor
