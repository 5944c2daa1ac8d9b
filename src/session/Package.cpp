// SPDX-License-Identifier: GPL-3.0-or-later
//
// Reading an instrument package: its properties, then member after member. Every failure is told to
// the operator and none of them stops the members behind it.
#include "session/Package.h"

#include "base/Text.h"
#include "instrument/DefinitionReader.h"
#include "platform/File.h"
#include "session/FileKind.h"
#include "session/MemberName.h"
#include "session/ZipArchive.h"

#include <algorithm>
#include <set>

namespace qor {

namespace {

constexpr std::string_view PropertiesName = "Properties.txt";

/// Watches a definition while it is unpacked: what it holds outside of comments costs memory when
/// it is loaded, and so does its longest line.
class CDefinitionGauge {
  public:
    explicit CDefinitionGauge(std::uint64_t contentLeft) : Left(contentLeft) {}

    bool Take(ByteSpan piece) {
        for (const std::uint8_t byte : piece) {
            if (byte == '\n') {
                Line = 0;
                Comment = false;
                continue;
            }
            Comment = Comment || byte == '#';
            if (++Line > PackageLimits::LineBytes || (!Comment && Left == 0))
                return false;
            Left -= Comment ? 0 : 1;
        }
        return true;
    }
    std::uint64_t ContentLeft() const { return Left; }

  private:
    std::uint64_t Left;
    std::uint64_t Line = 0;
    bool Comment = false;
};

/// One run over a package file.
class CPackageReader {
  public:
    CPackageReader(LoadedPackage& loaded, CUserService& user, CMessageSink& sink)
        : Loaded(loaded), User(user), Sink(sink) {}

    void Read();

  private:
    void Show(std::string text) {
        User.ShowMessage(text);
        Loaded.messages.push_back(std::move(text));
    }
    void ShowNotExtracted(const std::string& name) {
        // Kept: the blank between "extracted" and "from" is missing.
        Show(Format("The file %s\r\ncould not be extractedfrom the Instrument Package file.",
                    name.c_str()));
    }
    bool OpenArchive();
    bool ReadProperties();
    void ReadMember(std::size_t index);
    bool MayExtract(const ArchiveMember& member);
    bool LoadDefinition(std::size_t index, CInstrument& instrument, DefinitionStatus& status);

