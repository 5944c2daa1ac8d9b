// SPDX-License-Identifier: GPL-3.0-or-later
//
// Definitions and packages in a form: a row a file with a box to tick, what is in it or why nothing
// would come of it; files are browsed for or dropped.
#pragma once

#include "app/look/Theme.h"
#include "views/PickedFile.h"

#include <QWidget>

#include <string>
#include <vector>

class QListWidget;

namespace qor {

class CFilePicker : public QWidget {
    Q_OBJECT

  public:
    explicit CFilePicker(const CTheme& theme);

    /// Adds and ticks; one that is there already is ticked.
    void AddFiles(const std::vector<std::string>& paths);
    std::vector<std::string> Ticked() const;
    /// The first fault of a ticked file, with its name.
    std::string Fault() const;
    /// The first ticked file that asks for a speed; null when none does.
    const PickedFile* WithSpeed() const;

  signals:
    void Changed();

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    bool IsTicked(std::size_t place) const;
    void AddFile(const std::string& path);
    void Browse();

    const CTheme& Theme;
    std::vector<PickedFile> Files;
    QListWidget* List;
};

} // namespace qor
