// SPDX-License-Identifier: GPL-3.0-or-later
//
// Messages for errno numbers, in the neutral language whatever the program's locale.
#include "platform/SystemText.h"

#include <climits>
#include <clocale>
#include <cstring>
#include <locale.h>

namespace qor {

std::string SystemErrorText(std::uint32_t error) {
    static const locale_t neutral = ::newlocale(LC_ALL_MASK, "C", nullptr);
    if (error > INT_MAX || neutral == nullptr)
        return "Unknown error " + std::to_string(error) + "\r\n";
    return std::string(::strerror_l(static_cast<int>(error), neutral)) + "\r\n";
}

} // namespace qor
