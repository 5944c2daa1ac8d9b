// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/dialogs/LineFields.h"

#include "app/look/Style.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>

namespace qor {

namespace {

constexpr const char* UsualSpeeds[] = {"1200",  "2400",  "4800",   "9600",   "19200",
                                       "38400", "57600", "115200", "230400", "460800"};
constexpr const char* UsualFormats[] = {"8N1", "8E1", "8O1", "8N2", "7E1", "7O1"};

constexpr int MostCharacters = 7; ///< that are usual

template <std::size_t Count>
QComboBox* MakeEditable(CForm& form, const QString& name, const char* const (&usual)[Count],
                        const std::shared_ptr<std::string>& text) {
    auto* combo = new QComboBox;
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->setAccessibleName(name);
    combo->setMinimumContentsLength(MostCharacters);
    for (const char* one : usual)
        combo->addItem(QString::fromLatin1(one));
    combo->setEditText(Shown(*text));
    QObject::connect(combo, &QComboBox::editTextChanged, &form,
                     [&form, text](const QString& typed) {
                         *text = typed.toStdString();
                         form.Check();
                     });
    return combo;
}

/// The outline and the description of a fault, as the form gives them to a field of one widget.
void ShowFault(QComboBox* combo, const std::string& fault) {
    combo->setAccessibleDescription(ShownInLanguage(fault));
    if (combo->property(FaultProperty).toBool() == fault.empty()) {
        combo->setProperty(FaultProperty, !fault.empty());
        combo->update();
    }
}

} // namespace

LineFields AddLineFields(CForm& form, const CTheme& theme,
                         const std::shared_ptr<PortForm>& record) {
    auto* both = new QWidget;
    auto* row = new QHBoxLayout(both);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(theme.Px(size::Between));
    const LineFields fields{
        MakeEditable(form, CForm::tr("Speed [baud]"), UsualSpeeds, Part(record, &PortForm::speed)),
        MakeEditable(form, CForm::tr("Format"), UsualFormats, Part(record, &PortForm::format)),
        new QLabel};
    auto* format = new QLabel(CForm::tr("&Format"));
    format->setBuddy(fields.format);
    row->addWidget(fields.speed);
    row->addSpacing(theme.Px(size::Between));
    row->addWidget(format);
    row->addWidget(fields.format);
    row->addWidget(fields.origin, 1);
    both->setFocusProxy(fields.speed);
    form.AddField(CForm::tr("&Speed [baud]"), both, [record] {
        const FormFaults faults = CheckForm(*record);
        const std::string speed = faults.Of("speed");
        return speed.empty() ? faults.Of("format") : speed;
    });
    QObject::connect(&form, &CForm::Checked, both, [fields, record] {
        const FormFaults faults = CheckForm(*record);
        ShowFault(fields.speed, faults.Of("speed"));
        ShowFault(fields.format, faults.Of("format"));
    });
    return fields;
}

} // namespace qor
