// SPDX-License-Identifier: GPL-3.0-or-later
//
// The forms of logging and of the cast: station, log options, naming, the question before a run,
// tare by hand, comment.
#include "app/dialogs/FormFields.h"
#include "session/LogName.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <array>
#include <utility>

namespace qor {

namespace {

/// The station's texts as forms show them, by the fields of CheckForm.
struct StationRow {
    const char* label;
    const char* field;
    std::string StationInformation::*text;
};
constexpr std::array StationRows{
    StationRow{QT_TRANSLATE_NOOP("qor::CForm", "&Station"), "stationId",
               &StationInformation::stationId},
    StationRow{QT_TRANSLATE_NOOP("qor::CForm", "C&ast"), "cast", &StationInformation::cast},
    StationRow{QT_TRANSLATE_NOOP("qor::CForm", "C&ruise"), "cruiseId",
               &StationInformation::cruiseId},
    StationRow{QT_TRANSLATE_NOOP("qor::CForm", "&Operator"), "operatorName",
               &StationInformation::operatorName},
    StationRow{QT_TRANSLATE_NOOP("qor::CForm", "&Latitude"), "latitude",
               &StationInformation::latitude},
    StationRow{QT_TRANSLATE_NOOP("qor::CForm", "Lon&gitude"), "longitude",
               &StationInformation::longitude},
    StationRow{QT_TRANSLATE_NOOP("qor::CForm", "&Zone"), "zone", &StationInformation::zone},
    StationRow{QT_TRANSLATE_NOOP("qor::CForm", "Co&mment"), "comment",
               &StationInformation::comment},
};

/// The naming modes in the order in which the form offers them.
struct NamingChoice {
    LogNamingMode mode;
    const char* text;
};
constexpr std::array NamingChoices{
    NamingChoice{LogNamingMode::TimeStamp,
                 QT_TRANSLATE_NOOP("qor::CForm", "Time stamp: the time at which a log begins")},
    NamingChoice{LogNamingMode::AutoCast,
                 QT_TRANSLATE_NOOP("qor::CForm", "Station and cast: the cast moves on by itself")},
    NamingChoice{LogNamingMode::UserFileName,
                 QT_TRANSLATE_NOOP("qor::CForm", "File name: as it is given")},
    NamingChoice{LogNamingMode::Sqm,
                 QT_TRANSLATE_NOOP("qor::CForm", "SQM: a name and a number that counts up")},
};

int PlaceOf(LogNamingMode mode) {
    int place = 0;
    while (NamingChoices[static_cast<std::size_t>(place)].mode != mode)
        ++place;
    return place;
}

QComboBox* AddModes(CForm& form, const std::shared_ptr<NamingForm>& record) {
    auto* modes = new QComboBox;
    for (const NamingChoice& choice : NamingChoices)
        modes->addItem(CForm::tr(choice.text));
    modes->setCurrentIndex(PlaceOf(record->mode));
    form.AddField(CForm::tr("&Names"), modes, FaultIn(record, "station"));
    QObject::connect(modes, &QComboBox::currentIndexChanged, &form, [&form, record](int place) {
        record->mode = NamingChoices[static_cast<std::size_t>(place)].mode;
        form.Check();
    });
    return modes;
}

/// A field that can be written into while its switch is on.
void Follow(QCheckBox* box, QWidget* field) {
    field->setEnabled(box->isChecked());
    QObject::connect(box, &QCheckBox::toggled, field, &QWidget::setEnabled);
}

} // namespace

CForm* OpenStation(const FormFrame& frame, FormDone done) {
    if (CForm* open = FindOpen(frame.parent, "station"))
        return open;
    CForm* form = NewForm(frame, "station", CForm::tr("Station"));
    const StationInformation opened = StationOf(frame.doc);
    const auto station = std::make_shared<StationInformation>(opened);
    const LogNamingMode mode = NamingModeOf(frame.doc);
    for (const StationRow& row : StationRows)
        BindText(
            *form, CForm::tr(row.label), Part(station, row.text),
            [station, mode, field = row.field] { return CheckForm(*station, mode).Of(field); });
    SetApply(
        form, frame,
        [&doc = frame.doc, opened, station] { return ApplyStation(doc, opened, *station); },
        std::move(done));
    form->Open();
    return form;
}

CForm* OpenLogOptions(const FormFrame& frame, FormDone done) {
    if (CForm* open = FindOpen(frame.parent, "log-options"))
        return open;
    CForm* form = NewForm(frame, "log-options", CForm::tr("Log options"));
    const auto record = std::make_shared<LogOptionsForm>(LogOptionsFormOf(frame.doc));
    QCheckBox* useDuration = BindSwitch(*form, CForm::tr("&End each log after a time"),
                                        Part(record, &LogOptionsForm::useDuration));
    QLineEdit* duration =
        BindText(*form, CForm::tr("&Length [h:mm:ss]"), Part(record, &LogOptionsForm::duration),
                 FaultIn(record, "duration"));
    Follow(useDuration, duration);
    QCheckBox* useRepeat = BindSwitch(*form, CForm::tr("&Begin a log again and again"),
                                      Part(record, &LogOptionsForm::useRepeat));
    QLineEdit* repeat = BindText(*form, CForm::tr("Pa&use between logs [h:mm:ss]"),
                                 Part(record, &LogOptionsForm::repeat), FaultIn(record, "repeat"));
    Follow(useRepeat, repeat);
    BindSwitch(*form, CForm::tr("&Time stamps once a second ($PCZDA)"),
               Part(record, &LogOptionsForm::timeStamps));
    QCheckBox* gps = BindSwitch(*form, CForm::tr("&Position of the GPS in the header"),
                                Part(record, &LogOptionsForm::gpsHeader));
    if (!record->hasGps && !record->gpsHeader) {
        gps->setEnabled(false);
        gps->setToolTip(CForm::tr("No instrument has the role of the GPS."));
    }
    BindSwitch(*form, CForm::tr("&Replace an existing file where nobody can be asked"),
               Part(record, &LogOptionsForm::overwriteExisting));
    SetApply(
        form, frame, [&doc = frame.doc, record] { return ApplyLogOptions(doc, *record); },
        std::move(done));
    form->Open();
    return form;
}

CForm* OpenNaming(const FormFrame& frame, FormDone done) {
    if (CForm* open = FindOpen(frame.parent, "naming"))
        return open;
    CForm* form = NewForm(frame, "naming", CForm::tr("Naming of logs"));
    const NamingForm opened = NamingFormOf(frame.doc);
    const auto record = std::make_shared<NamingForm>(opened);
    AddModes(*form, record);
    BindFolder(*form, frame.theme, CForm::tr("&Folder"), Part(record, &NamingForm::directory),
               FaultIn(record, "directory"));
    QLineEdit* name =
        BindText(*form, CForm::tr("File &name"), Part(record, &NamingForm::userFileName),
                 FaultIn(record, "userFileName"));
    QLineEdit* base =
        BindText(*form, CForm::tr("SQM &base name"), Part(record, &NamingForm::sqmBaseName),
                 FaultIn(record, "sqmBaseName"));
    QLineEdit* number =
        BindText(*form, CForm::tr("SQM n&umber"), Part(record, &NamingForm::sqmSequence),
                 FaultIn(record, "sqmSequence"));
    QLabel* next = form->AddNote({});
    next->setAccessibleName(CForm::tr("Next log"));
    QObject::connect(form, &CForm::Checked, form, [=] {
        name->setEnabled(record->mode == LogNamingMode::UserFileName);
        base->setEnabled(record->mode == LogNamingMode::Sqm);
        number->setEnabled(record->mode == LogNamingMode::Sqm);
        const QString shown = Shown(NextName(*record));
        next->setText(shown.isEmpty() ? CForm::tr("The next log has no name yet.")
                                      : CForm::tr("The next log: %1").arg(shown));
    });
    SetApply(
        form, frame,
        [&doc = frame.doc, opened, record] { return ApplyNaming(doc, opened, *record); },
        std::move(done));
    form->Open();
    return form;
}

CForm* OpenOverride(const FormFrame& frame, const LogQuestion& question,
                    std::function<void(LogAnswer)> done) {
    CForm* form = NewForm(frame, "override", CForm::tr("Begin a log"));
    const auto record = std::make_shared<OverrideForm>(
        OverrideForm{question.displayName, question.station, NamingModeOf(frame.doc)});
    const auto add = [&](const QString& label, const std::string& text, const char* field) {
        auto* line = new QLabel(Shown(text));
        line->setTextFormat(Qt::PlainText);
        line->setWordWrap(true);
        form->AddField(label, line, FaultIn(record, field));
    };
    add(CForm::tr("Next log"), record->displayName, "displayName");
    for (const StationRow& row : StationRows)
        if (!(record->station.*row.text).empty() || row.text == &StationInformation::stationId)
            add(CForm::tr(row.label).remove(QLatin1Char('&')), record->station.*row.text,
                row.field);
    form->SetOkText(CForm::tr("&Log as shown"));
    QPushButton* change = form->AddButton(CForm::tr("C&hange first"));
    const auto answer = std::make_shared<LogAnswer>(LogAnswer::Cancel);
    QObject::connect(change, &QPushButton::clicked, form, [form, answer] {
        *answer = LogAnswer::ChangeFirst;
        form->reject();
    });
    form->SetAction([answer] {
        *answer = LogAnswer::LogAsShown;
        return true;
    });
    QObject::connect(form, &QDialog::finished, form,
                     [answer, done = std::move(done)] { done(*answer); });
    form->Open();
    if (form->OkButton()->isEnabled())
        form->OkButton()->setFocus();
    return form;
}

CForm* OpenTare(const FormFrame& frame, FormDone done) {
    if (CForm* open = FindOpen(frame.parent, "tare"))
        return open;
    CForm* form = NewForm(frame, "tare", CForm::tr("Pressure tare"));
    const auto record = std::make_shared<TareForm>(TareFormOf(frame.doc));
    form->AddNote(CForm::tr("What the pressure sensor of the profiler reads in air. Every depth "
                            "is less by it."));
    BindText(*form, CForm::tr("&Pressure in air [dbar]"), Part(record, &TareForm::pressure),
             FaultIn(record, "pressure"));
    SetApply(
        form, frame, [&doc = frame.doc, record] { return ApplyTare(doc, *record); },
        std::move(done));
    form->Open();
    return form;
}

CForm* OpenComment(const FormFrame& frame, const QString& stamp, FormDone done) {
    CForm* form = NewForm(frame, "comment", CForm::tr("Comment at %1").arg(stamp));
    const auto text = std::make_shared<std::string>();
    QLineEdit* edit = BindText(*form, CForm::tr("&Comment"), text, [text] {
        return text->find_first_not_of(" \t") == std::string::npos ? std::string("Write a comment.")
                                                                   : std::string();
    });
    edit->setMaxLength(1000);
    SetApply(
        form, frame,
        [&doc = frame.doc, stamp = stamp.toStdString(), text] {
            ReportComment(doc, stamp, *text);
            return std::string();
        },
        std::move(done));
    form->Open();
    return form;
}

} // namespace qor
