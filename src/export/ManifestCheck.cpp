// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/ManifestCheck.h"

#include "base/Sha256.h"
#include "base/Text.h"
#include "session/FileKind.h"

#include <algorithm>
#include <map>

namespace qor {

namespace {

constexpr std::size_t PieceSize = 256 * 1024;

/// The file that an instrument came from.
struct UsedSource {
    ManifestSource source;
    std::string member; ///< of a package
};

/// By the instruments' names.
std::map<std::string, UsedSource> SourcesOf(const CQorViewDoc& doc) {
    std::map<std::string, UsedSource> sources;
    CRecursiveLock lock(doc.DocLock);
    for (const auto& resource : doc.Resources)
        for (const auto& instrument : resource->Instruments) {
            const SessionState::FrameOwner* owner = doc.OwnerOf(instrument->Id);
            const CPackage* package = owner ? owner->package : nullptr;
            UsedSource& used = sources[instrument->Name()];
            used.source.path =
                FullPathOf(package ? package->Path : instrument->Definition().FilePath());
            for (std::size_t i = 0; package && i < package->Instruments.size(); ++i)
                if (package->Instruments[i] == instrument->Name())
                    used.member = package->Members[i];
        }
    for (auto& [name, used] : sources)
        used.source.sha256 = Sha256OfFile(used.source.path);
    return sources;
}

void AddFault(LogVerdict& verdict, std::string_view kind, std::string text) {
    verdict.faults.push_back({kind, {}, {}, std::move(text)});
}

} // namespace

void CLogHash::Begin(const std::string& rawLog) {
    Path = rawLog;
    if (!Thread.Start(ThreadPriority::Normal, [this] { Read(); }))
        Read();
}

const std::string& CLogHash::Digits() {
    Thread.Join();
    return Found;
}

void CLogHash::Read() {
    CInputFile file;
    CSha256 hash;
    std::vector<std::uint8_t> piece(PieceSize);
    if (file.OpenForReading(Path) != FileCause::None)
        return;
    for (std::size_t got = 1; got > 0;) {
        if (Cancelled || file.Read(piece, got) != FileCause::None)
            return;
        hash.Update(ByteSpan(piece).first(got));
    }
    Found = hash.Digits();
}

CManifestCheck::CManifestCheck(const std::string& rawLog, bool repairs) : RawLog(rawLog) {
    Reading = LoadManifest(rawLog, There);
    if (There ? Reading.fault.empty() : repairs)
        Hash.Begin(rawLog);
}

InstrumentSelection CManifestCheck::Selection() const {
    InstrumentSelection selection;
    for (const LogManifest::Port& port : Manifest().ports)
        for (const LogManifest::Instrument& instrument : port.instruments) {
            std::vector<std::string>& files =
                instrument.member.empty() ? selection.definitions : selection.packages;
            const std::string& path = instrument.source.path;
            if (!path.empty() && !IsDevice(path) && FileExists(path) &&
                std::ranges::find(files, path) == files.end())
                files.push_back(path);
        }
    return selection;
}

void CManifestCheck::Judge(const CQorViewDoc& doc, LogVerdict& verdict) {
    const std::string path = ManifestPathOf(RawLog);
    if (!There) {
        AddFault(verdict, "no-manifest",
                 "no manifest (" + std::string(LastPartOf(path)) +
                     ") says which bytes it had when it ended.");
        return;
    }
    if (!Reading.fault.empty()) {
        AddFault(verdict, "hash", "its manifest " + path + " cannot be used: " + Reading.fault);
        return;
    }
    const std::string& digits = Hash.Digits();
    if (verdict.size != Manifest().size)
        AddFault(verdict, "hash",
                 Format("it has %llu bytes, and had %llu when its manifest was written.",
                        static_cast<unsigned long long>(verdict.size),
                        static_cast<unsigned long long>(Manifest().size)));
    else if (digits != Manifest().sha256)
        AddFault(verdict, "hash",
                 "bytes of it have changed since its manifest was written: its SHA-256 is " +
                     digits + ", and was " + Manifest().sha256 + ".");
    const std::map<std::string, UsedSource> used = SourcesOf(doc);
    for (const LogManifest::Port& port : Manifest().ports)
        for (const LogManifest::Instrument& instrument : port.instruments) {
            const auto found = used.find(instrument.name);
            const std::string& then = instrument.source.sha256;
            if (found == used.end() && instrument.logged.value_or(0) > 0)
                AddFault(verdict, "definition-changed",
                         "the definition of " + instrument.name + ", " + instrument.source.path +
                             ", is not there, or is another one; name it with -d or -p.");
            else if (found != used.end() && !then.empty() && found->second.source.sha256 != then)
                AddFault(verdict, "definition-changed",
                         instrument.name + " was logged with another definition than " +
                             found->second.source.path + " is now.");
        }
}

std::string CManifestCheck::Repair(const CQorViewDoc& doc, const CRawLogReader& log,
                                   const PlayFacts& play, const LogVerdict& verdict) {
    LogManifest manifest;
    manifest.log = LastPartOf(ManifestPathOf(RawLog));
    manifest.log.resize(manifest.log.size() - (sizeof ".json" - 1));
    manifest.size = verdict.size;
    manifest.sha256 = Hash.Digits();
    if (manifest.sha256.empty())
        return RawLog + ": no manifest was made: it cannot be read again.";
    manifest.program = "QorView " QORVIEW_VERSION;
    manifest.repaired = true;
    manifest.zoneKnown = false;
    manifest.end = play.lastTag;
    if (const std::optional<std::int64_t> begin = log.Header().BeginTime()) {
        manifest.begin.seconds = *begin;
        manifest.begin.known = true;
    }
    std::map<std::string, UsedSource> used = SourcesOf(doc);
    LogManifest::Port& port = manifest.ports.emplace_back();
    for (const LogVerdict::Instrument& one : verdict.instruments) {
        const UsedSource& source = used[one.name];
        port.instruments.push_back({one.name,
                                    source.source,
                                    source.member,
                                    {},
                                    one.frames,
                                    one.missing,
                                    one.checksumErrors});
    }
    return SaveManifest(manifest, RawLog);
}

} // namespace qor
