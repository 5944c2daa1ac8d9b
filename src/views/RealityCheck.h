// SPDX-License-Identifier: GPL-3.0-or-later
//
// The optical systems reality check, apart from its window: the spectra of a device under test and
// of a reference, and the first relative to the second. The comparison is a pure function that the
// command line uses as well. Displays call it on the user-interface thread under the document's
// lock.
#pragma once

#include "base/MessageSink.h"
#include "products/Spectrum.h"
#include "session/UserService.h"
#include "views/View.h"
#include "views/WindowPlace.h"

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// What the check can show; the numbers are the precedence and the order of the stored limits.
enum class OsrcDisplay : std::uint8_t { Reference, DeviceUnderTest, Comparison };

/// Kept in the section "OSRC".
struct COSRCViewSettings : WindowPlace {
    int Width = -1;
    int Height = -1;
    int REFEnabled = 1;
    int DUTEnabled = 0;
    int DREnabled = 0;
    int REFSelection = 0;
    int DUTSelection = 0;
    std::array<double, 3> MaxValues{1.0, 1.0, 10.0}; ///< by OsrcDisplay

    void Save(CProfileStore& store) const;
    /// Absent keys leave their fields alone.
    void Load(const CProfileStore& store);

    bool Enabled(OsrcDisplay display) const;
    /// The display that decides for the selector and the limit field; empty when none is on.
    std::optional<OsrcDisplay> Leading() const;
};

struct ValueRange {
    double lower;
    double upper;
};

/// The range as a chart can take it: an upper end not above the lower one becomes lower + 100.
ValueRange WidenedRange(ValueRange range);

class COSRCViewDlg : public CView {
  public:
    COSRCViewSettings Settings;

    /// Finds the series of both instruments. False (reported) when one has none.
    bool Initialise(const CQorViewIns& dut, const CQorViewIns& reference, CMessageSink& sink);

    /// It is of the two roles' instruments, whatever the name.
    void Show(const std::string&) override {}
    using CView::Select;
    /// Looks the instruments of the two roles up and finds their series anew when others have taken
    /// their places.
    bool Refresh(CQorViewDoc& doc) override;
    /// The displays that are on; one without curves says why when none is.
    ViewPages Pages() const override;
    Menu ContextMenu(CQorViewDoc& doc) override;
    /// The section is the one of the check, whatever the prefix.
    void LoadSettings(const CProfileStore& store, const std::string& prefix) override;
    void SaveSettings(CProfileStore& store, const std::string& prefix) const override;

    /// Draws the displays that are on from the current frames. 1 when something was drawn; 0 when
    /// an instrument is gone (null) or neither has a new frame.
    int Update(const CQorViewIns* dut, const CQorViewIns* reference);

    /// A display's chart; empty of curves while its switch is off.
    const PlotPage& Page(OsrcDisplay display) const {
        return Charts[static_cast<std::size_t>(display)];
    }

    /// Turns a display on or off; the next update draws it.
    void Enable(OsrcDisplay display, bool on);

    /// The series selector, of the leading display: its entries (empty: disabled) and its choice.
    std::vector<std::string> SelectorEntries() const;
    int Selection() const;
    void Select(int index);

    /// The limit field, of the leading display; empty: disabled.
    std::string LimitText() const;
    /// Takes an edited limit. False when it is no number; then nothing changes.
    bool SetLimit(std::string_view text);

  private:
    const std::vector<OpticalSeries>& SeriesFor(OsrcDisplay display) const;
    int& SelectionFor(OsrcDisplay display);
    const OpticalSeries& Chosen(OsrcDisplay display) const;
    void Draw(OsrcDisplay display, const CQorViewIns& dut, const CQorViewIns& reference);

    std::vector<OpticalSeries> DutSeries, ReferenceSeries;
    void AddSeriesEntries(Menu& menu, OsrcDisplay display);
    bool SetHeads(const PageHead& head);

    std::array<PlotPage, 3> Charts;
    std::int64_t LastDutFrame = -1, LastReferenceFrame = -1;
    InstrumentId ShownDut = InstrumentId::None, ShownReference = InstrumentId::None;
};

/// What the operator is told when the check cannot be opened for the instruments of the two roles;
/// empty when it can.
std::string WhyNoRealityCheck(CQorViewDoc& doc);

} // namespace qor
