// SPDX-License-Identifier: GPL-3.0-or-later
//
// The forms of what a session has: properties of a port or file, of an instrument, of a package,
// and who fills which role.
#include "app/dialogs/FormFields.h"
#include "app/dialogs/LineFields.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

#include <utility>

namespace qor {

namespace {

QString TitleOf(const char* title, const FormFacts& facts) {
    return CForm::tr(title).arg(Shown(facts.front().second));
}

CForm* OpenFileFacts(const FormFrame& frame, const FormFacts& facts) {
    CForm* form =
        NewForm(frame, "file", TitleOf(QT_TRANSLATE_NOOP("qor::CForm", "File %1"), facts));
    AddFacts(*form, facts);
    form->CancelButton()->hide();
    form->Open();
    return form;
}

void AddInstrumentSwitches(CForm& form, const std::shared_ptr<InstrumentDefaults>& settings) {
    BindSwitch(form, CForm::tr("&Under water"), Part(settings, &InstrumentDefaults::Immersed));
    BindSwitch(form, CForm::tr("&Acquire its frames"),
               Part(settings, &InstrumentDefaults::AcquisitionEnabled));
    BindSwitch(form, CForm::tr("&Log its frames"), Part(settings, &InstrumentDefaults::LogEnabled));
    QCheckBox* checks = BindSwitch(form, CForm::tr("Check its &frames"),
                                   Part(settings, &InstrumentDefaults::ErrorChecking));
    for (QCheckBox* box : {BindSwitch(form, CForm::tr("Check the &counter"),
                                      Part(settings, &InstrumentDefaults::CounterCheck)),
                           BindSwitch(form, CForm::tr("Check the check&sum"),
                                      Part(settings, &InstrumentDefaults::ChecksumCheck)),
                           BindSwitch(form, CForm::tr("&Beep when a check fails"),
                                      Part(settings, &InstrumentDefaults::BeepOnError))}) {
        box->setEnabled(checks->isChecked());
        QObject::connect(checks, &QCheckBox::toggled, box, &QWidget::setEnabled);
    }
}

/// What stands in a list of holders for an instrument's name.
QString Holder(const std::string& name) {
    return name.empty() ? CForm::tr("nobody") : QString::fromLatin1(name);
}

} // namespace

CForm* OpenPortProperties(const FormFrame& frame, ResourceId resource, FormDone done) {
    const FormFacts facts = FactsOf(frame.doc, resource);
    if (facts.empty())
        return OpenGone(frame, CForm::tr("Port"));
    const std::optional<PortForm> port = PortFormOf(frame.doc, resource);
    if (!port)
        return OpenFileFacts(frame, facts);
    CForm* form = NewForm(frame, "port-properties",
                          TitleOf(QT_TRANSLATE_NOOP("qor::CForm", "Port %1"), facts));
    AddFacts(*form, facts);
    const auto record = std::make_shared<PortForm>(*port);
    AddLineFields(*form, frame.theme, record);
    const auto reconnect = std::make_shared<bool>(IsTriedAgain(frame.doc, resource));
    BindSwitch(*form, CForm::tr("&Try again when lost"), reconnect);
    form->AddNote(CForm::tr("A port that is connected is connected anew when its speed or format "
                            "changes."));
    SetApply(
        form, frame,
        [&doc = frame.doc, work = frame.work, resource, record, reconnect] {
            const auto apply = [&doc, resource, line = *record, again = *reconnect] {
                return ApplyPort(doc, resource, line, again);
            };
            if (!work)
                return apply();
            work(apply);
            return std::string();
        },
        std::move(done));
    form->Open();
    return form;
}

CForm* OpenInstrumentProperties(const FormFrame& frame, InstrumentId instrument, FormDone done) {
    const FormFacts facts = FactsOf(frame.doc, instrument);
    if (facts.empty())
        return OpenGone(frame, CForm::tr("Instrument"));
    CForm* form = NewForm(frame, "instrument",
                          TitleOf(QT_TRANSLATE_NOOP("qor::CForm", "Instrument %1"), facts));
    AddFacts(*form, facts);
    const auto settings =
        std::make_shared<InstrumentDefaults>(frame.doc.Instruments.Settings(instrument));
    BindText(
        *form, CForm::tr("&Title of its windows"), Part(settings, &InstrumentDefaults::Title),
        [settings] { return CheckForm(InstrumentPropertiesForm{settings->Title}).Of("title"); });
    AddInstrumentSwitches(*form, settings);
    const auto asDefault = std::make_shared<bool>(false);
    QCheckBox* keep =
        BindSwitch(*form, CForm::tr("&Use these settings for this name from now on"), asDefault);
    keep->setVisible(!frame.doc.Instruments.DefaultsPath.empty());
    SetApply(
        form, frame,
        [&list = frame.doc.Instruments, instrument, settings, asDefault] {
            std::string fault = list.ChangeSettings(instrument, *settings);
            return fault.empty() && *asDefault ? list.UseAsDefault(instrument) : fault;
        },
        std::move(done));
    form->Open();
    return form;
}

CForm* OpenPackageProperties(const FormFrame& frame, PackageId package, FormDone done) {
    const FormFacts facts = FactsOf(frame.doc, package);
    const std::optional<PackageForm> settings = PackageFormOf(frame.doc, package);
    if (!settings)
        return OpenGone(frame, CForm::tr("Package"));
    CForm* form =
        NewForm(frame, "package", TitleOf(QT_TRANSLATE_NOOP("qor::CForm", "Package %1"), facts));
    AddFacts(*form, facts);
    const auto record = std::make_shared<PackageForm>(*settings);
    QCheckBox* use = BindSwitch(*form, CForm::tr("&Scattering by a given salinity"),
                                Part(record, &PackageForm::useDefaultSalinity));
    QLineEdit* salinity =
        BindText(*form, CForm::tr("Salin&ity"), Part(record, &PackageForm::defaultSalinity),
                 FaultIn(record, "defaultSalinity"));
    salinity->setEnabled(use->isChecked());
    QObject::connect(use, &QCheckBox::toggled, salinity, &QWidget::setEnabled);
    QLineEdit* saturation = BindText(*form, CForm::tr("&Light saturation Ek [umol m-2 s-1]"),
                                     Part(record, &PackageForm::saturationIrradiance),
                                     FaultIn(record, "saturationIrradiance"));
    saturation->setPlaceholderText(CForm::tr("not set"));
    BindText(*form, CForm::tr("&Window of attenuation [m]"),
             Part(record, &PackageForm::attenuationWindow), FaultIn(record, "attenuationWindow"));
    form->AddNote(CForm::tr("When these change, what is computed from the package begins anew."));
    SetApply(
        form, frame,
        [&doc = frame.doc, package, record] {
            const std::optional<PackageSettings> wanted = SettingsOf(*record);
            return wanted ? doc.Packages.ChangeSettings(package, *wanted) : std::string();
        },
        std::move(done));
    form->Open();
    return form;
}

CForm* OpenRoles(const FormFrame& frame, FormDone done) {
    if (CForm* open = FindOpen(frame.parent, "roles"))
        return open;
    CForm* form = NewForm(frame, "roles", CForm::tr("Roles"));
    const auto record = std::make_shared<RolesForm>(RolesFormOf(frame.doc));
    if (record->instruments.empty())
        form->AddNote(CForm::tr("The session has no instrument that could have a role."));
    for (const RoleRow& row : RoleTable) {
        auto* holders = new QComboBox;
        std::vector<std::string> names = Candidates(*record, row.role);
        names.insert(names.begin(), std::string());
        for (const std::string& name : names) {
            holders->addItem(Holder(name));
            if (name == record->holders[row.role])
                holders->setCurrentIndex(holders->count() - 1);
        }
        // Only who could have the role is offered; who has it already may not be able to.
        const bool faulty = !CheckForm(*record).Of(row.name).empty();
        form->AddField(ShownInLanguage(std::string(row.title)), holders,
                       faulty ? FaultIn(record, row.name.data()) : CForm::FaultOf());
        QObject::connect(holders, &QComboBox::currentIndexChanged, form,
                         [form, record, names, role = row.role](int place) {
                             record->holders[role] = names[static_cast<std::size_t>(place)];
                             form->Check();
                         });
    }
    SetApply(
        form, frame, [&doc = frame.doc, record] { return ApplyRoles(doc, *record); },
        std::move(done));
    form->Open();
    return form;
}

} // namespace qor
