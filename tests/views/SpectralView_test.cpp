// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/SessionFixture.h"
#include "views/PlotRange.h"
#include "views/SpectralView.h"

namespace qor {
namespace {

class ASpectralView : public ASession {
  protected:
    /// Channels of "TYPE nm units", two bytes each, worth a tenth of what they count.
    const CQorViewIns& AddOptics(const std::string& name,
                                 const std::vector<const char*>& channels) {
        std::string text = Format("INSTRUMENT %s '' %zu AS 0 NONE\n", name.c_str(), name.size());
        for (const char* channel : channels) {
            const std::string_view words = channel;
            const std::size_t units = words.rfind(' ');
            text += std::string(words.substr(0, units)) + " '" +
                    std::string(words.substr(units + 1)) + "' 2 BU 1 OPTIC2\n0 0.1 1\n";
        }
        return *Find(Doc.AddInstrument(Temp.Put(name + ".cal", text), Port).id);
    }
    void Send(const CQorViewIns& instrument, const std::vector<int>& counts) {
        std::string frame = instrument.Name();
        for (const int count : counts)
            frame += {static_cast<char>(count >> 8), static_cast<char>(count & 0xFF)};
        Offer(instrument, {frame});
    }
    /// Each curve as "title [units] x=y x=y".
    std::string Curves() {
        View.Refresh(Doc);
        std::string text;
        for (const PlotCurve& curve : Plot().curves) {
            text += curve.title + " [" + curve.units + "]";
            for (const PlotPoint& point : curve.points)
                text += " " + ShortestNumber(point.x) + "=" + GeneralNumber(point.y, 6);
            text += "|";
        }
        return text;
    }
    const PlotPage& Plot() { return *View.Pages().plots[0]; }
    CSpectralView View{Doc};
};

TEST_F(ASpectralView, SaysWhatItWaitsForAndWhatItCannotShow) {
    View.Refresh(Doc);
    EXPECT_EQ(Plot().head.sentence, "No instrument with an optical series.");
    Add("AAA", Port);
    View.Show("AAA");
    View.Refresh(Doc);
    EXPECT_EQ(Plot().head.sentence, "AAA has no optical series.");
    const CQorViewIns& radiometer = AddOptics("RAD", {"ED 443 i"});
    View.Show("");
    View.Refresh(Doc);
    EXPECT_EQ(Plot().head.sentence, "Waiting for RAD.");
    Send(radiometer, {812});
    EXPECT_EQ(Curves(), "ED [i] 443=81.2|");
    EXPECT_EQ(Plot().head.leading, "443 nm 81.2");
    EXPECT_EQ(Plot().stamp, "2005-05-03 17:23:05 UTC");
    EXPECT_FALSE(View.Refresh(Doc));
    Clock.Advance(10'000);
    EXPECT_TRUE(View.Refresh(Doc));
    EXPECT_EQ(Plot().head.sign, Sign::Stale);
}

TEST_F(ASpectralView, DrawsWhatIsChosenAsItIsChosen) {
    const CQorViewIns& radiometer = AddOptics("RAD", {"LU 500 r", "LU 443 r", "ED 412 i"});
    const CQorViewIns& shutter = AddOptics("DARK", {"LU 443.5 r", "LU 505 r"});
    const CQorViewIns& above = AddOptics("SUN", {"ES 412 i"});
    const struct {
        std::vector<const char*> items;
        const char* curves;
        const char* leading;
    } cases[] = {
        {{}, "LU [r] 443=20 500=3|", "443 nm 20"},
        {{"ed"}, "ED [i] 412=7|", "412 nm 7"},
        {{"LU(490)"}, "LU [r] 443=20 500=3|", "500 nm 3"},
        {{"LU", "ED [i]"}, "LU [r] 443=20 500=3|ED [i] 412=7|", "443 nm 20"},
        {{"Raw Counts"}, "LU [counts] 443=200 500=30|", "443 nm 200"},
        {{"Mean of 10"}, "LU [r] 443=16 500=2.2|", "443 nm 16"},
        {{"Mean of 10", "Raw Counts"}, "LU [counts] 443=160 500=22|", "443 nm 160"},
        {{"Least and Greatest"},
         "LU [r] 443=20 500=3|LU least [r] 443=10 500=1|LU greatest [r] 443=20 500=3|",
         "443 nm 20"},
        {{"Dark of DARK", "Subtract Dark"},
         "LU [r] 443=15|DARK LU dark [r] 443.5=5 505=1|",
         "443 nm 15"},
        {{"LU", "Reference of SUN"},
         "LU [r] 443=20 500=3|SUN ES reference [i] 412=8|",
         "443 nm 20"},
        {{"ED", "Reference of SUN", "Ratio to Reference"}, "ED [] 412=0.875|", "412 nm 0.875"},
        {{"Freeze"}, "LU [r] 443=20 500=3|LU frozen [r] 443=20 500=3|", "443 nm 20"},
        {{"Freeze", "Ratio to Reference", "Mean of 10"},
         "LU [] 443=0.8 500=0.733333|",
         "443 nm 0.8"},
        {{"Hold"}, "LU [r] 443=20 500=3|", "443 nm 20"},
    };
    Send(radiometer, {30, 200, 70});
    for (const auto& one : cases) {
        SCOPED_TRACE(one.curves);
        View.Settings = {};
        View.Show("RAD"); // begins with the frame that came last
        View.Refresh(Doc);
        for (const char* item : one.items) {
            EXPECT_EQ(View.Select(Doc, item), "");
            View.Refresh(Doc);
        }
        Send(shutter, {50, 10});
        Send(above, {80});
        for (int i = 0; i < 2; ++i) {
            Send(radiometer, {10, 100, 50});
            Send(radiometer, {30, 200, 70});
        }
        EXPECT_EQ(Curves(), one.curves);
        EXPECT_EQ(Plot().head.leading, one.leading);
    }
    Send(radiometer, {10, 100, 50});
    EXPECT_EQ(Curves(), "LU [r] 443=20 500=3|") << "it is held";
    View.Hold(false);
    EXPECT_EQ(Curves(), "LU [r] 443=10 500=1|");

    for (const char* item : {"ED", "Reference of SUN", "Ratio to Reference"})
        EXPECT_EQ(View.Select(Doc, item), "");
    View.Refresh(Doc);
    Send(above, {80});
    Clock.Advance(10'000);
    Send(radiometer, {10, 100, 50});
    EXPECT_EQ(Curves(), "ED [] 412=0.625|");
    EXPECT_EQ(Plot().head.sign, Sign::Stale) << "its reference is lost";
    View.Settings.Ratio = 0;
    View.Refresh(Doc);
    EXPECT_EQ(Plot().head.sign, Sign::Ok);
}

TEST_F(ASpectralView, AxesFollowUnitsAndMenusTellWhy) {
    const CQorViewIns& one = AddOptics("ONE", {"LU 500 r", "EU 500 r", "ED 412 i"});
    View.Show("ONE");
    View.Refresh(Doc);
    EXPECT_EQ(View.Select(Doc, "Subtract Dark"), "Subtract Dark: Choose a dark first.");
    EXPECT_EQ(View.Select(Doc, "LU(blue)"), "LU(blue): give a wavelength in nm in the brackets.");
    for (const char* item : {"LU", "EU", "ED", "Logarithmic"})
        EXPECT_EQ(View.Select(Doc, item), "");
    Send(one, {1, 2, 3});
    EXPECT_EQ(Curves(), "LU [r] 500=0.1|EU [r] 500=0.2|ED [i] 412=0.3|");
    ASSERT_EQ(Plot().axes.size(), 2u);
    EXPECT_EQ(AxisTitle(Plot().axes[0]) + AxisTitle(Plot().axes[1]), "LU, EU [r]ED [i]");
    EXPECT_TRUE(Plot().axes[1].logarithmic);
    EXPECT_EQ(Plot().curves[2].axis, 1);
    const Menu menu = View.ContextMenu(Doc);
    EXPECT_TRUE(menu[0].checked);
    menu[0].choose();
    EXPECT_EQ(Curves(), "EU [r] 500=0.2|ED [i] 412=0.3|");

    CMemoryProfileStore store;
    View.Settings.MeanOf = 20;
    View.Settings.Dark = "ONE";
    EXPECT_TRUE(View.Settings.Save(store, "View3") && !View.Settings.Save(store, ""));
    store.WriteInteger("View3\\Spectral", "Reading", 77);
    CSpectralViewSettings loaded;
    EXPECT_TRUE(loaded.Load(store, "View3"));
    EXPECT_EQ(loaded.MeanOf, 20);
    EXPECT_EQ(loaded.Logarithmic, 1);
    EXPECT_EQ(loaded.Dark, "ONE");
    EXPECT_EQ(loaded.Reading, 0) << "a number that no setting has";
    EXPECT_EQ(loaded.Groups, View.Settings.Groups);
    CSpectralView again(Doc);
    again.LoadSettings(store, "View3");
    again.Refresh(Doc);
    EXPECT_EQ(again.Pages().plots[0]->title, "Spectrum - EU, ED");
}

} // namespace
} // namespace qor
