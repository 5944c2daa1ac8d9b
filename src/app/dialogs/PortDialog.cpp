// SPDX-License-Identifier: GPL-3.0-or-later
//
// The form that adds a port with its instruments: which ports there are and why one cannot be had,
// the line, the definitions and packages, and the log that would be first.
#include "app/dialogs/FilePicker.h"
#include "app/dialogs/FormFields.h"
#include "app/dialogs/LineFields.h"
#include "app/dialogs/PortFinder.h"
#include "app/dialogs/PortPicker.h"
#include "session/PortSetup.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

#include <utility>

namespace qor {

namespace {

/// The widgets of the form and what is typed into it; goes with the form.
class CPortDialog : public QObject {
  public:
    CPortDialog(CForm* form, const FormFrame& frame, const PortChoices& choices, PortAdded done);

  private:
    void AddPorts();
    void AddLine();
    void AddFiles(const PortChoices& choices);
    void AddFirstLog(const PortChoices& choices);
    void AddButtons();

    /// A speed that nobody typed: the package's, else that of last time.
    void SuggestLine();
    void ShowWhether(bool valid);
    /// Adds the port; false when nothing was added.
    bool AddToSession(bool connectIt);

    CForm* Form;
    const FormFrame Frame;
    const PortAdded Done;
    const std::shared_ptr<PortForm> Record = std::make_shared<PortForm>();
    const std::shared_ptr<bool> Reconnect = std::make_shared<bool>(false);
    CPortPicker* Picker = nullptr;
    CFilePicker* Files = nullptr;
    LineFields Line{};
    QPushButton* AddOnly = nullptr;
    bool SpeedTyped = false, FormatTyped = false;
};

CPortDialog::CPortDialog(CForm* form, const FormFrame& frame, const PortChoices& choices,
                         PortAdded done)
    : QObject(form), Form(form), Frame(frame), Done(std::move(done)) {
    Record->inUse = ResourceNames(Frame.doc);
    AddPorts();
    AddLine();
    AddFiles(choices);
    AddFirstLog(choices);
    AddButtons();
    connect(Form, &CForm::Checked, this, &CPortDialog::ShowWhether);
    connect(Picker, &CPortPicker::Changed, this, [this] {
        Record->name = Picker->Name();
        SuggestLine();
        Form->Check();
    });
    connect(Files, &CFilePicker::Changed, this, [this] {
        SuggestLine();
        Form->Check();
    });
    auto* finder = new CPortFinder(choices.find ? choices.find : SystemPorts(), this);
    connect(finder, &CPortFinder::Found, this, [this](std::vector<PortFound> ports) {
        Record->inUse = ResourceNames(Frame.doc);
        MarkInSession(ports, Record->inUse);
        Picker->SetPorts(std::move(ports));
    });
    finder->Look();
}

void CPortDialog::AddPorts() {
    Picker = new CPortPicker(Frame.theme, [&store = Frame.doc.Profile](const std::string& name) {
        return LastLineText(store, name);
    });
    Form->AddField(CForm::tr("Port"), Picker, [this] {
        const PortFound* chosen = Picker->Chosen(); // the session may have it by another name
        return chosen && chosen->inSession ? WhyNot(*chosen) : CheckForm(*Record).Of("name");
    });
}

void CPortDialog::AddLine() {
    Line = AddLineFields(*Form, Frame.theme, Record);
    connect(Line.speed->lineEdit(), &QLineEdit::textEdited, this, [this] { SpeedTyped = true; });
    connect(Line.speed, &QComboBox::activated, this, [this] { SpeedTyped = true; });
    connect(Line.format->lineEdit(), &QLineEdit::textEdited, this, [this] { FormatTyped = true; });
    connect(Line.format, &QComboBox::activated, this, [this] { FormatTyped = true; });
    BindSwitch(*Form, CForm::tr("&Try again when lost"), Reconnect);
}

void CPortDialog::AddFiles(const PortChoices& choices) {
    Files = new CFilePicker(Frame.theme);
    Form->AddField(CForm::tr("&Instruments"), Files, [this] { return Files->Fault(); });
    Files->AddFiles(choices.files);
}

void CPortDialog::AddFirstLog(const PortChoices& choices) {
    auto* text = new QLabel(ShownInLanguage(FirstLogText(Frame.doc)));
    text->setWordWrap(true);
    Form->AddField(CForm::tr("First log"), text);
    auto* change = new QPushButton(CForm::tr("C&hange"));
    change->setAutoDefault(false);
    change->setAccessibleName(CForm::tr("Change the naming of logs"));
    Form->AddBeside(text, change);
    const auto refresh = [text, &doc = Frame.doc] { text->setText(Shown(FirstLogText(doc))); };
    connect(Form, &CForm::Checked, text, refresh);
    connect(change, &QPushButton::clicked, this, [this, own = choices.changeFirstLog] {
        if (own)
            own();
        else
            OpenNaming(Frame, [form = QPointer<CForm>(Form)] {
                if (form)
                    form->Check();
            });
    });
}

void CPortDialog::AddButtons() {
    AddOnly = Form->AddButton(CForm::tr("&Add"));
    AddOnly->setAutoDefault(false);
    Form->SetOkText(CForm::tr("Add and &connect"));
    Form->SetAction([this] { return AddToSession(true); });
    connect(AddOnly, &QPushButton::clicked, this, [this] {
        if (AddToSession(false))
            Form->reject();
    });
}

void CPortDialog::SuggestLine() {
    const PickedFile* file = Files->WithSpeed();
    const std::string name = Picker->Name();
    const auto last = LastLine(Frame.doc.Profile, name);
    const std::optional<PortForm> before = last ? std::optional(FormOf(*last)) : std::nullopt;
    if (!SpeedTyped && (file || before))
        Line.speed->setEditText(Shown(file ? file->speed : before->speed));
    if (!FormatTyped && before)
        Line.format->setEditText(Shown(before->format));
    Line.origin->setText(SpeedTyped || !(file || before) ? QString()
                         : file ? CForm::tr("from %1").arg(Shown(file->name))
                                : CForm::tr("as last time"));
}

void CPortDialog::ShowWhether(bool valid) {
    const PortFound* chosen = Picker->Chosen();
    const std::string why = chosen ? WhyNot(*chosen) : std::string();
    AddOnly->setEnabled(valid);
    Form->OkButton()->setEnabled(valid && why.empty());
    Form->OkButton()->setToolTip(ShownInLanguage(why));
}

bool CPortDialog::AddToSession(bool connectIt) {
    const std::optional<SerialResourceSettings> settings = SettingsOf(*Record);
    if (!settings)
        return false;
    const AddedPort added = AddPort(Frame.doc, {*settings, *Reconnect, Files->Ticked()});
    for (const Refusal& refusal : added.refusals)
        if (Frame.tell)
            Frame.tell(Shown(SentenceOf(refusal)));
    if (added.id == ResourceId::None) {
        Form->ShowFault(Shown(SentenceOf(added.refusals.front())));
        return false;
    }
    RememberLine(Frame.doc.Profile, *settings);
    if (Done)
        Done(added.id, connectIt);
    return true;
}

} // namespace

CForm* OpenPort(const FormFrame& frame, const PortChoices& choices, PortAdded done) {
    CForm* form = NewForm(frame, "port", CForm::tr("Add port"));
    new CPortDialog(form, frame, choices, std::move(done));
    form->Open();
    return form;
}

} // namespace qor
