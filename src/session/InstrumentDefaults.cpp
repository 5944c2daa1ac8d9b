// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/InstrumentDefaults.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "platform/SettingsFolder.h"
#include "platform/WholeFile.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>

namespace qor {

namespace {

constexpr std::size_t LargestFile = 4U << 20;
constexpr std::size_t DamagedLinesShown = 20;
constexpr std::string_view TitleKey = "Title";
constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

struct Switch {
    std::string_view key;
    bool InstrumentDefaults::*value;
    std::optional<bool> InstrumentRecord::*said; ///< the same in a session
};
constexpr Switch Switches[] = {
    {"Immersed", &InstrumentDefaults::Immersed, &InstrumentRecord::immersed},
    {"LogEnabled", &InstrumentDefaults::LogEnabled, &InstrumentRecord::log},
    {"AcquisitionEnabled", &InstrumentDefaults::AcquisitionEnabled, &InstrumentRecord::acquire},
    {"ErrorChecking", &InstrumentDefaults::ErrorChecking, &InstrumentRecord::check},
    {"CounterCheck", &InstrumentDefaults::CounterCheck, &InstrumentRecord::checkCounter},
    {"ChecksumCheck", &InstrumentDefaults::ChecksumCheck, &InstrumentRecord::checkSum},
    {"BeepOnError", &InstrumentDefaults::BeepOnError, &InstrumentRecord::beep},
};
constexpr std::size_t KeyCount = std::size(Switches) + 1; // and the title

/// The key's place, KeyCount when it is none of ours.
std::size_t KeyIndex(std::string_view key) {
    std::size_t index = 0;
    while (index < std::size(Switches) && !EqualsNoCase(Switches[index].key, key))
        ++index;
    return index < std::size(Switches) || EqualsNoCase(TitleKey, key) ? index : KeyCount;
}

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

/// UTF-8 of which every character is a byte's code point, as those bytes; any other text as it is.
std::string BytesOfText(std::string_view text) {
    std::string bytes;
    if (!IsUtf8(text))
        return std::string(text);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead > 0xC3)
            return std::string(text);
        if (lead >= 0x80)
            bytes += static_cast<char>(lead << 6 | (static_cast<unsigned char>(text[++i]) & 0x3F));
        else
            bytes += text[i];
    }
    return bytes;
}

/// The text as UTF-8; bytes that are none are code points.
std::string TextOfBytes(std::string_view bytes) {
    std::string text;
    if (IsUtf8(bytes))
        return std::string(bytes);
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80)
            text += static_cast<char>(0xC0 | byte >> 6);
        text += byte >= 0x80 ? static_cast<char>(0x80 | (byte & 0x3F)) : c;
    }
    return text;
}

std::string SectionText(std::string_view name) {
    std::string text;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const char c = name[i];
        const bool outerBlank = c == ' ' && (i == 0 || i + 1 == name.size());
        const bool plain = !IsControl(c) && static_cast<unsigned char>(c) < 0x80 && !outerBlank &&
                           c != '[' && c != ']' && c != '%';
        text += plain ? std::string(1, c)
                      : Format("%%%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
    return text;
}

std::optional<char> EscapedByte(std::string_view text) {
    constexpr std::string_view Digits = "0123456789ABCDEF0123456789abcdef";
    if (text.size() < 3 || text[0] != '%')
        return std::nullopt;
    const std::size_t high = Digits.find(text[1]), low = Digits.find(text[2]);
    if (high == std::string_view::npos || low == std::string_view::npos)
        return std::nullopt;
    return static_cast<char>(high % 16 * 16 + low % 16);
}

std::string SectionName(std::string_view text) {
    const std::string bytes = BytesOfText(text);
    std::string name;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::optional<char> escaped = EscapedByte(std::string_view(bytes).substr(i));
        name += escaped.value_or(bytes[i]);
        i += escaped ? 2 : 0;
    }
    return name;
}

struct IniLine {
    enum class Kind : std::uint8_t { Nothing, Section, Setting, Damaged };
    Kind kind = Kind::Nothing;
    std::string section; ///< the instrument's name
    std::string_view key, value;
};

