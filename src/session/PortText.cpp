// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/PortText.h"

#include "base/Text.h"

#include <algorithm>
#include <iterator>

namespace qor {

namespace {

constexpr std::string_view ParityLetters = "NOEMS"; // in the order of the parity codes
constexpr std::string_view StopBitTexts[] = {"1", "1.5", "2"};

/// The text was meant as a line format, rightly or wrongly: "9N1"; not so "1.0-port0", with which
/// the name of a USB port may end.
bool ResemblesLineFormat(std::string_view text) {
    const std::string lower = ToLower(text);
    return lower.size() >= 3 && IsDigit(lower[0]) && lower[1] >= 'a' && lower[1] <= 'z' &&
           IsDigit(lower[2]);
}

/// The text was meant as a speed, wrongly: "-9600", "99999999999".
bool ResemblesBaudRate(std::string_view text) {
    const bool isSigned = text.starts_with('+') || text.starts_with('-');
    const std::string_view digits = text.substr(isSigned ? 1 : 0);
    return !digits.empty() && std::ranges::all_of(digits, IsDigit) && !WholeCount(text);
}

/// Takes the part behind the last colon off the text; empty when there is no colon.
std::string_view TakeLastPart(std::string_view& text) {
    std::size_t colon = text.rfind(':');
    if (colon == std::string_view::npos)
        return {};
    std::string_view part = text.substr(colon + 1);
    text = text.substr(0, colon);
    return part;
}

} // namespace

std::optional<LineFormat> ParseLineFormat(std::string_view text) {
    if (text.size() < 3 || text[0] < '5' || text[0] > '8')
        return std::nullopt;
    const char letter = text[1];
    const std::size_t parity =
        ParityLetters.find(letter >= 'a' ? static_cast<char>(letter - 'a' + 'A') : letter);
    if (parity == std::string_view::npos)
        return std::nullopt;
    for (std::uint8_t code = 0; code < std::size(StopBitTexts); ++code)
        if (text.substr(2) == StopBitTexts[code])
            return LineFormat{static_cast<std::uint8_t>(text[0] - '0'),
                              static_cast<std::uint8_t>(parity), code};
    return std::nullopt;
}

std::string LineFormatText(const LineFormat& format) {
    return std::to_string(format.dataBits) + ParityLetters[format.parity % ParityLetters.size()] +
           std::string(StopBitTexts[format.stopBits % std::size(StopBitTexts)]);
}

std::optional<PortText> ParsePort(std::string_view text) {
    PortText port;
    SerialResourceSettings& settings = port.settings;
    std::string_view name = text;
    std::string_view last = TakeLastPart(name);
    if (const std::optional<LineFormat> format = ParseLineFormat(last)) {
        settings.dataBits = format->dataBits;
        settings.parity = format->parity;
        settings.stopBits = format->stopBits;
        port.formatGiven = true;
        last = TakeLastPart(name);
    } else if (ResemblesLineFormat(last) || ResemblesBaudRate(last)) {
        return std::nullopt;
    } else if (!WholeCount(last)) {
        name = text; // the colon belongs to the name
    }
    if (name.size() != text.size()) {
        std::optional<std::uint32_t> baudRate = WholeCount(last);
        if (!baudRate || *baudRate == 0)
            return std::nullopt;
        settings.baudRate = *baudRate;
        port.baudGiven = true;
    }
    if (name.empty())
        return std::nullopt;
    settings.portName = name;
    return port;
}

std::string LineTextOf(const SerialResourceSettings& settings) {
    return std::to_string(settings.baudRate) + ":" +
           LineFormatText({settings.dataBits, settings.parity, settings.stopBits});
}

} // namespace qor
