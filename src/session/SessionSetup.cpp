// SPDX-License-Identifier: GPL-3.0-or-later
//
// Adding what a call or a form names. See SessionSetup.h.
#include "session/SessionSetup.h"

#include "base/NearName.h"
#include "base/Text.h"
#include "instrument/DefinitionVerdict.h"
#include "session/FileKind.h"

#include <algorithm>
#include <limits>

namespace qor {
namespace {

// Decided: what waits is bounded by its memory, over all ports of the run; the default of 200
// frames is outrun by a card that stalls for two seconds or a burst from a converter's buffer.
constexpr std::uint64_t WaitingBytes = 64U << 20;

std::string CodeText(std::uint32_t code) {
    return Format("0x%08x", static_cast<unsigned>(code));
}

std::string WhyNotAttached(CommResult result) {
    return "could not be attached (" + CodeText(static_cast<std::uint32_t>(result)) + "). " +
           OneLine(CommDetail(result));
}

} // namespace

SerialResourceSettings RunPort(SerialResourceSettings settings, std::size_t ports) {
    settings.maxFrameDepth = std::numeric_limits<std::int32_t>::max();
    settings.maxFrameBytes = WaitingBytes / std::max<std::size_t>(ports, 1);
    return settings;
}

std::vector<std::string> FilesOf(const InstrumentSelection& selection,
                                 const std::optional<SessionRecord>& session,
                                 const std::string& sessionPath, std::vector<std::string> files) {
    files.insert(files.end(), selection.definitions.begin(), selection.definitions.end());
    files.insert(files.end(), selection.packages.begin(), selection.packages.end());
    if (!sessionPath.empty())
        files.push_back(sessionPath);
    if (!session)
        return files;
    for (const ResourceRecord& resource : session->resources) {
        if (resource.IsFile())
            files.push_back(resource.file);
        for (const InstrumentRecord& instrument : resource.instruments)
            files.push_back(instrument.definition);
        for (const PackageRecord& package : resource.packages)
            files.push_back(package.file);
    }
    return files;
}

std::vector<std::string> InstrumentNames(const CQorViewDoc& doc) {
    std::vector<std::string> names;
    for (const ResourceStatus& resource : doc.Snapshot().resources)
        for (const InstrumentFigures& instrument : resource.instruments)
            names.push_back(instrument.name);
    return names;
}

std::vector<Refusal> UnknownNames(const InstrumentSelection& selection,
                                  std::span<const std::string> known) {
    std::vector<Refusal> unknown;
    const auto look = [&](const std::string& subject, const std::string& name) {
        if (std::ranges::find(known, name) == known.end())
            unknown.push_back({Refusal::Kind::Name, subject,
                               "there is no instrument of that name." + NameAdvice(name, known)});
    };
    for (const std::string& name : selection.wet)
        look("--wet=" + name, name);
    for (const RoleAssignment& assignment : selection.roles)
        look("--role " + assignment.name + "=" + std::string(RowOf(assignment.role).name),
             assignment.name);
    return unknown;
}

std::optional<RoleAssignment> ParseRole(std::string_view text) {
    const std::size_t equals = text.rfind('=');
    if (equals == std::string_view::npos)
        return std::nullopt;
    const std::optional<InstrumentRole> role = RoleOfName(text.substr(equals + 1));
    return role ? std::optional(RoleAssignment{std::string(text.substr(0, equals)), *role})
                : std::nullopt;
}

void CSessionSetup::Refuse(Refusal::Kind kind, std::string subject, std::string reason,
                           bool hasParseLog) {
    Refused.push_back({kind, std::move(subject), std::move(reason), hasParseLog});
}

/// Also of a definition that was refused: what is wrong with it is why.
void CSessionSetup::Judge(const CInstrument& definition, const std::string& subject,
                          Refusal::Kind kind) {
    const DefinitionVerdict verdict = VerdictOf(definition);
    if (verdict.diagnostics > 0) {
        std::string text =
            Format("%d of its lines %s repaired or dropped; the first: %s", verdict.diagnostics,
                   verdict.diagnostics == 1 ? "was" : "were", verdict.firstDiagnostic.c_str());
        Doc.Raise({EventKind::DefinitionFaulty, subject, subject + ": " + text + "\r\n"});
        Warned.push_back({kind, subject, std::move(text), true});
    }
    if (!verdict.noFrames.empty())
        Frameless.push_back(
            {kind, subject, "it can never give a frame: " + verdict.noFrames, true});
}

InstrumentId CSessionSetup::AddDefinition(const std::string& path, ResourceId resource) {
    const AddedInstrument added = Doc.AddInstrument(path, resource);
    if (added.Added()) {
        CRecursiveLock lock(Doc.DocLock);
        Judge(Doc.Find(added.id)->Definition(), path, Refusal::Kind::Definition);
        return added.id;
    }
    if (added.locked)
        Refuse(Refusal::Kind::Definition, path, CPackageList::LockedText);
    else if (added.definition == DefinitionStatus::Success)
        Refuse(Refusal::Kind::Definition, path, WhyNotAttached(added.comm));
    else
        Refuse(Refusal::Kind::Definition, path,
               "could not be loaded (" + CodeText(static_cast<std::uint32_t>(added.definition)) +
                   "). " + OneLine(added.parseLog),
               true);
    return InstrumentId::None;
}

void CSessionSetup::AddFile(const std::string& path, ResourceId resource,
                            const PackageSettings& settings) {
    if (KindByName(path) == FileKind::Package)
        AddPackage(LoadPackage(path, Doc.User, Doc), resource, settings);
    else
        AddDefinition(path, resource);
}

PackageId CSessionSetup::AddPackage(LoadedPackage loaded, ResourceId resource,
                                    const PackageSettings& settings) {
    const std::string path = loaded.path;
    if (!loaded.ok) {
        Refuse(Refusal::Kind::Package, path, "no instrument could be loaded from the package.",
               true);
        return PackageId::None;
    }
    for (const FailedMember& member : loaded.failed)
        Refuse(Refusal::Kind::Member, path + "(" + member.name + ")",
               member.instrument
                   ? "could not be loaded (" + CodeText(static_cast<std::uint32_t>(member.status)) +
                         "). " + OneLine(member.instrument->ParseLog())
                   : "could not be extracted.",
               member.instrument != nullptr);
    for (const PackageMember& member : loaded.members)
        Judge(*member.instrument, path + "(" + member.name + ")", Refusal::Kind::Member);
    std::vector<RefusedMember> members;
    const PackageId added =
        Doc.Packages.AddPackage(std::move(loaded), resource, settings, &members);
    for (const RefusedMember& member : members)
        Refuse(Refusal::Kind::Member, path + "(" + member.name + ")", WhyNotAttached(member.comm));
    return added;
}

void CSessionSetup::AddAll(const InstrumentSelection& selection, ResourceId resource) {
    for (const std::string& path : selection.definitions)
        AddFile(path, resource, selection.packageOptions.Over({}));
    for (const std::string& path : selection.packages)
        AddFile(path, resource, selection.packageOptions.Over({}));
}

void CSessionSetup::ApplyNames(const InstrumentSelection& selection) {
    for (Refusal& unknown : UnknownNames(selection, InstrumentNames(Doc)))
        Refused.push_back(std::move(unknown));
    if (selection.allWet)
        Doc.SetImmersed({}, true);
    for (const std::string& name : selection.wet)
        if (!name.empty()) // an empty one would be all
            Doc.SetImmersed(name, true);
    for (const RoleAssignment& assignment : selection.roles)
        if (const InstrumentId id = Doc.FindInstrument(assignment.name); id != InstrumentId::None)
            Doc.SetRole(assignment.role, id);
}

namespace {

/// Why a raw log would not give the frames of two instruments back, the first of them by its name.
std::string TangleText(ReplayConflict conflict, const std::string& other) {
    switch (conflict) {
    case ReplayConflict::NoTag:
        return "its frames carry no sync header, and in the gps role no time tag ends them; they "
               "cannot be told apart when the log is played. Give the role to another instrument.";
    case ReplayConflict::LogRecord:
        return "its frames begin like the log's own records, and are taken for those when the log "
               "is played. Keep its bytes with --capture.";
    case ReplayConflict::SharedStart:
        return "its sync header and that of " + other +
               " begin alike; when the log is played, frames of the one may be taken for those of "
               "the other. Log it in a run of its own.";
    case ReplayConflict::SameHeader:
        return "its frames begin as those of " + other +
               " do; they cannot be told apart when the log is played. Log it in a run of its own.";
    case ReplayConflict::SameFrames:
        return "its frames carry no sync header, nor do those of " + other +
               ", and both are of one kind; they cannot be told apart when the log is played. Log "
               "it in a run of its own.";
    }
    return {};
}

} // namespace

void CSessionSetup::JudgeReplay() {
    CRecursiveLock lock(Doc.DocLock);
    const std::vector<LoggedInstrument> logged = Doc.LoggedInstruments();
    const auto shown = [&](std::size_t which) REQUIRES(Doc.DocLock) {
        return Doc.Find(Doc.FindInstrument(logged[which].request.instrumentName))->ShownName();
    };
    for (const ReplayVerdict& verdict : CheckReplay(logged))
        Tangled.push_back({Refusal::Kind::Definition, shown(verdict.second),
                           TangleText(verdict.conflict, shown(verdict.first))});
}

} // namespace qor
