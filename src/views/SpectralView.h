// SPDX-License-Identifier: GPL-3.0-or-later
//
// The spectral display, apart from its window: the optical series of an instrument or a package,
// one group of a type and units or several, with means and bands over the latest frames, a frozen
// spectrum, and another instrument's as dark or as reference. It sees every frame through its
// watch; the arithmetic is the products'.
#pragma once

#include "session/FrameWatch.h"
#include "views/SpectralTraces.h"
#include "views/View.h"
#include "views/WindowPlace.h"

#include <optional>
#include <string>
#include <vector>

namespace qor {

/// Kept for each spectral view under the caller's section prefix.
struct CSpectralViewSettings : WindowPlace {
    int Reading = 0; ///< 0 calibrated, 1 raw counts
    int Logarithmic = 0;
    int MeanOf = 1; ///< latest frames
    int Band = 0;   ///< least and greatest values of as many frames are shown (at least two)
    int SubtractDark = 0;
    int Ratio = 0;               ///< over the reference, else over what was frozen
    int LeadingWavelength = 443; ///< nm, of the value that leads
    std::string Dark;            ///< the instrument laid over as dark; empty: none
    std::string Reference;
    /// The texts of the groups that are shown; those that the instrument lacks do not count. Empty:
    /// the first.
    std::vector<std::string> Groups;

    /// False, and nothing done, without a prefix. Absent keys leave their fields alone.
    bool Save(CProfileStore& store, const std::string& prefix) const;
    bool Load(const CProfileStore& store, const std::string& prefix);
};

class CSpectralView : public CView {
  public:
    explicit CSpectralView(CQorViewDoc& doc);

    CSpectralViewSettings Settings;

    void Show(const std::string& instrument) override;
    /// A group by its type ("LU") or its menu entry, a channel ("LU(443)"), whose value leads from
    /// then on, or any other entry.
    std::string Select(CQorViewDoc& doc, std::string_view item) override;
    bool Refresh(CQorViewDoc& doc) override;
    ViewPages Pages() const override { return {nullptr, {&Page}}; }
    Menu ContextMenu(CQorViewDoc& doc) override;
    void LoadSettings(const CProfileStore& store, const std::string& prefix) override;
    void SaveSettings(CProfileStore& store, const std::string& prefix) const override;

    /// What is shown stays as it is until it is let go; frames are taken on meanwhile.
    void Hold(bool on);
    /// Keeps what is shown as a spectrum in the background, or forgets it.
    void Freeze();
    void Thaw();

  private:
    using Spectrum = std::vector<SpectrumPoint>;
    struct FrozenSpectrum {
        std::string instrument;
        SpectralGroup group;
        Spectrum points;
    };

    const CSpectralTraces& Drawn() const REQUIRES(Doc.DocLock) { return Held ? *Held : Traces; }
    std::vector<SpectralGroup> ShownGroups() const REQUIRES(Doc.DocLock);
    std::size_t Frames() const;
    const FrozenSpectrum* FrozenOf(const SpectralTrace& trace) const;
    /// A spectrum of a trace as it is to be shown; empty when it lacks a dark or reference that is
    /// asked for.
    Spectrum LessDarkOf(const SpectralTrace& trace, Spectrum points) const REQUIRES(Doc.DocLock);
    Spectrum Processed(const SpectralTrace& trace, Spectrum points) const REQUIRES(Doc.DocLock);

    void Draw() REQUIRES(Doc.DocLock);
    void DrawGroup(const SpectralGroup& group) REQUIRES(Doc.DocLock);
    void DrawTrace(const SpectralTrace& trace, std::size_t index, int axis) REQUIRES(Doc.DocLock);
    void DrawOverlays(const SpectralGroup& group, int axis) REQUIRES(Doc.DocLock);
    PlotCurve& AddCurve(std::string title, const Spectrum& points, int axis, std::uint64_t id);
    int AxisOf(const SpectralGroup& group);
    PageHead Head() const REQUIRES(Doc.DocLock);
    void Lead(PageHead& head) const;

    void AddGroupEntries(Menu& menu) REQUIRES(Doc.DocLock);
    void AddDrawingEntries(Menu& menu);
    void AddOverlayEntries(Menu& menu) REQUIRES(Doc.DocLock);
    void Toggle(int CSpectralViewSettings::*setting);
    void Choose(const SpectralGroup& group, bool on);

    CQorViewDoc& Doc;
    std::string Name;
    bool WasThere = false;
    CSpectralTraces Traces GUARDED_BY(Doc.DocLock);
    std::optional<CSpectralTraces> Held GUARDED_BY(Doc.DocLock);
    std::vector<FrozenSpectrum> Frozen;
    std::uint64_t DrawnFrames = 0;
    bool Redraw = true;
    PlotPage Page;
    CFrameWatch Watch; ///< the last member: sees what is above
};

} // namespace qor
