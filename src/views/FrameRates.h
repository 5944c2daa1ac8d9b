// SPDX-License-Identifier: GPL-3.0-or-later
//
// How often each instrument's frames come, by the times of the latest; for the status window and
// the session's tree. It sees every frame through its watch; under the document's lock.
#pragma once

#include "session/FrameWatch.h"
#include "session/QorViewDoc.h"

#include <deque>
#include <map>
#include <optional>

namespace qor {

class CFrameRate {
  public:
    void Add(double seconds);
    /// Frames a second; nothing before the second frame.
    std::optional<double> Rate() const;

  private:
    static constexpr std::size_t Kept = 32;
    std::deque<double> Times;
};

class CFrameRates {
  public:
    explicit CFrameRates(CQorViewDoc& doc);

    std::optional<double> Of(InstrumentId instrument) const REQUIRES(Doc.DocLock);
    /// "9.9/10", as received and as it should be.
    std::string TextOf(const InstrumentFigures& instrument) const REQUIRES(Doc.DocLock);
    /// For a caller that holds the document's lock under another name.
    void LockIsHeld() const ASSERT_CAPABILITY(Doc.DocLock) {}

  private:
    CQorViewDoc& Doc;
    std::map<InstrumentId, CFrameRate> Rates GUARDED_BY(Doc.DocLock);
    CFrameWatch Watch; ///< the last member: sees what is above
};

/// When the instrument's current frame came, in seconds of its own time, which is that of the log
/// where one is played; of the clock that never steps where it has none.
double FrameSeconds(const CLiveInstrument& instrument);

} // namespace qor
