// SPDX-License-Identifier: GPL-3.0-or-later
//
// Fields of a form that write into a record as they are changed, and what all forms do alike:
// opening once, saying facts, acting on OK. For the rooms of Forms.h alone.
#pragma once

#include "app/ShownText.h"
#include "app/dialogs/Form.h"
#include "app/dialogs/Forms.h"
#include "views/SessionForms.h"

#include <memory>

namespace qor {

/// A member of a record, which it keeps alive.
template <class Record, class Member>
std::shared_ptr<Member> Part(const std::shared_ptr<Record>& record, Member Record::*member) {
    return {record, &(record.get()->*member)};
}
/// The fault of a record's field, by the field's name.
template <class Record>
CForm::FaultOf FaultIn(const std::shared_ptr<Record>& record, const char* field) {
    return [record, field] { return CheckForm(*record).Of(field); };
}

QLineEdit* BindText(CForm& form, const QString& label, const std::shared_ptr<std::string>& text,
                    CForm::FaultOf fault = {});
QCheckBox* BindSwitch(CForm& form, const QString& label, const std::shared_ptr<bool>& on);
/// A folder with a button that browses for it.
QLineEdit* BindFolder(CForm& form, const CTheme& theme, const QString& label,
                      const std::shared_ptr<std::string>& folder, CForm::FaultOf fault);
/// Lines that only say something.
void AddFacts(CForm& form, const FormFacts& facts);

/// The form of that name if the window has it open already; it comes to the front.
CForm* FindOpen(QWidget* parent, const char* name);
CForm* NewForm(const FormFrame& frame, const char* name, const QString& title);

/// OK applies; what went wrong is told, stands in the form, and keeps it open.
void SetApply(CForm* form, const FormFrame& frame, std::function<std::string()> apply,
              FormDone done);

/// A form for something that has gone: says so, and there is nothing to press but Cancel.
CForm* OpenGone(const FormFrame& frame, const QString& title);

} // namespace qor
