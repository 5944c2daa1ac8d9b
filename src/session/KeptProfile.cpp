// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/KeptProfile.h"

#include "base/Text.h"

namespace qor {

namespace {

bool StandsForItself(char c, std::string_view reserved) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x20 && byte != 0x7f && c != '%' && reserved.find(c) == std::string_view::npos;
}

int HexDigit(char c) {
    constexpr std::string_view Digits = "0123456789abcdef";
    const char lower = c >= 'A' && c <= 'F' ? static_cast<char>(c + ('a' - 'A')) : c;
    const std::size_t place = Digits.find(lower);
    return place == std::string_view::npos ? -1 : static_cast<int>(place);
}

} // namespace

FileCause CKeptProfileStore::Loaded(FileCause cause) {
    Cause = cause;
    Changed.clear();
    return Cause;
}

FileCause CKeptProfileStore::Flush() {
    if (Cause != FileCause::None || Changed.empty())
        return Cause;
    const FileCause cause = Save(Changed);
    if (cause == FileCause::None)
        Changed.clear();
    return cause;
}

void CKeptProfileStore::WriteText(const std::string& section, const std::string& key,
                                  const std::string& value) {
    const auto found = Values.find({section, key});
    if (found != Values.end() && found->second == value)
        return;
    CMemoryProfileStore::WriteText(section, key, value);
    Changed.insert({section, key});
}

std::string EscapeProfileText(std::string_view text, std::string_view reserved) {
    std::string escaped;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool outerBlank = text[i] == ' ' && (i == 0 || i + 1 == text.size());
        if (StandsForItself(text[i], reserved) && !outerBlank)
            escaped += text[i];
        else
            escaped += Format("%%%02X", static_cast<unsigned>(static_cast<unsigned char>(text[i])));
    }
    return escaped;
}

std::string UnescapeProfileText(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool escape = text[i] == '%' && i + 2 < text.size() && HexDigit(text[i + 1]) >= 0 &&
                            HexDigit(text[i + 2]) >= 0;
        plain += escape ? static_cast<char>(HexDigit(text[i + 1]) * 16 + HexDigit(text[i + 2]))
                        : text[i];
        i += escape ? 2 : 0;
    }
    return plain;
}

} // namespace qor