IniLine LineOf(std::string_view text) {
    using enum IniLine::Kind;
    if (text.starts_with(ByteOrderMark))
        text.remove_prefix(ByteOrderMark.size());
    text = Trim(text);
    if (text.empty() || text.front() == ';' || text.front() == '#')
        return {};
    if (std::ranges::any_of(text, [](char c) { return IsControl(c) && c != '\t'; }))
        return {Damaged, {}, {}, {}};
    if (text.front() == '[') {
        const bool whole = text.size() > 1 && text.back() == ']';
        return {whole ? Section : Damaged,
                whole ? SectionName(Trim(text.substr(1, text.size() - 2))) : "",
                {},
                {}};
    }
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos || equals == 0)
        return {Damaged, {}, {}, {}};
    return {Setting, {}, Trim(text.substr(0, equals)), Trim(text.substr(equals + 1))};
}

/// The next line with its end, taken off the text.
std::string_view TakeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end == std::string_view::npos ? end : end + 1);
    text.remove_prefix(line.size());
    return line;
}

/// What is wrong with a setting of ours, or nothing.
std::string Apply(const IniLine& line, InstrumentDefaults& defaults) {
    const std::size_t index = KeyIndex(line.key);
    if (index == KeyCount)
        return {};
    if (index == std::size(Switches)) {
        defaults.Title = TextOfBytes(line.value);
        return {};
    }
    if (line.value != "0" && line.value != "1")
        return std::string(Switches[index].key) + " is 0 or 1";
    defaults.*Switches[index].value = line.value == "1";
    return {};
}

std::string ValueText(const InstrumentDefaults& defaults, std::size_t index) {
    if (index < std::size(Switches))
        return defaults.*Switches[index].value ? "1" : "0";
    std::string title = defaults.Title;
    std::ranges::replace_if(title, IsControl, ' ');
    return std::string(Trim(title));
}

std::string SettingText(const InstrumentDefaults& defaults, std::size_t index) {
    return std::string(index < std::size(Switches) ? Switches[index].key : TitleKey) + '=' +
           ValueText(defaults, index);
}

std::string LineEndOf(std::string_view text) {
    const std::size_t end = text.find('\n');
    return end != std::string_view::npos && end > 0 && text[end - 1] == '\r' ? "\r\n" : "\n";
}

/// Sets one section in the lines of a file.
class CSectionEditor {
  public:
    CSectionEditor(std::string_view text, const std::string& name,
                   const InstrumentDefaults& defaults)
        : Name(name), Defaults(defaults), LineEnd(LineEndOf(text)) {
        while (!text.empty())
            Take(TakeLine(text));
    }

    std::string Text() {
        if (Place == 0) {
            if (!Lines.empty() && !Trim(Lines.back()).empty())
                Lines.push_back(LineEnd);
            Lines.push_back('[' + SectionText(Name) + ']' + LineEnd);
            Place = Lines.size();
        }
        std::string text;
        for (std::size_t i = 0; i <= Lines.size(); ++i) {
            if (i == Place)
                AppendMissing(text);
            if (i < Lines.size())
                AppendLine(text, Lines[i]);
        }
        return text;
    }

  private:
    void Take(std::string_view raw) {
        const IniLine line = LineOf(raw);
        const bool header = line.kind == IniLine::Kind::Section;
        // Behind a header that is no name nobody's settings stand.
        if (header || (line.kind == IniLine::Kind::Damaged && TrimLeft(raw).starts_with('[')))
            Inside = header && line.section == Name;
        const std::size_t index = line.key.empty() ? KeyCount : KeyIndex(line.key);
        Lines.emplace_back(raw);
        if (Inside && index < KeyCount) {
            Written[index] = true;
            if (line.value != ValueText(Defaults, index))
                Lines.back() = SettingText(Defaults, index) + LineEnd;
        }
        if (Inside && (header || !line.key.empty()))
            Place = Lines.size();
    }

    void AppendMissing(std::string& text) const {
        for (std::size_t index = 0; index < KeyCount; ++index)
            if (!Written[index])
                AppendLine(text, SettingText(Defaults, index) + LineEnd);
    }

    /// The last line of a file may have no end.
    void AppendLine(std::string& text, const std::string& line) const {
        if (!text.empty() && text.back() != '\n')
            text += LineEnd;
        text += line;
    }

    const std::string& Name;
    const InstrumentDefaults& Defaults;
    const std::string LineEnd;
    std::vector<std::string> Lines;
    bool Inside = false;                  ///< the section
    std::size_t Place = 0;                ///< behind its last line that says anything; 0: not found
    std::array<bool, KeyCount> Written{}; ///< keys that it has
};

