// SPDX-License-Identifier: GPL-3.0-or-later
//
// Bytes are taken out of the taps under the document's lock, and written without it.
#include "session/PortCaptures.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "session/NearestMiss.h"

#include <algorithm>
#include <utility>

namespace qor {

namespace {

constexpr std::int64_t LeastPatience = 5000; // milliseconds
constexpr std::size_t ManyBytes = 1U << 20;  // no instrument's first frame is behind so many
constexpr std::size_t SampleBytes = 32U << 10;

std::uint64_t LineErrorsOf(const LineErrorCounts& counts) {
    return counts[static_cast<std::size_t>(LineErrorKind::Framing)] +
           counts[static_cast<std::size_t>(LineErrorKind::Parity)];
}

/// Decided: bytes that a capture lacks are a fault where it was asked for; one that was begun for a
/// warning is a help.
EventKind KindOfLoss(CaptureRule rule) {
    return rule == CaptureRule::All ? EventKind::CaptureFailed : EventKind::BytesNotKept;
}

/// How near bytes come to a sync header, from 0 to 1.
double NearnessOf(const HeaderTrace& header) {
    return header.length == 0
               ? 0.0
               : static_cast<double>(header.seen) / static_cast<double>(header.length);
}

/// The cause that goes with the instrument whose header comes nearest, the first of several.
std::string LikelyCause(const CQorViewRes& resource, ByteSpan bytes, std::uint64_t lineErrors) {
    std::string cause;
    double nearest = -1.0;
    for (const auto& instrument : resource.Instruments) {
        if (!instrument->AcquisitionEnabled)
            continue;
        NearestMiss miss = NearestMissOf(instrument->Definition(), bytes, lineErrors);
        if (NearnessOf(miss.header) <= nearest)
            continue;
        nearest = NearnessOf(miss.header);
        cause = std::move(miss.cause);
    }
    return cause;
}

} // namespace

/// A port at this moment, and what it gave to be written.
struct CPortCaptures::Look {
    ResourceId id = ResourceId::None;
    std::string name;
    std::string folder; ///< of the logs
    TapState tap;
    CaptureRule rule = CaptureRule::None;
    std::uint64_t limit = 0;
    bool overdue = false;
    std::string cause;
    std::vector<std::uint8_t> bytes;
};

void CPortCaptures::Begin(CaptureRule rule, std::uint64_t limit) {
    CRecursiveLock lock(Session.DocLock);
    Rule = rule;
    Limit = limit;
    for (const auto& resource : Session.Resources)
        if (rule == CaptureRule::All && !resource->IsFile())
            resource->Comm.Tap().KeepAll();
}

std::vector<CaptureStatus> CPortCaptures::Status() const {
    CLock lock(FilesLock);
    return Files;
}

CPortCaptures::Port& CPortCaptures::PortOf(ResourceId id) {
    const auto found = std::ranges::find(Ports, id, &Port::id);
    if (found != Ports.end())
        return *found;
    Ports.emplace_back().id = id;
    return Ports.back();
}

/// Decided: the bytes themselves span the time, so that one burst of noise at a connection is no
/// alarm, and an instrument that sends seldom is given the time of its own rate.
bool CPortCaptures::IsOverdue(const CQorViewRes& resource, const Look& look) const {
    std::int64_t patience = -1;
    for (const auto& instrument : resource.Instruments)
        if (instrument->AcquisitionEnabled)
            patience = patience < 0 ? instrument->Live.Patience()
                                    : std::min(patience, instrument->Live.Patience());
    if (patience < 0 || look.tap.framed || look.tap.bytes == 0)
        return false;
    return look.tap.latestByte - look.tap.firstByte >= std::max(patience, LeastPatience) ||
           look.tap.waiting >= ManyBytes;
}

void CPortCaptures::LookAt(CQorViewRes& resource, Look& look) {
    const Port& port = PortOf(resource.Id);
    CByteTap& tap = resource.Comm.Tap();
    look.id = resource.Id;
    look.name = resource.Name();
    look.folder = Session.Naming.logDirectory;
    look.tap = tap.State();
    look.rule = Rule;
    look.limit = Limit;
    look.overdue = !port.warned && IsOverdue(resource, look);
    if (look.overdue)
        look.cause = LikelyCause(resource, tap.Peek(SampleBytes),
                                 LineErrorsOf(resource.Comm.Figures().lineErrors));
    const bool begins = Rule == CaptureRule::All || (Rule == CaptureRule::Unframed && look.overdue);
    if (!port.done && (port.file || begins))
        tap.TakeAll(look.bytes);
    const bool wanted = Rule == CaptureRule::None ? !look.overdue && !port.warned : !port.done;
    if (!wanted)
        tap.Stop();
}

std::vector<CPortCaptures::Look> CPortCaptures::LookAtAll() {
    CRecursiveLock lock(Session.DocLock);
    std::vector<Look> looks;
    for (const auto& resource : Session.Resources)
        if (!resource->IsFile())
            LookAt(*resource, looks.emplace_back());
    return looks;
}

void CPortCaptures::Tend() {
    for (const Look& look : LookAtAll()) {
        Port& port = PortOf(look.id);
        if (!port.file && !look.bytes.empty() && look.rule == CaptureRule::All)
            if (const std::string fault = BeginFile(port, look); !fault.empty())
                Messages.Raise(
                    {KindOfLoss(look.rule), port.file->Path(), look.name + ": " + fault});
        if (look.overdue)
            Warn(port, look);
        if (port.file && !port.done)
            Write(port, look);
    }
}

void CPortCaptures::Finish() {
    Tend();
    for (Port& port : Ports)
        if (port.file && !std::exchange(port.done, true)) {
            port.file->Close();
            const CaptureStatus file = Status()[port.place];
            if (file.unkept > 0)
                Messages.Report(Format("The capture \"%s\" lacks %llu bytes.\r\n",
                                       file.path.c_str(),
                                       static_cast<unsigned long long>(file.unkept)));
        }
}

/// Says where the bytes are as well, when they are kept.
void CPortCaptures::Warn(Port& port, const Look& look) {
    port.warned = true;
    std::string text =
        Format("%s: %llu bytes in %.0f s and no frame of its instruments. ", look.name.c_str(),
               static_cast<unsigned long long>(look.tap.bytes),
               static_cast<double>(look.tap.latestByte - look.tap.firstByte) / 1000.0);
    text += look.cause + "\r\n";
    if (look.rule != CaptureRule::None && !port.file)
        if (const std::string fault = BeginFile(port, look); !fault.empty())
            text += "\t" + fault;
    if (port.file && port.file->IsOpen())
        text += "\tThe bytes are kept in \"" + port.file->Path() + "\".\r\n";
    Messages.Raise({EventKind::NoFrames, look.name, std::move(text)});
}

/// What is wrong, or nothing.
std::string CPortCaptures::BeginFile(Port& port, const Look& look) {
    port.file = std::make_unique<CCaptureFile>(look.limit);
    const FileCause cause = port.file->Create(look.folder, Session.Clock.Now(), look.name);
    {
        CLock lock(FilesLock);
        port.place = Files.size();
        Files.push_back({port.file->Path(), cause == FileCause::None});
    }
    if (cause != FileCause::None)
        return "Its bytes cannot be kept in \"" + port.file->Path() +
               "\": " + std::string(GetFileErrorText(cause)) + "\r\n";
    return {};
}

/// Once the file has failed or is full, what it lacks is counted.
void CPortCaptures::Write(Port& port, const Look& look) {
    CCaptureFile& file = *port.file;
    const auto say = [&](EventKind kind, const std::string& what) {
        Messages.Raise({kind, file.Path(), "The capture \"" + file.Path() + "\" " + what + "\r\n"});
    };
    if (file.GiveUpIfGone())
        say(KindOfLoss(look.rule),
            "was deleted, moved or cut by another program; its bytes count as lost.");
    const bool open = file.IsOpen();
    const std::uint64_t before = std::exchange(port.unkeptSaid, look.tap.unkept);
    if (const std::uint64_t unkept = look.tap.unkept - before; open && unkept > 0)
        say(KindOfLoss(look.rule), Format("lacks %llu bytes: the disk was too slow for them.",
                                          static_cast<unsigned long long>(unkept)));
    if (const FileCause cause = file.Write(look.bytes); cause != FileCause::None)
        say(KindOfLoss(look.rule), "takes no more: " + std::string(GetFileErrorText(cause)));
    else if (open && file.IsFull())
        say(EventKind::BytesNotKept,
            Format("holds %llu MB and takes no more.",
                   static_cast<unsigned long long>(look.limit / 1'000'000)));
    port.done = look.rule == CaptureRule::Unframed && look.tap.framed;
    if (port.done && file.IsOpen())
        Messages.Report(look.name + ": its first frame has come; the capture \"" + file.Path() +
                        "\" ends.\r\n");
    if (port.done)
        file.Close();
    CLock lock(FilesLock);
    Files[port.place].unkept = file.Unkept() + look.tap.unkept;
}

} // namespace qor
