// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/FrameRates.h"

#include "base/Text.h"

namespace qor {

void CFrameRate::Add(double seconds) {
    if (!Times.empty() && seconds < Times.back())
        Times.clear(); // the clock was set back, or another file begins
    Times.push_back(seconds);
    if (Times.size() > Kept)
        Times.pop_front();
}

std::optional<double> CFrameRate::Rate() const {
    const double span = Times.empty() ? 0.0 : Times.back() - Times.front();
    return span > 0.0 ? std::optional(static_cast<double>(Times.size() - 1) / span) : std::nullopt;
}

double FrameSeconds(const CLiveInstrument& instrument) {
    const FrameTime& time = instrument.CurrentFrame()->Info.time;
    return time.known ? SecondsOf(time) : static_cast<double>(instrument.ArrivalMonotonic) / 1000.0;
}

CFrameRates::CFrameRates(CQorViewDoc& doc)
    : Doc(doc), Watch(doc, [this](CQorViewIns& instrument, const FrameCheckResult&) {
          CRecursiveLock lock(Doc.DocLock);
          Rates[instrument.Id].Add(FrameSeconds(instrument.Live));
          // Attachments that have gone are forgotten before they can become many.
          constexpr std::size_t Many = 2000;
          for (auto one = Rates.begin(); Rates.size() > Many && one != Rates.end();)
              one = Doc.Find(one->first) ? std::next(one) : Rates.erase(one);
      }) {}

std::optional<double> CFrameRates::Of(InstrumentId instrument) const {
    const auto found = Rates.find(instrument);
    return found == Rates.end() ? std::nullopt : found->second.Rate();
}

std::string CFrameRates::TextOf(const InstrumentFigures& instrument) const {
    const std::optional<double> rate = Of(instrument.id);
    return (rate ? FixedNumber(*rate, 1) : "--") + "/" + GeneralNumber(instrument.nominalRate, 4);
}

} // namespace qor
