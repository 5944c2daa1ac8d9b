// SPDX-License-Identifier: GPL-3.0-or-later
//
// A menu as a list, apart from any widget: what a view offers on a right click and what choosing
// does. Made anew each time it is opened, so an entry may hold what it acts on only until then.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

struct MenuEntry {
    std::string text; ///< empty: a line between groups; "&" before the letter of its key
    std::function<void()> choose = {};
    bool checkable = false;
    bool checked = false;
    std::string whyNot = {}; ///< not empty: cannot be chosen now, and this is the reason
    std::vector<MenuEntry> entries = {}; ///< not empty: a menu behind the entry
};

using Menu = std::vector<MenuEntry>;

/// An entry's text as it is read: without the "&" of its key.
std::string PlainText(const MenuEntry& entry);

/// Chooses the entry of this plain text (compared without case), wherever in the menu it stands;
/// one that is checked already stays so. What is wrong, as one sentence, or nothing.
std::string ChooseEntry(const Menu& menu, std::string_view text);

} // namespace qor
