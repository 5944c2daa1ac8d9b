// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/dialogs/FileDialogs.h"

#include "app/look/Icons.h"

#include <QAbstractFileIconProvider>
#include <QFileDialog>
#include <QRegularExpression>

#include <utility>

namespace qor {

namespace {

/// Our icons for files and folders; the system's are coloured.
class CIconProvider : public QAbstractFileIconProvider {
  public:
    explicit CIconProvider(const CTheme& theme) : Theme(theme) {}

    QIcon icon(IconType type) const override {
        const bool file = type == File;
        const bool disk = type == Drive || type == Computer || type == Network;
        return ThemeIcon(Theme, file   ? QStringLiteral("log")
                                : disk ? QStringLiteral("save")
                                       : QStringLiteral("open"));
    }
    QIcon icon(const QFileInfo& info) const override { return icon(info.isDir() ? Folder : File); }

  private:
    const CTheme& Theme;
};

QFileDialog* Open(const CTheme& theme, QWidget* parent, const QString& title, FilesChosen then) {
    auto* dialog = new QFileDialog(parent, title);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setOption(QFileDialog::DontUseNativeDialog, theme.IsNight());
    if (theme.IsNight()) {
        auto* icons = new CIconProvider(theme);
        dialog->setIconProvider(icons);
        QObject::connect(dialog, &QObject::destroyed, [icons] { delete icons; });
    }
    QObject::connect(dialog, &QFileDialog::filesSelected, dialog, std::move(then));
    return dialog;
}

/// Of a filter such as "Data (*.csv)".
QStringList EndingsOf(const QString& filter) {
    static const QRegularExpression pattern(QStringLiteral("\\*\\.(\\w+)"));
    QStringList endings;
    for (auto match = pattern.globalMatch(filter); match.hasNext();)
        endings.append(match.next().captured(1));
    return endings;
}

/// The name that stands there ends as one of the filter's does.
void TakeEnding(QFileDialog& dialog, const QString& filter) {
    const QStringList endings = EndingsOf(filter);
    const QFileInfo file(dialog.selectedFiles().value(0));
    if (endings.isEmpty())
        return;
    dialog.setDefaultSuffix(endings.front());
    if (file.fileName().isEmpty() || file.isDir() ||
        endings.contains(file.suffix(), Qt::CaseInsensitive))
        return;
    dialog.selectFile(file.completeBaseName() + QLatin1Char('.') + endings.front());
}

} // namespace

QFileDialog* AskOpenFiles(const CTheme& theme, QWidget* parent, const QString& title,
                          const QStringList& filters, bool several, FilesChosen then) {
    QFileDialog* dialog = Open(theme, parent, title, std::move(then));
    dialog->setFileMode(several ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
    dialog->setNameFilters(filters);
    dialog->show();
    return dialog;
}

QFileDialog* AskSaveFile(const CTheme& theme, QWidget* parent, const QString& title,
                         const QStringList& filters, const QString& suggestion, FilesChosen then) {
    QFileDialog* dialog = Open(theme, parent, title, std::move(then));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setNameFilters(filters);
    // The dialog completes a name itself, so that it asks about the file that will be written.
    dialog->setDefaultSuffix(EndingsOf(filters.value(0)).value(0));
    dialog->selectFile(suggestion);
    QObject::connect(dialog, &QFileDialog::filterSelected, dialog,
                     [dialog](const QString& filter) { TakeEnding(*dialog, filter); });
    dialog->show();
    return dialog;
}

QFileDialog* AskFolder(const CTheme& theme, QWidget* parent, const QString& title,
                       const QString& folder, FilesChosen then) {
    QFileDialog* dialog = Open(theme, parent, title, std::move(then));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setDirectory(folder);
    dialog->show();
    return dialog;
}

} // namespace qor
