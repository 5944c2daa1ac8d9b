// SPDX-License-Identifier: GPL-3.0-or-later
//
// Reading an instrument package: its properties, then member after member. Every failure is said
// and none of them stops the members behind it.
#include "session/Package.h"

#include "base/Text.h"
#include "instrument/DefinitionReader.h"
#include "platform/File.h"
#include "session/FileKind.h"
#include "session/MemberName.h"
#include "session/ZipArchive.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::string_view PropertiesName = "Properties.txt";

/// Watches definitions while they are unpacked: inflating takes time, what a definition holds
/// outside of comments costs memory when it is loaded, and so does its longest line.
class CDefinitionGauge {
  public:
    void Begin() {
        Content = Line = 0;
        Comment = false;
    }
    bool Take(ByteSpan piece) {
        if (piece.size() > BytesLeft)
            return false;
        BytesLeft -= piece.size();
        for (const std::uint8_t byte : piece) {
            if (byte == '\n') {
                Line = 0;
                Comment = false;
                continue;
            }
            Comment = Comment || byte == '#';
            Content += Comment ? 0 : 1;
            if (++Line > PackageLimits::LineBytes || Content > ContentLeft)
                return false;
        }
        return true;
    }
    /// The definition begun stays in memory.
    void Keep() { ContentLeft -= Content; }

  private:
    std::uint64_t BytesLeft = PackageLimits::AllDefinitionsBytes;
    std::uint64_t ContentLeft = PackageLimits::AllContentBytes;
    std::uint64_t Content = 0;
    std::uint64_t Line = 0;
    bool Comment = false;
};

/// One run over a package file.
class CPackageReader {
  public:
    CPackageReader(LoadedPackage& loaded, bool keepTexts) : Loaded(loaded), KeepTexts(keepTexts) {}

    void Read();

  private:
    void Say(std::string text) { Loaded.messages.push_back(std::move(text)); }
    void NotExtracted(const std::string& name) {
        // Kept: the blank between "extracted" and "from" is missing.
        Say("The file " + name + "\r\ncould not be extractedfrom the Instrument Package file.");
        Loaded.failed.push_back({name, DefinitionStatus::NoError, nullptr});
    }
    void NotLoaded(const std::string& name, DefinitionStatus status,
                   std::unique_ptr<CInstrument> instrument);
    bool OpenArchive();
    std::size_t FindProperties() const;
    bool ReadProperties();
    void ReadMember(std::size_t index);
    bool LoadDefinition(std::size_t index, CInstrument& instrument, DefinitionStatus& status,
                        std::string& text);

    LoadedPackage& Loaded;
    const bool KeepTexts;
    CZipArchive Archive;
    std::vector<std::string> Names; ///< of the archive's members, as they are shown
    std::size_t PropertiesIndex = 0;
    CDefinitionGauge Gauge;
};

void CPackageReader::NotLoaded(const std::string& name, DefinitionStatus status,
                               std::unique_ptr<CInstrument> instrument) {
    const std::string& log = instrument->ParseLog();
    Say("The file " + name + "\r\ncould not be loaded from the Instrument Package file.\r\n" +
        log.substr(0, log.find("\r\n")));
    Loaded.failed.push_back({name, status, std::move(instrument)});
}

bool CPackageReader::OpenArchive() {
    const ArchiveStatus status =
        Archive.Open(Loaded.path, {PackageLimits::ArchiveBytes, PackageLimits::DirectoryBytes,
                                   PackageLimits::Members});
    for (const ArchiveMember& member : Archive.Members())
        Names.push_back(MemberNameOf(member.name));
    const std::string subject = "The Instrument Package file: " + Loaded.path + " \r\n";
    switch (status) {
    case ArchiveStatus::Good:
        return true;
    case ArchiveStatus::CannotOpen:
        Say(subject + "could not be opened.");
        break;
    case ArchiveStatus::TooLarge:
        Say(subject +
            Format("is larger than a package may be: %u files, %u MB in all. It was not opened.",
                   static_cast<unsigned>(PackageLimits::Members),
                   static_cast<unsigned>(PackageLimits::ArchiveBytes >> 20)));
        break;
    }
    return false;
}

/// The member's index, or their number where there is none: the one of exactly this name, else in
/// any case, else the only one that stands one folder down (a folder was packed, not its files).
std::size_t CPackageReader::FindProperties() const {
    enum { Exact, AnyCase, InFolder, None };
    const auto rankOf = [](std::string_view name) {
        if (IsHostileName(name))
            return None;
        name.remove_prefix(name.starts_with("./") ? 2 : 0);
        const std::size_t folder = name.find('/') + 1; // 0 where there is none
        if (!EqualsNoCase(name.substr(folder), PropertiesName))
            return None;
        return folder > 0 ? InFolder : name == PropertiesName ? Exact : AnyCase;
    };
    std::size_t index = Names.size();
    int best = None;
    int count = 0;
    for (std::size_t i = 0; i < Names.size(); ++i) {
        const int rank = rankOf(Names[i]);
        if (rank < best) {
            best = rank;
            index = i;
            count = 0;
        }
        count += rank == best ? 1 : 0;
    }
    return best == InFolder && count > 1 ? Names.size() : index;
}

