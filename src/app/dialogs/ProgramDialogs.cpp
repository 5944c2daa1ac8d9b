// SPDX-License-Identifier: GPL-3.0-or-later
//
// The forms of the program itself: ranges of a watched row, settings, about.
#include "app/dialogs/FormFields.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <array>
#include <utility>

namespace qor {

namespace {

QLineEdit* AddLimit(QGridLayout& grid, int row, const QString& label, const QString& group,
                    const std::shared_ptr<std::string>& text) {
    auto* edit = new QLineEdit(Shown(*text));
    edit->setAccessibleName(group + QLatin1Char(' ') + QString(label).remove(QLatin1Char('&')));
    auto* name = new QLabel(label);
    name->setBuddy(edit);
    grid.addWidget(name, row, 0);
    grid.addWidget(edit, row, 1);
    QObject::connect(edit, &QLineEdit::textChanged, edit,
                     [text](const QString& typed) { *text = typed.toStdString(); });
    return edit;
}

/// The two limits of a range and the box that puts it in force.
struct RangeFields {
    QString title, least, greatest, enable; ///< with their keys
    std::string CAncWarningsDlg::*minimum, CAncWarningsDlg::*maximum;
    bool CAncWarningsDlg::*enabled;
};

QGroupBox* MakeRange(const RangeFields& fields, const std::shared_ptr<CAncWarningsDlg>& dialog) {
    auto* group = new QGroupBox(fields.title);
    auto* grid = new QGridLayout(group);
    AddLimit(*grid, 0, fields.least, fields.title, Part(dialog, fields.minimum));
    AddLimit(*grid, 1, fields.greatest, fields.title, Part(dialog, fields.maximum));
    auto* enable = new QCheckBox(fields.enable);
    enable->setAccessibleName(fields.title + QLatin1Char(' ') +
                              QString(fields.enable).remove(QLatin1Char('&')));
    enable->setChecked(dialog.get()->*fields.enabled);
    grid->addWidget(enable, 2, 1);
    QObject::connect(enable, &QCheckBox::toggled, group,
                     [on = Part(dialog, fields.enabled)](bool checked) { *on = checked; });
    return group;
}

/// The looks that are in force when the settings open, for Cancel.
struct KeptLook {
    Look look;
    int percent;
    bool large;
};

QComboBox* AddPalette(CForm& form, CTheme& theme) {
    QComboBox* palette = form.AddChoice(CForm::tr("&Palette"),
                                        {CForm::tr("Light"), CForm::tr("Dark"), CForm::tr("Night")},
                                        static_cast<int>(theme.CurrentLook()));
    QObject::connect(palette, &QComboBox::currentIndexChanged, &form,
                     [&theme](int place) { theme.SetLook(static_cast<Look>(place)); });
    return palette;
}

/// The text size takes effect with what can be used of it.
void AddTextSize(CForm& form, CTheme& theme, const std::shared_ptr<SettingsForm>& record) {
    QLineEdit* percent =
        BindText(form, CForm::tr("&Text size (percent)"), Part(record, &SettingsForm::textSize),
                 FaultIn(record, "textSize"));
    QObject::connect(percent, &QLineEdit::editingFinished, &form, [&theme, record] {
        if (const std::optional<int> size = TextSizeOf(*record))
            theme.SetTextPercent(*size);
    });
}

} // namespace

CForm* OpenWarningRanges(const FormFrame& frame, const WarningRanges& ranges,
                         const std::string& quantity,
                         std::function<void(const WarningRanges&)> done) {
    const auto dialog = std::make_shared<CAncWarningsDlg>(ranges, quantity);
    CForm* form = NewForm(frame, "ranges", Shown(dialog->Caption()));
    form->AddWide(MakeRange({CForm::tr("Warning Ranges"), CForm::tr("M&in"), CForm::tr("M&ax"),
                             CForm::tr("&Enable"), &CAncWarningsDlg::WarnMin,
                             &CAncWarningsDlg::WarnMax, &CAncWarningsDlg::WarnEnabled},
                            dialog));
    form->AddWide(MakeRange({CForm::tr("Alarm Ranges"), CForm::tr("Mi&n"), CForm::tr("Ma&x"),
                             CForm::tr("Ena&ble"), &CAncWarningsDlg::AlarmMin,
                             &CAncWarningsDlg::AlarmMax, &CAncWarningsDlg::AlarmEnabled},
                            dialog));
    const auto edited = std::make_shared<WarningRanges>(ranges);
    form->SetAction(
        [dialog, edited, &user = frame.doc.User] { return dialog->Accept(user, *edited); });
    QObject::connect(form, &QDialog::accepted, form, [edited, done = std::move(done)] {
        if (done)
            done(*edited);
    });
    form->Open();
    return form;
}

CForm* OpenSettings(const FormFrame& frame, CTheme& theme, FormDone done) {
    if (CForm* open = FindOpen(frame.parent, "settings"))
        return open;
    CForm* form = NewForm(frame, "settings", CForm::tr("Settings"));
    const auto record = std::make_shared<SettingsForm>(SettingsFormOf(frame.doc));
    record->textSize = TextSizeText(theme.TextPercent());
    const KeptLook kept{theme.CurrentLook(), theme.TextPercent(), theme.LargeTargets()};
    form->AddHeading(CForm::tr("Look"));
    AddPalette(*form, theme);
    AddTextSize(*form, theme, record);
    QCheckBox* large = form->AddSwitch(CForm::tr("&Large targets"), theme.LargeTargets());
    QObject::connect(large, &QCheckBox::toggled, form,
                     [&theme](bool on) { theme.SetLargeTargets(on); });
    form->AddHeading(CForm::tr("Session log"));
    QCheckBox* keep =
        BindSwitch(*form, CForm::tr("&Keep it in a file"), Part(record, &SettingsForm::sessionLog));
    QLineEdit* folder = BindFolder(*form, frame.theme, CForm::tr("&Folder"),
                                   Part(record, &SettingsForm::sessionLogDirectory),
                                   FaultIn(record, "sessionLogDirectory"));
    folder->setEnabled(keep->isChecked());
    QObject::connect(keep, &QCheckBox::toggled, folder, &QWidget::setEnabled);
    form->AddHeading(CForm::tr("Sounds"));
    BindSwitch(*form, CForm::tr("&Sound when a log begins or ends"),
               Part(record, &SettingsForm::loggingSounds));
    SetApply(
        form, frame,
        [&doc = frame.doc, &theme, record] {
            theme.SetTextPercent(TextSizeOf(*record).value_or(theme.TextPercent()));
            ApplySettings(doc, *record);
            return std::string();
        },
        std::move(done));
    QObject::connect(form, &QDialog::rejected, form, [&theme, kept] {
        theme.SetLook(kept.look);
        theme.SetTextPercent(kept.percent);
        theme.SetLargeTargets(kept.large);
    });
    form->Open();
    return form;
}

CForm* OpenAbout(const CTheme& theme, QWidget* parent) {
    if (CForm* open = FindOpen(parent, "about"))
        return open;
    auto* form = new CForm(theme, CForm::tr("About QorView"), parent);
    form->setObjectName(QStringLiteral("about"));
    form->AddHeading(QStringLiteral("QorView ") + QString::fromLatin1(QORVIEW_VERSION));
    form->AddNote(
        CForm::tr("Acquires, shows and logs the telemetry of oceanographic instruments."));
    form->AddNote(CForm::tr("Free software under the GNU General Public License, version 3 or "
                            "later, without any warranty. Made with Qt %1 and QCustomPlot.")
                      .arg(QString::fromLatin1(qVersion())));
    form->CancelButton()->hide();
    form->Open();
    return form;
}

} // namespace qor
