// SPDX-License-Identifier: GPL-3.0-or-later
//
// The histories of a session: curves of watched values against time and depth, the casts, and the
// latest spectra of watched series. Owned by the document, fed with every frame on the thread that
// acquires, read by displays on theirs, all under the document's lock. What nobody watches is not
// kept and costs nothing. How a curve is bounded is CHistoryCurve's business, what a cast is
// CCastDetector's.
#pragma once

#include "products/CastDetector.h"
#include "products/HistoryCurve.h"
#include "products/SensorUnits.h"
#include "products/SpectrumRing.h"
#include "session/FrameWatch.h"
#include "session/HistoryClock.h"
#include "session/SessionState.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qor {

/// What a curve is of: a sensor of an instrument by its name for people ("TEMP(W)"), or a derived
/// row by its label, of the package that the instrument belongs to or of the lone instrument. By
/// names, so that an instrument that is added again goes on in its curve, behind a gap.
struct HistoryItem {
    std::string instrument;
    std::string label;
    bool derived = false;

    bool operator==(const HistoryItem&) const = default;
};

enum class WatchId : std::uint32_t { None = 0 };

/// A curve as it stands. Times are seconds since 1970 UTC: the frame's arrival, the clock's where
/// that is not known.
struct WatchedCurve {
    CHistoryCurve points;
    std::uint64_t taken = 0; ///< frames that it has heard of, those without a value included
    /// Of the latest of them; not a number: it had none.
    double current = std::numeric_limits<double>::quiet_NaN();
};

class CHistory {
  public:
    static constexpr std::size_t MostCurves = 64;
    static constexpr std::size_t MostSpectra = 32;
    static constexpr std::size_t SpectraKept = 128; ///< of a watched series

    explicit CHistory(SessionState& session) : Session(session) {}

    /// Keeps a curve of the item from now on. Counted: whoever watches what is watched already
    /// shares its curve. None when MostCurves are kept.
    WatchId Watch(const HistoryItem& item);
    /// Keeps the latest spectra of a series of an instrument, chosen by type and units.
    WatchId WatchSpectra(const std::string& instrument, const OpticalSeries& series);
    /// The last one to go takes curve or spectra with it. None is nothing.
    void Unwatch(WatchId watch);

    // What the next four give is read while the caller holds the document's lock.

    /// Null for what is not watched.
    const WatchedCurve* Curve(WatchId watch) const;
    /// Null for what is not watched, or while no attached instrument has the series.
    const CSpectrumRing* Spectra(WatchId watch);
    /// The casts of the pressure that an instrument's depth comes from: its package's, else that of
    /// the profiler or its package, else its own. Null without any. Depths are dbar, less the tare.
    const CCastDetector* CastsOf(const std::string& instrument);
    /// The latest depth of an instrument in dbar, unless it is old.
    std::optional<double> DepthOf(const std::string& instrument);

    /// A cast begins or ends now, by hand; without a name one of the profiler's, or of the first
    /// instrument that has a depth, begins. False when no depth has come to tell it by.
    bool BeginCast(const std::string& instrument);
    bool EndCast(const std::string& instrument);

  private:
    struct Kept : WatchedCurve {
        WatchId id = WatchId::None;
        HistoryItem item;
        std::uint32_t uses = 1;
    };
    struct Ring {
        WatchId id = WatchId::None;
        std::string instrument;
        OpticalSeries series;
        std::uint32_t uses = 1;
        InstrumentId from = InstrumentId::None;
        std::unique_ptr<CSpectrumRing> spectra;
    };
    struct Clock : CHistoryClock {
        std::uint32_t resourceBreaks = 0; ///< those of the resource that it knows of
    };
    /// The pressure that some instruments have their depth from, by the name of its instrument.
    struct Depth {
        InstrumentId instrument = InstrumentId::None;
        int sensor = -1;
        std::optional<UnitScale> scale;
        double seconds = 0.0; ///< after which it is old
        double time = CHistoryClock::Never;
        double dbar = 0.0;
        std::uint32_t breaks = 0;
        const Clock* clock = nullptr;
        CCastDetector casts;

        bool IsKnown(double now) const {
            return now - time < seconds && breaks == clock->BreakCount();
        }
    };
    struct Source;
    struct SensorWatch {
        std::size_t sensor = 0;
        Kept* curve = nullptr;
    };
    struct RowWatch {
        std::size_t row = 0;
        Kept* curve = nullptr;
        std::vector<const Source*> others; ///< that must not be old either
    };
    /// An instrument whose frames concern somebody.
    struct Source {
        InstrumentId instrument = InstrumentId::None;
        double seconds = 0.0; ///< after which its frame is old
        double time = CHistoryClock::Never;
        std::uint32_t breaks = 0;
        Clock* clock = nullptr;
        Depth* carried = nullptr; ///< the depth that its frames bring
        Depth* depth = nullptr;   ///< the depth that its values belong to
        std::vector<SensorWatch> sensors;
        std::vector<RowWatch> rows;
        std::vector<CSpectrumRing*> rings;