/// True when there is a file to read, or none at all; else why not stands in `fault`.
bool ReadFile(const std::string& path, std::string& text, std::string& fault) {
    const FileCause cause = ReadWholeFile(path, LargestFile, text);
    if (cause == FileCause::None || cause == FileCause::FileNotFound || cause == FileCause::BadPath)
        return true;
    fault = path + ": cannot be read. " +
            (cause == FileCause::InvalidFile ? "It is too large for such a file."
                                             : std::string(GetFileErrorText(cause)));
    return false;
}

} // namespace

InstrumentDefaults InstrumentDefaultsReading::Of(const std::string& name) const {
    const auto found = instruments.find(name);
    return found == instruments.end() ? InstrumentDefaults() : found->second;
}

InstrumentDefaultsReading ReadInstrumentDefaults(std::string_view text, const std::string& path) {
    InstrumentDefaultsReading reading;
    InstrumentDefaults* section = nullptr;
    bool passedOver = false; ///< behind a damaged header
    std::size_t damaged = 0;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::string_view raw = TakeLine(text);
        const IniLine line = LineOf(raw);
        std::string fault;
        switch (line.kind) {
        case IniLine::Kind::Nothing:
            break;
        case IniLine::Kind::Section:
            section = &reading.instruments[line.section];
            passedOver = false;
            break;
        case IniLine::Kind::Setting:
            if (section)
                fault = Apply(line, *section);
            else if (!passedOver)
                fault = "it stands before the first [instrument]";
            break;
        case IniLine::Kind::Damaged:
            fault = "it is neither [instrument] nor KEY=value";
            passedOver = TrimLeft(raw).starts_with('[') || passedOver;
            section = passedOver ? nullptr : section;
            break;
        }
        if (!fault.empty() && ++damaged <= DamagedLinesShown)
            reading.warnings.push_back(
                path + Format(": line %zu is passed over: %s.", number, fault.c_str()));
    }
    if (damaged > DamagedLinesShown)
        reading.warnings.push_back(
            path + Format(": %zu more lines are passed over.", damaged - DamagedLinesShown));
    return reading;
}

std::string WithInstrumentDefaults(std::string_view text, const std::string& name,
                                   const InstrumentDefaults& defaults) {
    return CSectionEditor(text, name, defaults).Text();
}

std::string InstrumentDefaultsPath() {
    const std::string folder = SettingsFolder();
    return folder.empty() ? folder : folder + "Instruments.ini";
}

InstrumentDefaultsReading LoadInstrumentDefaults(const std::string& path) {
    std::string text, fault;
    if (path.empty())
        return {};
    if (!ReadFile(path, text, fault))
        return {{}, {fault + " The built-in settings hold."}};
    return ReadInstrumentDefaults(text, path);
}

std::string SaveInstrumentDefaults(const std::string& path, const std::string& name,
                                   const InstrumentDefaults& defaults) {
    std::string text, fault;
    if (path.empty())
        return "Instruments.ini: there is no folder for settings; set QORVIEW_HOME.";
    if (!ReadFile(path, text, fault))
        return fault;
    FileCause cause = FileCause::None;
    if (const std::size_t end = path.find_last_of({'/', PathSeparator()}); end != std::string::npos)
        cause = MakeDirectories(path.substr(0, end + 1));
    if (cause == FileCause::None)
        cause = WriteWholeFile(path, WithInstrumentDefaults(text, name, defaults));
    return cause == FileCause::None
               ? ""
               : path + ": cannot be saved. " + std::string(GetFileErrorText(cause));
}

InstrumentDefaults SettingsOf(const InstrumentRecord& record, InstrumentDefaults defaults) {
    for (const Switch& row : Switches)
        defaults.*row.value = (record.*row.said).value_or(defaults.*row.value);
    if (record.title)
        defaults.Title = *record.title;
    return defaults;
}

InstrumentRecord RecordOf(const InstrumentDefaults& settings, const InstrumentDefaults& defaults,
                          InstrumentRecord said) {
    for (const Switch& row : Switches)
        if (said.*row.said || settings.*row.value != defaults.*row.value)
            said.*row.said = settings.*row.value;
    if (said.title || settings.Title != defaults.Title)
        said.title = settings.Title;
    return said;
}

} // namespace qor