    LoadedPackage& Loaded;
    CUserService& User;
    CMessageSink& Sink;
    CZipArchive Archive;
    std::size_t PropertiesIndex = 0;
    std::set<std::vector<std::string>> Seen;
    std::uint64_t ContentLeft = PackageLimits::AllContentBytes;
};

bool CPackageReader::OpenArchive() {
    constexpr std::uint64_t MegaByte = 1U << 20;
    const char* path = Loaded.path.c_str();
    ArchiveStatus status =
        Archive.Open(Loaded.path, {PackageLimits::ArchiveBytes, PackageLimits::DirectoryBytes,
                                   PackageLimits::Members});
    std::uint64_t total = 0;
    for (const ArchiveMember& member : Archive.Members())
        if (KindByName(member.name) == FileKind::Definition &&
            member.size <= PackageLimits::DefinitionBytes)
            total += member.size;
    if (total > PackageLimits::AllDefinitionsBytes)
        status = ArchiveStatus::TooLarge;
    if (status == ArchiveStatus::CannotOpen)
        Show(Format("The Instrument Package file: %s \r\ncould not be opened.", path));
    if (status == ArchiveStatus::TooLarge)
        Show(
            Format("The Instrument Package file: %s \r\nis larger than a package may be: %u files, "
                   "%u MB of definition files, %u MB in all. It was not opened.",
                   path, static_cast<unsigned>(PackageLimits::Members),
                   static_cast<unsigned>(PackageLimits::AllDefinitionsBytes / MegaByte),
                   static_cast<unsigned>(PackageLimits::ArchiveBytes / MegaByte)));
    return status == ArchiveStatus::Good;
}

bool CPackageReader::ReadProperties() {
    const auto& members = Archive.Members();
    const auto found =
        std::find_if(members.begin(), members.end(),
                     [](const ArchiveMember& member) { return member.name == PropertiesName; });
    PropertiesIndex = static_cast<std::size_t>(found - members.begin());
    std::string text;
    const bool extracted = found != members.end() &&
                           found->size <= PackageLimits::PropertiesBytes &&
                           Archive.Extract(PropertiesIndex, [&text](ByteSpan piece) {
                               text += AsText(piece);
                               return true;
                           });
    if (!extracted) {
        Show("The properties file could not be extracted\r\nfrom the Instrument Package file.");
        return false;
    }
    PackageProperties properties = ParseProperties(text);
    if (!properties.baudRateFound)
        Show("The Instrument Package Baud Rate could not be found.\r\n"
             "The default Baud Rate has been set to 19200 bps.");
    Loaded.name = std::move(properties.name);
    Loaded.baudRate = std::move(properties.baudRate);
    return true;
}

/// What can be said about a member before anything is inflated.
bool CPackageReader::MayExtract(const ArchiveMember& member) {
    std::vector<std::string> parts = CleanMemberName(member.name);
    return !parts.empty() && Seen.insert(std::move(parts)).second && member.readable;
}

/// Inflates a definition into an instrument. False when it cannot be extracted; otherwise `status`
/// is what loading it gave.
bool CPackageReader::LoadDefinition(std::size_t index, CInstrument& instrument,
                                    DefinitionStatus& status) {
    const ArchiveMember& member = Archive.Members()[index];
    if (member.size > PackageLimits::DefinitionBytes)
        return false;
    // Decided: the pieces go straight into the reader and never touch the disk, so there is nothing
    // that could be written elsewhere or left behind. The texts show the package and the member.
    const std::string path = Loaded.path + '/' + member.name;
    CDefinitionReader reader(instrument, path);
    reader.Begin(FullPathOf(Loaded.path) + '/' + member.name);
    CDefinitionGauge gauge(ContentLeft);
    bool reading = true;
    const bool extracted = Archive.Extract(index, [&](ByteSpan piece) {
        if (!gauge.Take(piece))
            return false;
        // A fatal fault ends the load, but not the check of the member's data.
        reading = reading && reader.Feed(AsText(piece));
        return true;
    });
    if (extracted)
        ContentLeft = gauge.ContentLeft();
    status = reader.Finish();
    return extracted;
}

void CPackageReader::ReadMember(std::size_t index) {
    const std::string& name = Archive.Members()[index].name;
    if (!MayExtract(Archive.Members()[index])) {
        ShowNotExtracted(name);
        return;
    }
    if (KindByName(name) != FileKind::Definition) {
        Show(Format("The file extension for %s \r\nis not a Calibration/TDF file.", name.c_str()));
        return;
    }
    auto instrument = std::make_unique<CInstrument>();
    DefinitionStatus status = DefinitionStatus::NoError;
    if (!LoadDefinition(index, *instrument, status))
        ShowNotExtracted(name);
    else if (status == DefinitionStatus::Success)
        Loaded.members.push_back({name, std::move(instrument)});
    else
        Sink.Report(instrument->ParseLog());
}

void CPackageReader::Read() {
    if (!OpenArchive() || !ReadProperties())
        return;
    for (std::size_t i = 0; i < Archive.Members().size(); ++i)
        if (i != PropertiesIndex && !Archive.Members()[i].name.ends_with('/'))
            ReadMember(i);
    Loaded.ok = !Loaded.members.empty();
    if (!Loaded.ok)
        Show(Format("The Instrument Package file: %s \r\ncontains no valid Instruments.",
                    Loaded.path.c_str()));
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

LoadedPackage LoadPackage(const std::string& path, CUserService& user, CMessageSink& sink) {
    LoadedPackage loaded;
    loaded.path = path;
    CPackageReader(loaded, user, sink).Read();
    return loaded;
}

} // namespace qor
