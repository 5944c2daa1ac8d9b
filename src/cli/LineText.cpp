// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/LineText.h"

#include "base/Text.h"

namespace qor {

namespace {

constexpr std::string_view ParityLetters = "NOEMS"; // in the order of the parity codes
constexpr std::string_view StopBitTexts[] = {"1", "1.5", "2"};

/// "8N1" into the settings; false when it is none.
bool ParseLineFormat(std::string_view text, SerialResourceSettings& settings) {
    if (text.size() < 3 || text[0] < '5' || text[0] > '8')
        return false;
    char letter = text[1];
    std::size_t parity =
        ParityLetters.find(letter >= 'a' ? static_cast<char>(letter - 'a' + 'A') : letter);
    if (parity == std::string_view::npos)
        return false;
    for (std::uint8_t code = 0; code < 3; ++code) {
        if (text.substr(2) != StopBitTexts[code])
            continue;
        settings.dataBits = static_cast<std::uint8_t>(text[0] - '0');
        settings.parity = static_cast<std::uint8_t>(parity);
        settings.stopBits = code;
        return true;
    }
    return false;
}

/// The text was meant as a line format, rightly or wrongly: "9N1".
bool ResemblesLineFormat(std::string_view text) {
    return text.size() >= 3 && IsDigit(text[0]) && !IsDigit(text[1]) && IsDigit(text[2]);
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

std::optional<PortText> ParsePort(std::string_view text) {
    PortText port;
    SerialResourceSettings& settings = port.settings;
    std::string_view name = text;
    std::string_view last = TakeLastPart(name);
    if (ParseLineFormat(last, settings))
        last = TakeLastPart(name);
    else if (ResemblesLineFormat(last))
        return std::nullopt;
    else if (!WholeCount(last))
        name = text; // the colon belongs to the name
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
    return Format("%u:%u", settings.baudRate, settings.dataBits) +
           ParityLetters[settings.parity % ParityLetters.size()] +
           std::string(StopBitTexts[settings.stopBits % std::size(StopBitTexts)]);
}

std::optional<LogSpan> ParseSpan(std::string_view text) {
    std::int32_t parts[3] = {0, 0, 0}; // hours, minutes, seconds
    std::string_view rest = text;
    for (int i = 2; i >= 0 && !rest.empty(); --i) {
        bool last = rest.find(':') == std::string_view::npos;
        std::string_view part = last ? rest : TakeLastPart(rest);
        std::optional<std::uint32_t> number = WholeCount(part);
        constexpr std::uint32_t limit = 1'000'000;
        if (!number || *number > limit)
            return std::nullopt;
        parts[i] = static_cast<std::int32_t>(*number);
        if (last)
            rest = {};
        else if (rest.empty() || i == 0)
            return std::nullopt;
    }
    LogSpan span{parts[0], parts[1], parts[2]};
    if (!rest.empty() || span.Seconds() == 0)
        return std::nullopt;
    return span;
}

} // namespace qor