        bool Concerns() const {
            return carried || !sensors.empty() || !rows.empty() || !rings.empty();
        }
    };

    /// In the watch of frames, which holds the document's lock.
    void LockIsHeld() const ASSERT_CAPABILITY(Session.DocLock) {}
    bool IsIdle() const REQUIRES(Session.DocLock) { return Curves.empty() && Rings.empty(); }
    /// Frames are looked at from now on.
    void Wake() REQUIRES(Session.DocLock);
    /// Takes an instrument's current frame.
    void Take(const SessionState::FrameOwner& owner) REQUIRES(Session.DocLock);
    bool IsBound() const REQUIRES(Session.DocLock) {
        return Bound && BoundVersion == Session.OwnersVersion && BoundProfiler == Profiler();
    }
    InstrumentId Profiler() const REQUIRES(Session.DocLock) {
        return Session.Roles[static_cast<std::size_t>(InstrumentRole::Profiler)];
    }
    void Bind() REQUIRES(Session.DocLock);
    void BindCurve(Kept& curve) REQUIRES(Session.DocLock);
    void BindRow(Kept& curve, const SessionState::FrameOwner& owner) REQUIRES(Session.DocLock);
    void BindRing(Ring& ring) REQUIRES(Session.DocLock);
    Source* SourceOf(const SessionState::FrameOwner& owner) REQUIRES(Session.DocLock);
    Depth* DepthFor(const SessionState::FrameOwner& owner) REQUIRES(Session.DocLock);
    Depth* SomeDepth() REQUIRES(Session.DocLock);
    Depth* DepthOfName(const std::string& instrument) REQUIRES(Session.DocLock);
    Source* Find(InstrumentId instrument) REQUIRES(Session.DocLock);
    std::optional<double> TimeOf(const SessionState::FrameOwner& owner, Source& source)
        REQUIRES(Session.DocLock);
    void TakeDepth(Depth& depth, const CLiveInstrument& instrument, double time)
        REQUIRES(Session.DocLock);
    static void TakeSensors(Source& source, const CLiveInstrument& instrument, double time,
                            double depth, bool broken);
    void TakeRows(Source& source, const SessionState::FrameOwner& owner, double time, double depth,
                  bool broken) REQUIRES(Session.DocLock);
    WatchId NextId() REQUIRES(Session.DocLock) { return WatchId{++LastId}; }

    SessionState& Session;
    std::optional<CFrameWatch> Feed GUARDED_BY(Session.DocLock); ///< while not idle
    std::vector<std::unique_ptr<Kept>> Curves GUARDED_BY(Session.DocLock);
    std::vector<Ring> Rings GUARDED_BY(Session.DocLock);
    std::map<ResourceId, Clock> Clocks GUARDED_BY(Session.DocLock);
    std::map<std::string, Depth> Depths GUARDED_BY(Session.DocLock);
    /// By identity from FirstIdentity on; null: nobody is concerned.
    std::vector<std::unique_ptr<Source>> Sources GUARDED_BY(Session.DocLock);
    std::uint32_t FirstIdentity GUARDED_BY(Session.DocLock) = 0;
    // What the sources were bound to.
    bool Bound GUARDED_BY(Session.DocLock) = false;
    std::uint32_t BoundVersion GUARDED_BY(Session.DocLock) = 0;
    InstrumentId BoundProfiler GUARDED_BY(Session.DocLock) = InstrumentId::None;
    std::uint32_t LastId GUARDED_BY(Session.DocLock) = 0;
};

/// Holds a watch as long as it lives, which must not be longer than the document does.
class CHistoryWatch {
  public:
    CHistoryWatch() = default;
    CHistoryWatch(CHistory& history, WatchId id) : History(&history), Id(id) {}
    CHistoryWatch(CHistoryWatch&& other) noexcept { Exchange(other); }
    CHistoryWatch& operator=(CHistoryWatch&& other) noexcept {
        Exchange(other);
        return *this;
    }
    ~CHistoryWatch() {
        if (History)
            History->Unwatch(Id);
    }

    explicit operator bool() const { return Id != WatchId::None; }
    WatchId Which() const { return Id; }

  private:
    void Exchange(CHistoryWatch& other) {
        std::swap(History, other.History);
        std::swap(Id, other.Id);
    }

    CHistory* History = nullptr;
    WatchId Id = WatchId::None;
};

} // namespace qor