bool CPackageReader::ReadProperties() {
    PropertiesIndex = FindProperties();
    std::string text;
    const bool extracted =
        PropertiesIndex < Names.size() &&
        Archive.Members()[PropertiesIndex].size <= PackageLimits::PropertiesBytes &&
        Archive.Extract(PropertiesIndex, [&text](ByteSpan piece) {
            text += AsText(piece);
            return true;
        });
    if (!extracted) {
        Say("The properties file could not be extracted\r\nfrom the Instrument Package file.");
        return false;
    }
    PackageProperties properties = ParseProperties(text);
    if (!properties.baudRateFound)
        Say("The Instrument Package Baud Rate could not be found.\r\n"
            "The default Baud Rate has been set to 19200 bps.");
    Loaded.name = properties.name.empty() ? StemOf(Loaded.path) : std::move(properties.name);
    Loaded.baudRate = std::move(properties.baudRate);
    return true;
}

/// Inflates a definition into an instrument. False when it cannot be extracted; otherwise `status`
/// is what loading it gave.
bool CPackageReader::LoadDefinition(std::size_t index, CInstrument& instrument,
                                    DefinitionStatus& status, std::string& text) {
    if (Archive.Members()[index].size > PackageLimits::DefinitionBytes)
        return false;
    // Decided: the pieces go straight into the reader and never touch the disk, so there is nothing
    // that could be written elsewhere or left behind. The texts show the package and the member.
    const std::string path = Loaded.path + '/' + Names[index];
    CDefinitionReader reader(instrument, path);
    reader.Begin(FullPathOf(Loaded.path) + '/' + Names[index]);
    Gauge.Begin();
    bool reading = true;
    const bool extracted = Archive.Extract(index, [&](ByteSpan piece) {
        if (!Gauge.Take(piece))
            return false;
        if (KeepTexts)
            text += AsText(piece);
        // A fatal fault ends the load, but not the check of the member's data.
        reading = reading && reader.Feed(AsText(piece));
        return true;
    });
    if (extracted)
        Gauge.Keep();
    status = reader.Finish();
    return extracted;
}

void CPackageReader::ReadMember(std::size_t index) {
    const std::string& name = Names[index];
    if (IsHostileName(name) || !Archive.Members()[index].readable) {
        NotExtracted(name);
        return;
    }
    if (KindByName(name) != FileKind::Definition) {
        Say("The file extension for " + name + " \r\nis not a Calibration/TDF file.");
        return;
    }
    auto instrument = std::make_unique<CInstrument>();
    DefinitionStatus status = DefinitionStatus::NoError;
    std::string text;
    if (!LoadDefinition(index, *instrument, status, text))
        NotExtracted(name);
    else if (status == DefinitionStatus::Success)
        Loaded.members.push_back({name, std::move(instrument), std::move(text)});
    else
        NotLoaded(name, status, std::move(instrument));
}

void CPackageReader::Read() {
    if (!OpenArchive() || !ReadProperties())
        return;
    for (std::size_t i = 0; i < Names.size(); ++i)
        if (i != PropertiesIndex && !Names[i].ends_with('/'))
            ReadMember(i);
    Loaded.ok = !Loaded.members.empty();
    if (!Loaded.ok)
        Say("The Instrument Package file: " + Loaded.path + " \r\ncontains no valid Instruments.");
}

/// The text behind the first " = "; without one, the line less its first two characters.
/// Kept: that is what taking (length - position - 3) characters from the right gives for a position
/// of -1, so "BAUDRATE=9600" sets "UDRATE=9600".
std::string_view PropertyValue(std::string_view line) {
    constexpr std::string_view Separator = " = ";
    const std::size_t position = line.find(Separator);
    return position == std::string_view::npos ? line.substr(std::min<std::size_t>(2, line.size()))
                                              : line.substr(position + Separator.size());
}

} // namespace

PackageProperties ParseProperties(std::string_view text) {
    PackageProperties properties;
    text = WithoutByteOrderMark(text);
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line = Trim(text.substr(at, end - at));
        at = end + 1;
        if (line.empty() || line.front() == ';')
            continue;
        const std::string_view key = line.substr(0, line.find_first_of(" ="));
        if (EqualsNoCase(key, "NAME"))
            properties.name = PropertyValue(line);
        if (EqualsNoCase(key, "BAUDRATE")) {
            properties.baudRate = PropertyValue(line);
            properties.baudRateFound = true;
        }
    }
    return properties;
}

namespace {

LoadedPackage Read(const std::string& path, bool keepTexts) {
    LoadedPackage loaded;
    loaded.path = path;
    CPackageReader(loaded, keepTexts).Read();
    return loaded;
}

} // namespace

LoadedPackage ReadPackage(const std::string& path) {
    return Read(path, false);
}

LoadedPackage ReadPackageTexts(const std::string& path) {
    return Read(path, true);
}

LoadedPackage LoadPackage(const std::string& path, CUserService& user, CMessageSink& sink) {
    LoadedPackage loaded = ReadPackage(path);
    for (const std::string& message : loaded.messages)
        user.ShowMessage(message);
    for (const FailedMember& member : loaded.failed)
        if (member.instrument)
            sink.Report(member.instrument->ParseLog());
    return loaded;
}

} // namespace qor
