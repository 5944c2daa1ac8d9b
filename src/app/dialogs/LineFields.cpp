// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/dialogs/LineFields.h"

#include <QComboBox>

namespace qor {

namespace {

constexpr const char* UsualSpeeds[] = {"1200",  "2400",  "4800",   "9600",   "19200",
                                       "38400", "57600", "115200", "230400", "460800"};
constexpr const char* UsualFormats[] = {"8N1", "8E1", "8O1", "8N2", "7E1", "7O1"};

template <std::size_t Count>
QComboBox* AddEditable(CForm& form, const QString& label, const char* const (&usual)[Count],
                       const std::shared_ptr<std::string>& text, CForm::FaultOf fault) {
    auto* combo = new QComboBox;
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    for (const char* one : usual)
        combo->addItem(QString::fromLatin1(one));
    combo->setEditText(Shown(*text));
    form.AddField(label, combo, std::move(fault));
    QObject::connect(combo, &QComboBox::editTextChanged, &form,
                     [&form, text](const QString& typed) {
                         *text = typed.toStdString();
                         form.Check();
                     });
    return combo;
}

} // namespace

LineFields AddLineFields(CForm& form, const std::shared_ptr<PortForm>& record) {
    return {AddEditable(form, CForm::tr("&Speed [baud]"), UsualSpeeds,
                        Part(record, &PortForm::speed), FaultIn(record, "speed")),
            AddEditable(form, CForm::tr("&Format"), UsualFormats, Part(record, &PortForm::format),
                        FaultIn(record, "format"))};
}

} // namespace qor
