// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/Menu.h"

#include "base/Text.h"

namespace qor {

namespace {

const MenuEntry* FindEntry(const Menu& menu, std::string_view text) {
    for (const MenuEntry& entry : menu) {
        if (entry.choose && EqualsNoCase(PlainText(entry), text))
            return &entry;
        if (const MenuEntry* behind = FindEntry(entry.entries, text))
            return behind;
    }
    return nullptr;
}

void CollectTexts(const Menu& menu, std::vector<std::string>& texts) {
    for (const MenuEntry& entry : menu) {
        if (entry.choose)
            texts.push_back(PlainText(entry));
        CollectTexts(entry.entries, texts);
    }
}

} // namespace

std::string PlainText(const MenuEntry& entry) {
    std::string text;
    for (std::size_t i = 0; i < entry.text.size(); ++i) {
        if (entry.text[i] == '&' && i + 1 < entry.text.size())
            ++i; // "&&" stands for the sign itself
        text += entry.text[i];
    }
    return text;
}

std::string ChooseEntry(const Menu& menu, std::string_view text) {
    const MenuEntry* entry = FindEntry(menu, text);
    if (!entry) {
        std::vector<std::string> texts;
        CollectTexts(menu, texts);
        const std::vector<std::string_view> choice(texts.begin(), texts.end());
        return std::string(text) + " cannot be chosen" +
               (choice.empty() ? " here." : "; give " + QuotedChoice(choice) + ".");
    }
    if (!entry->whyNot.empty())
        return std::string(text) + ": " + entry->whyNot;
    if (!entry->checkable || !entry->checked)
        entry->choose();
    return {};
}

} // namespace qor
