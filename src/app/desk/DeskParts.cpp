// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desk/DeskParts.h"

#include "app/ShownText.h"
#include "platform/Console.h"
#include "views/NumberText.h"

namespace qor {

FormFrame DeskParts::Form() const {
    return {Theme, &Window, Doc(),
            [parts = *this](const QString& fault) { parts.Say(Sign::Error, "form", fault); },
            [parts = *this](std::function<std::string()> operation) {
                parts.Try("form", std::move(operation));
            }};
}

void DeskParts::Try(const std::string& topic, std::function<std::string()> operation) const {
    Engine.WorkOnPorts([parts = *this, topic, operation = std::move(operation)] {
        const std::string fault = operation();
        QMetaObject::invokeMethod(&parts.Engine,
                                  [parts, topic, fault] { parts.SayFault(topic, fault); });
    });
}

void DeskParts::Say(Sign sign, const std::string& topic, const QString& text,
                    std::vector<MessageButton> buttons) const {
    Window.Strip().Post(
        {topic, sign, TimeOfDayText(Doc().Clock.Now()), text.toStdString(), std::move(buttons)});
}

void DeskParts::SayFault(const std::string& topic, const std::string& fault) const {
    if (!fault.empty())
        Say(Sign::Error, topic, Shown(fault));
}

void DeskParts::TellRefusal(const std::string& refusal) {
    if (!refusal.empty()) // the strip has it too, so nothing is lost where nobody reads this
        static_cast<void>(WriteText(StandardStream::Error, "qorview: " + refusal + '\n'));
}

void DeskParts::SayAll(Sign sign, const std::vector<Refusal>& refusals) const {
    for (const Refusal& refusal : refusals)
        Say(sign, refusal.subject, Shown(refusal.subject + ": " + refusal.reason));
}

} // namespace qor
