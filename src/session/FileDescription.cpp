// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/FileDescription.h"

#include "session/Package.h"

namespace qor {

namespace {

void DescribeInstrument(const CInstrument& instrument, FileDescription& description) {
    const std::string& name = instrument.Name();
    description.instruments.push_back(name.empty() ? StemOf(instrument.FilePath()) : name);
    if (instrument.DiagnosticCount() > 0)
        description.faults.push_back(instrument.ParseLog());
}

void DescribePackage(const std::string& path, FileDescription& description) {
    LoadedPackage package = ReadPackage(path);
    if (!package.name.empty())
        description.title = std::move(package.name);
    if (package.ok)
        description.baudRate = std::move(package.baudRate);
    for (std::string& message : package.messages)
        description.faults.push_back(std::move(message));
    for (const PackageMember& member : package.members)
        DescribeInstrument(*member.instrument, description);
}

void DescribeDefinition(const std::string& path, FileDescription& description) {
    CInstrument instrument;
    if (instrument.Load(path) != DefinitionStatus::Success) {
        description.faults.push_back(instrument.ParseLog());
        return;
    }
    DescribeInstrument(instrument, description);
    description.title = description.instruments.front();
}

} // namespace

FileDescription DescribeFile(const std::string& path) {
    FileDescription description;
    description.kind = KindOfFile(path);
    description.title = StemOf(path);
    // A file that was renamed is described all the same, but adding goes by the name.
    if (KindByName(path) == FileKind::Other)
        description.faults.push_back(NotInstrumentFile(path));
    switch (description.kind) {
    case FileKind::Package:
        DescribePackage(path, description);
        break;
    case FileKind::Definition:
        DescribeDefinition(path, description);
        break;
    case FileKind::Session:
    case FileKind::RawLog:
    case FileKind::Other:
        break;
    }
    return description;
}

} // namespace qor
