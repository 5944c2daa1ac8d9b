// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desk/ReplayDesk.h"

#include "app/ShownText.h"
#include "base/Text.h"
#include "session/Playback.h"
#include "session/ReplaySources.h"

#include <atomic>
#include <utility>

namespace qor {

namespace {

constexpr double ReplaySpeeds[] = {1, 2, 4, 10, 0}; ///< in the order of the bar

} // namespace

/// Plays the log once beside everything else, for the bar.
struct CReplayDesk::Outlining {
    std::atomic<bool> stop = false;
    CWorker worker;
    LogOutline found; ///< once done is true
    std::atomic<bool> done = false;

    ~Outlining() {
        stop = true;
        worker.Join();
    }
};

CReplayDesk::CReplayDesk(const DeskParts& parts, QObject* parent) : QObject(parent), Parts(parts) {
    CReplayBar& bar = Parts.Window.Replay();
    connect(&bar, &CReplayBar::PlayPressed, this, &CReplayDesk::PlayOrPause);
    connect(&bar, &CReplayBar::RestartPressed, this,
            [this] { Parts.SayFault("replay", Parts.Doc().Sources.Rewind(Played())); });
    connect(&bar, &CReplayBar::SpeedChosen, this, [this](int place) {
        Parts.SayFault("replay", Parts.Doc().Sources.SetSpeed(
                                     Played(), ReplaySpeeds[static_cast<std::size_t>(place)]));
    });
    connect(&bar, &CReplayBar::SeekAsked, this, [this](double place) {
        const SessionSnapshot snapshot = Parts.Doc().Snapshot();
        if (const ResourceStatus* file = snapshot.Find(Played()))
            SeekTo(*file, place);
    });
}

CReplayDesk::~CReplayDesk() = default;

bool CReplayDesk::Load(const std::string& path, const InstrumentSelection& selection) {
    CQorViewDoc& doc = Parts.Doc();
    CommResult result = CommResult::Success;
    const ResourceId file = doc.AddFileResource(path, {}, &result);
    if (file == ResourceId::None) {
        Parts.SayFault(path, path + " cannot be played. " + OneLine(CommDetail(result)));
        return false;
    }
    CSessionSetup setup(doc);
    AddPlayed(doc, setup, file, path, selection);
    Parts.SayAll(Sign::Error, setup.Refusals());
    Path = path;
    return true;
}

void CReplayDesk::Begin() {
    CQorViewDoc& doc = Parts.Doc();
    const ResourceId file = Played();
    if (doc.Snapshot().Find(file)->instruments.empty())
        Parts.Say(Sign::Warning, "replay",
                  tr("No definition beside %1 finds frames in it. Add its instruments.")
                      .arg(qor::Shown(Path)),
                  {{tr("Add instruments").toStdString(), [this] { emit InstrumentsAsked(); }}});
    Outline = std::make_unique<Outlining>();
    Outlining* outline = Outline.get();
    static_cast<void>(outline->worker.Start(
        ThreadPriority::Normal, [outline, path = Path, record = doc.Session.Record()] {
            outline->found = OutlineLog(path, record, outline->stop);
            outline->done = true;
        }));
    Parts.SayFault("replay", doc.Sources.SetSpeed(file, 1));
    Parts.SayFault("replay", doc.Sources.Play(file));
}

void CReplayDesk::End() {
    Outline.reset();
}

ResourceId CReplayDesk::Played() const {
    for (const ResourceStatus& resource : Parts.Doc().Snapshot().resources)
        if (resource.isFile)
            return resource.id;
    return ResourceId::None;
}

void CReplayDesk::PlayOrPause() {
    const SessionSnapshot snapshot = Parts.Doc().Snapshot();
    if (const ResourceStatus* file = snapshot.Find(Played()))
        Parts.SayFault("replay", file->playing ? Parts.Doc().Sources.Pause(file->id)
                                               : Parts.Doc().Sources.Play(file->id));
}

void CReplayDesk::Skip(double seconds) {
    const SessionSnapshot snapshot = Parts.Doc().Snapshot();
    const ResourceStatus* file = snapshot.Find(Played());
    if (!file || !Outline || !Outline->done)
        return;
    SeekTo(*file, ReplayPlaceAfter(*file, Outline->found, seconds));
}

void CReplayDesk::SeekTo(const ResourceStatus& file, double place) {
    Parts.SayFault("replay", Parts.Doc().Sources.Seek(file.id, ReplayOffset(place, file.fileSize)));
}

void CReplayDesk::Refresh() {
    const SessionSnapshot snapshot = Parts.Doc().Snapshot();
    const ResourceStatus* file = snapshot.Find(Played());
    if (file)
        Parts.Window.Replay().ShowPage(
            MakeReplayPage(*file, Outline && Outline->done ? Outline->found : LogOutline()));
}

} // namespace qor
