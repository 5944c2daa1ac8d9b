// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/dialogs/FilePicker.h"

#include "app/ShownText.h"
#include "app/dialogs/FileDialogs.h"
#include "app/look/Icons.h"

#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>

#include <algorithm>

namespace qor {

namespace {

constexpr int ShownRows = 3;

} // namespace

CFilePicker::CFilePicker(const CTheme& theme) : Theme(theme), List(new QListWidget) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(Theme.Px(size::Between));
    List->setAccessibleName(tr("Definitions and packages"));
    List->setFixedHeight(ShownRows * Theme.Target());
    List->setTextElideMode(Qt::ElideRight);
    List->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    row->addWidget(List, 1);
    auto* browse = new QPushButton(tr("&Browse"));
    browse->setAutoDefault(false);
    row->addWidget(browse, 0, Qt::AlignTop);
    setFocusProxy(browse);
    setAcceptDrops(true);
    connect(browse, &QPushButton::clicked, this, &CFilePicker::Browse);
    connect(List, &QListWidget::itemChanged, this, &CFilePicker::Changed);
}

void CFilePicker::Browse() {
    AskOpenFiles(Theme, this, tr("Definitions and packages"),
                 {tr("Definitions and packages (*.sip *.cal *.tdf)"), tr("All files (*)")}, true,
                 [this](const QStringList& chosen) {
                     std::vector<std::string> paths;
                     for (const QString& path : chosen)
                         paths.push_back(path.toStdString());
                     AddFiles(paths);
                 });
}

void CFilePicker::AddFiles(const std::vector<std::string>& paths) {
    for (const std::string& path : paths)
        AddFile(path);
    emit Changed();
}

void CFilePicker::AddFile(const std::string& path) {
    const auto found = std::ranges::find(Files, path, &PickedFile::path);
    if (found != Files.end()) {
        List->item(static_cast<int>(found - Files.begin()))->setCheckState(Qt::Checked);
        return;
    }
    const PickedFile& file = Files.emplace_back(PickFile(path));
    const QSignalBlocker quiet(List);
    auto* item = new QListWidgetItem(Shown(file.text), List);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    item->setCheckState(Qt::Checked);
    item->setSizeHint({0, Theme.Target()});
    const std::string& said = file.fault.empty() ? file.note : file.fault;
    item->setToolTip(Shown(said.empty() ? file.path : file.path + "\n" + said));
    if (!said.empty())
        item->setIcon(SignIcon(Theme, file.fault.empty() ? Sign::Warning : Sign::Error));
}

bool CFilePicker::IsTicked(std::size_t place) const {
    return List->item(static_cast<int>(place))->checkState() == Qt::Checked;
}

std::vector<std::string> CFilePicker::Ticked() const {
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < Files.size(); ++i)
        if (IsTicked(i))
            paths.push_back(Files[i].path);
    return paths;
}

std::string CFilePicker::Fault() const {
    for (std::size_t i = 0; i < Files.size(); ++i)
        if (IsTicked(i) && !Files[i].fault.empty())
            return Files[i].name + ": " + Files[i].fault;
    return {};
}

const PickedFile* CFilePicker::WithSpeed() const {
    for (std::size_t i = 0; i < Files.size(); ++i)
        if (IsTicked(i) && !Files[i].speed.empty())
            return &Files[i];
    return nullptr;
}

void CFilePicker::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void CFilePicker::dropEvent(QDropEvent* event) {
    std::vector<std::string> paths;
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile())
            paths.push_back(url.toLocalFile().toStdString());
    AddFiles(paths);
    event->acceptProposedAction();
}

} // namespace qor
