// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/dialogs/FormFields.h"

#include "app/dialogs/FileDialogs.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <utility>

namespace qor {

QLineEdit* BindText(CForm& form, const QString& label, const std::shared_ptr<std::string>& text,
                    CForm::FaultOf fault) {
    auto* edit = new QLineEdit(Shown(*text));
    form.AddField(label, edit, std::move(fault));
    QObject::connect(edit, &QLineEdit::textChanged, &form, [&form, text](const QString& typed) {
        *text = typed.toStdString();
        form.Check();
    });
    return edit;
}

QCheckBox* BindSwitch(CForm& form, const QString& label, const std::shared_ptr<bool>& on) {
    QCheckBox* box = form.AddSwitch(label, *on);
    QObject::connect(box, &QCheckBox::toggled, &form, [&form, on](bool checked) {
        *on = checked;
        form.Check();
    });
    return box;
}

QLineEdit* BindFolder(CForm& form, const CTheme& theme, const QString& label,
                      const std::shared_ptr<std::string>& folder, CForm::FaultOf fault) {
    QLineEdit* edit = BindText(form, label, folder, std::move(fault));
    auto* browse = new QPushButton(CForm::tr("Browse"));
    browse->setAutoDefault(false);
    browse->setAccessibleName(CForm::tr("Browse: %1").arg(edit->accessibleName()));
    form.AddBeside(edit, browse);
    QObject::connect(browse, &QPushButton::clicked, &form, [&form, &theme, edit, label] {
        AskFolder(theme, &form, QString(label).remove(QLatin1Char('&')), edit->text(),
                  [edit](const QStringList& chosen) {
                      if (!chosen.isEmpty())
                          edit->setText(chosen.front());
                  });
    });
    return edit;
}

void AddFacts(CForm& form, const FormFacts& facts) {
    for (const auto& [name, text] : facts) {
        auto* label = new QLabel(Shown(text));
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        form.AddField(ShownInLanguage(name), label);
    }
}

CForm* FindOpen(QWidget* parent, const char* name) {
    if (!parent)
        return nullptr;
    for (auto* form :
         parent->findChildren<CForm*>(QString::fromLatin1(name), Qt::FindDirectChildrenOnly))
        if (form->isVisible()) {
            form->raise();
            form->activateWindow();
            return form;
        }
    return nullptr;
}

CForm* NewForm(const FormFrame& frame, const char* name, const QString& title) {
    auto* form = new CForm(frame.theme, title, frame.parent);
    form->setObjectName(QString::fromLatin1(name));
    return form;
}

void SetApply(CForm* form, const FormFrame& frame, std::function<std::string()> apply,
              FormDone done) {
    form->SetAction([form, tell = frame.tell, apply = std::move(apply)] {
        const QString fault = ShownInLanguage(apply());
        if (fault.isEmpty())
            return true;
        form->ShowFault(fault);
        if (tell)
            tell(fault);
        return false;
    });
    if (done)
        QObject::connect(form, &QDialog::accepted, form, std::move(done));
}

CForm* OpenGone(const FormFrame& frame, const QString& title) {
    CForm* form = NewForm(frame, "gone", title);
    form->AddNote(CForm::tr("It is not in the session any more."));
    form->OkButton()->hide();
    form->Open();
    return form;
}

void CloseForms(QWidget* parent) {
    for (auto* form : parent->findChildren<CForm*>(QString(), Qt::FindDirectChildrenOnly))
        form->reject();
    for (auto* files : parent->findChildren<QFileDialog*>(QString(), Qt::FindDirectChildrenOnly))
        files->reject();
}

} // namespace qor
