// SPDX-License-Identifier: GPL-3.0-or-later
//
// The spectra behind a spectral display: which instruments they come from, the latest of each for
// means and bands, fed with every frame. Everything under the document's lock.
#pragma once

#include "products/SpectrumRing.h"
#include "session/QorViewDoc.h"

#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// The series of one type and units, over all instruments shown.
struct SpectralGroup {
    std::string type;
    std::string units;

    /// "ED [uW/cm^2/nm]", in UTF-8.
    std::string Text() const;
    bool operator==(const SpectralGroup&) const = default;
};

/// One series of one instrument with its latest spectra.
struct SpectralTrace {
    InstrumentId instrument = InstrumentId::None;
    std::string name; ///< the instrument's
    SpectralGroup group;
    CSpectrumRing ring;
};

class CSpectralTraces {
  public:
    /// As many spectra of each series are kept.
    static constexpr std::size_t Kept = 100;

    /// Of an instrument, of a package by its own name, or of the first instrument that has a
    /// series. True when it begins anew: other attachments or another reading than before. `more`:
    /// instruments beside those, for overlays.
    bool Find(const CQorViewDoc& doc, const std::string& name, const std::vector<std::string>& more,
              SpectrumReading reading) REQUIRES(doc.DocLock);
    /// Takes an instrument's current frame.
    void Take(const CQorViewIns& instrument);
    void Clear();

    /// Traces of the instruments shown, overlays' apart.
    const std::vector<SpectralTrace>& Shown() const { return Own; }
    /// The groups, in the order in which they first stand.
    std::vector<SpectralGroup> Groups() const;
    /// What another instrument has to lay over a group: its series of that type, else the only one,
    /// else the first of the same units. Null when it has none.
    const SpectralTrace* Overlay(const std::string& instrument, const SpectralGroup& group) const;
    /// Counts the frames taken.
    std::uint64_t FramesTaken() const { return Taken; }

  private:
    std::vector<SpectralTrace> Own, Others;
    std::vector<InstrumentId> OwnFrom, OthersFrom;
    SpectrumReading Reading = SpectrumReading::Calibrated;
    std::uint64_t Taken = 0;
};

/// Every instrument with an optical series, by name.
std::vector<std::string> OpticalInstruments(const CQorViewDoc& doc) REQUIRES(doc.DocLock);

} // namespace qor
