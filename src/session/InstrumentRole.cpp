// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/InstrumentRole.h"

#include "base/Text.h"

#include <algorithm>
#include <vector>

namespace qor {
namespace {

constexpr bool RolesFit() {
    return std::ranges::all_of(RoleTable, [](const RoleRow& row) {
        return static_cast<std::size_t>(row.role) < RoleTableSize && !row.name.empty();
    });
}
static_assert(RolesFit());

} // namespace

std::optional<InstrumentRole> RoleOfName(std::string_view name) {
    for (const RoleRow& row : RoleTable)
        if (EqualsNoCase(row.name, name))
            return row.role;
    return std::nullopt;
}

const RoleRow& RowOf(InstrumentRole role) {
    return *std::ranges::find(RoleTable, role, &RoleRow::role);
}

std::string PlainRoleNames() {
    std::string names;
    for (const RoleRow& row : RoleTable) {
        if (!names.empty())
            names += &row == &RoleTable.back() ? " or " : ", ";
        names += row.name;
    }
    return names;
}

std::string AllRoleNames() {
    std::vector<std::string_view> names;
    for (const RoleRow& row : RoleTable)
        names.push_back(row.name);
    return QuotedChoice(names);
}

} // namespace qor
