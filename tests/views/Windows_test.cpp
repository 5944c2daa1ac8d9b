// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/SessionFixture.h"
#include "session/FrameWatch.h"
#include "views/NumberText.h"
#include "views/Windows.h"

#include <set>

namespace qor {
namespace {

class AWindow : public ASession {
  protected:
    /// The head of what is shown, whatever it is.
    static const PageHead& Head(const CView& view) {
        const ViewPages pages = view.Pages();
        return pages.grid ? pages.grid->head : pages.plots.at(0)->head;
    }
    std::unique_ptr<CView> Open(std::string_view name) { return FindWindowKind(name)->make(Doc); }
};

TEST_F(AWindow, OfEveryKindLivesThroughEverythingThatAnInstrumentCanDo) {
    std::set<std::string_view> names;
    for (const WindowKind& kind : WindowKinds()) {
        SCOPED_TRACE(kind.name);
        EXPECT_TRUE(names.insert(kind.name).second) << "named twice";
        const std::unique_ptr<CView> view = kind.make(Doc);
        view->Show("NOBODY");
        view->Refresh(Doc);
        const bool ofOne = Head(*view).state == PageState::Empty;
        EXPECT_EQ(Head(*view).sentence.empty(), !ofOne) << "an empty area says why";
        EXPECT_NE(view->Select(Doc, "no such thing"), "");
        view->Show("");
        for (int round = 0; round < 2; ++round) {
            const CQorViewIns* counter = Add("AAA", Port);
            view->Refresh(Doc);
            Offer(*counter, {CounterFrame("AAA", 1), "AAA", CounterFrame("AAA", 9)});
            for (const MenuEntry& entry : view->ContextMenu(Doc))
                if (entry.choose && entry.whyNot.empty())
                    entry.choose();
            view->Refresh(Doc);
            Clock.Advance(100'000);
            view->Refresh(Doc);
            EXPECT_EQ(Doc.RemoveInstrument(counter->Id), CommResult::Success);
            view->Refresh(Doc);
        }
    }
}

TEST_F(AWindow, SaysOfItsInstrumentThatItIsAwaitedLiveOldAndGone) {
    const std::unique_ptr<CView> view = Open("sensors");
    const auto state = [&] {
        view->Refresh(Doc);
        const PageHead& head = Head(*view);
        return std::string(SignWord(head.sign)) + "|" + head.leading + "|" + head.sentence;
    };
    view->Show("AAA");
    EXPECT_EQ(state(), "||There is no instrument AAA.");
    const CQorViewIns* counter = Add("AAA", Port);
    EXPECT_EQ(state(), "waiting||Waiting for AAA.");
    Offer(*counter, {CounterFrame("AAA", 1)});
    EXPECT_EQ(state(), "ok|VALUE 258.0000|");
    Clock.Advance(38'000);
    EXPECT_EQ(state(), "stale|VALUE 258.0000|");
    EXPECT_TRUE(view->Pages().grid->rows[0].stale);
    EXPECT_EQ(view->Pages().grid->rows[0].age, "38 s");
    EXPECT_EQ(Doc.RemoveInstrument(counter->Id), CommResult::Success);
    EXPECT_EQ(state(), "off||AAA was removed.");
    EXPECT_TRUE(Add("AAA", Port));
    EXPECT_EQ(state(), "waiting||Waiting for AAA.");
    EXPECT_EQ(view->Pages().grid->rows[0].value.text, "") << "nothing old looks live";
}

TEST_F(AWindow, ChoosesByTheTextOfAMenuEntry) {
    Add("AAA", Port);
    const std::unique_ptr<CView> view = Open("ancillary");
    view->Refresh(Doc);
    EXPECT_EQ(Head(*view).sentence, "AAA has no derived products.");
    EXPECT_EQ(view->Select(Doc, "Raw Counts (Hex)"),
              "Raw Counts (Hex): Derived products have no raw counts.");
    EXPECT_EQ(view->Select(Doc, "sensors"), "");
    EXPECT_EQ(view->Select(Doc, "raw counts (hex)"), "");
    Offer(*Find("AAA"), {CounterFrame("AAA", 1)});
    view->Refresh(Doc);
    EXPECT_EQ(view->Pages().grid->rows[0].value.text, "0x0102");

    int chosen = 0;
    const auto count = [&chosen] { ++chosen; };
    const Menu menu = {{"R&D && more", count, true, true},
                       {"Behind", {}, false, false, {}, {{"it", count}}}};
    EXPECT_EQ(ChooseEntry(menu, "RD & MORE"), "");
    EXPECT_EQ(chosen, 0) << "it is checked, and stays so";
    EXPECT_EQ(ChooseEntry(menu, "it"), "");
    EXPECT_EQ(chosen, 1);
    EXPECT_EQ(ChooseEntry(menu, "Behind"),
              "Behind cannot be chosen; give \"RD & more\" or \"it\".");
}

TEST_F(AWindow, TextsOfInstrumentsAreUtf8OnItsPage) {
    const std::string name = "\xC5\xB0";
    Doc.AddInstrument(Temp.Put("latin.cal", "INSTRUMENT " + name + " '' 2 AS 0 NONE\n" +
                                                "T \xE9 '\xB0"
                                                "C' 2 AS 0 COUNT\n"),
                      Port);
    const std::unique_ptr<CView> view = Open("sensors");
    view->Show(name);
    view->Refresh(Doc);
    Offer(*Find(name), {name + "\xFF\x41"});
    view->Refresh(Doc);
    const GridRow& row = view->Pages().grid->rows.at(0);
    EXPECT_EQ(row.label + row.units + row.value.text, "T(\xC3\xA9)(\xC2\xB0"
                                                      "C)\xC3\xBF"
                                                      "A");
}

TEST_F(AWindow, AWatchSeesEveryFrameOfEveryInstrumentWhileItIsThere) {
    const CQorViewIns *one = Add("ONE", Port), *two = Add("TWO", Port);
    std::string seen;
    const auto note = [&seen](CQorViewIns& instrument, const FrameCheckResult& found) {
        seen += instrument.Name() + (found.dropped ? "!" : "") + " ";
    };
    auto first = std::make_unique<CFrameWatch>(Doc, note);
    Offer(*one, {CounterFrame("ONE", 1), CounterFrame("ONE", 3)});
    {
        const CFrameWatch second(Doc, note);
        Offer(*two, {CounterFrame("TWO", 1)});
    }
    first.reset();
    Offer(*one, {CounterFrame("ONE", 4)});
    EXPECT_EQ(seen, "ONE ONE! TWO TWO ");
}

TEST(NumberText, AgesAreReadAtAGlance) {
    const std::pair<std::int64_t, const char*> cases[] = {
        {-1, "--"},      {0, "0.0 s"},       {349, "0.3 s"},     {9999, "9.9 s"},
        {10000, "10 s"}, {119'999, "119 s"}, {240'000, "4 min"}, {7'200'000, "2 h"}};
    for (const auto& [age, text] : cases)
        EXPECT_EQ(AgeText(age), text);
}

} // namespace
} // namespace qor
