// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/MenuPopup.h"

#include "app/ShownText.h"

#include <QMenu>

namespace qor {

void FillMenu(QMenu& menu, const Menu& entries) {
    menu.setToolTipsVisible(true);
    for (const MenuEntry& entry : entries) {
        if (entry.text.empty()) {
            menu.addSeparator();
            continue;
        }
        const QString text = ShownInLanguage(entry.text);
        if (!entry.entries.empty()) {
            QMenu* below = menu.addMenu(text);
            below->setEnabled(entry.whyNot.empty());
            FillMenu(*below, entry.entries);
            continue;
        }
        QAction* action = menu.addAction(text);
        action->setCheckable(entry.checkable);
        action->setChecked(entry.checked);
        if (!entry.whyNot.empty()) {
            action->setEnabled(false);
            action->setText(QStringLiteral("%1 (%2)").arg(text, ShownInLanguage(entry.whyNot)));
        }
        QObject::connect(action, &QAction::triggered, action, [choose = entry.choose] {
            if (choose)
                choose();
        });
    }
}

void OpenMenu(const Menu& entries, const QPoint& screenPlace, QWidget* parent) {
    auto* menu = new QMenu(parent);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    FillMenu(*menu, entries);
    menu->popup(screenPlace);
}

} // namespace qor
