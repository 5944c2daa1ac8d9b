// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frame/SessionTree.h"
#include "app/windows/PageGrid.h"
#include "gui/Desk.h"
#include "gui/SamplePages.h"

#include <QApplication>
#include <QLabel>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>

#include <gtest/gtest.h>

namespace qor {

TEST(PageModel, AnnouncesTheRowsThatDifferAndNoOthers) {
    CPageModel model;
    GridPage page = SampleAncillary();
    EXPECT_TRUE(model.SetPage(page));
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    EXPECT_FALSE(model.SetPage(page));
    EXPECT_EQ(changed.count(), 0);
    page.rows[2].value.text = "24.1190";
    page.rows[3].age = "39 s";
    EXPECT_FALSE(model.SetPage(page));
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed[0][0].toModelIndex().row(), 2);
    EXPECT_EQ(changed[0][1].toModelIndex().row(), 3);
    EXPECT_EQ(reset.count(), 0);
    page.rows.pop_back();
    EXPECT_TRUE(model.SetPage(page));
    EXPECT_EQ(reset.count(), 1);
    EXPECT_EQ(model.rowCount(), 5);
}

TEST(PageModel, WordsOfAnInstrumentAreNoMarkupInATip) {
    GridPage page = SampleAncillary();
    page.rows[0].label = "<img src=\"file:///none\">";
    CPageModel model;
    model.SetPage(page);
    const QString tip = model.index(0, CPageModel::LabelColumn).data(Qt::ToolTipRole).toString();
    QToolTip::showText({10, 10}, tip);
    const QLabel* shown = nullptr;
    for (const QWidget* widget : QApplication::topLevelWidgets())
        if (const auto* label = qobject_cast<const QLabel*>(widget); label && label->text() == tip)
            shown = label;
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->textFormat(), Qt::PlainText);
    QToolTip::hideText();
}

TEST(PageModel, ReadsRowsOutInWords) {
    CPageModel model;
    model.SetPage(SampleAncillary());
    const auto words = [&model](int row, int column) {
        return model.index(row, column).data(Qt::AccessibleTextRole).toString().toStdString();
    };
    EXPECT_EQ(words(0, CPageModel::LabelColumn), "TILT, 46.12 deg, alarm");
    EXPECT_EQ(words(3, CPageModel::ValueColumn), "COND, 42.9140 mS/cm, stale 38 s");
    EXPECT_EQ(words(5, CPageModel::SignColumn), "");
    model.SetPage(SampleStatus());
    EXPECT_EQ(words(1, CPageModel::LabelColumn),
              "Radiance Lu 0318, 9.7/10, Dropped 2, Checksum 0, Discarded 412, Age 0.1 s, warning");
    EXPECT_EQ(model.headerData(2, Qt::Horizontal, Qt::DisplayRole).toString(),
              QStringLiteral("Rate"));
}

TEST(PageGrid, NightPaintsThePrescribedColoursInRedAndBlackAlone) {
    const QColor red(255, 0, 0), black(0, 0, 0);
    const struct {
        GridCell cell;
        QColor text, background;
    } cases[] = {{{"", Yellow, Black}, red, black},
                 {{"", Cyan, Black}, red, black},
                 {{"", Black, Yellow}, black, red},
                 {{"", Cyan, Red}, black, red}};
    for (const auto& [cell, text, background] : cases) {
        const CellColours painted = PaintedColours(cell, true);
        EXPECT_EQ(painted.text, text);
        EXPECT_EQ(painted.background, background);
    }
    const CellColours alarm = PaintedColours({"", Cyan, Red}, false);
    EXPECT_EQ(alarm.text, QColor(0, 255, 255));
    EXPECT_EQ(alarm.background, red);
}

TEST(PageGrid, ColumnsDoNotShrinkWhenDigitsGo) {
    CPageGrid grid(TestTheme());
    grid.resize(420, 240);
    grid.show();
    GridPage page = SampleAncillary();
    page.rows[1].value.text = "-123456.7890";
    grid.ShowPage(page);
    const int width = grid.columnWidth(CPageModel::ValueColumn);
    page.rows[1].value.text = "1";
    grid.ShowPage(page);
    EXPECT_EQ(grid.columnWidth(CPageModel::ValueColumn), width);
    EXPECT_FALSE(grid.horizontalScrollBar()->isVisible());
}

TEST(PageGrid, EnterOpensAndTheVisibleRowsAreTold) {
    CPageGrid grid(TestTheme());
    GridPage page = SampleAncillary();
    for (int i = 0; i < 60; ++i)
        page.rows.push_back({"ROW", "", {"1"}, {}, 100U + static_cast<unsigned>(i)});
    QSignalSpy activated(&grid, &CPageGrid::RowActivated);
    QSignalSpy visible(&grid, &CPageGrid::VisibleRowsChanged);
    grid.resize(420, 36 * 5);
    grid.show();
    grid.ShowPage(page);
    Settle();
    ASSERT_FALSE(visible.isEmpty());
    EXPECT_EQ(grid.VisibleRows(), std::make_pair(0, 5));
    grid.verticalScrollBar()->setValue(36 * 10);
    EXPECT_EQ(grid.VisibleRows(), std::make_pair(10, 15));
    grid.selectRow(2);
    QTest::keyClick(&grid, Qt::Key_Return);
    ASSERT_EQ(activated.count(), 1);
    EXPECT_EQ(activated[0][0].toInt(), 2);
}

TEST(SessionTree, KeepsWhatIsChosenAndWhatIsFolded) {
    CSessionTree tree(TestTheme());
    tree.resize(286, 300);
    tree.show();
    TreePage page = SampleTree();
    tree.ShowPage(page);
    const auto find = [&tree](const char* name) {
        return tree.model()->match(tree.model()->index(0, 0), Qt::DisplayRole,
                                   QString::fromLatin1(name), 1,
                                   Qt::MatchExactly | Qt::MatchRecursive);
    };
    tree.setCurrentIndex(find("PRO 0312").front());
    EXPECT_EQ(tree.ChosenRow(), 121U);
    tree.collapse(find("ttyUSB1 4800 8N1").front());
    QSignalSpy reset(tree.model(), &QAbstractItemModel::modelReset);
    page.rows[0].rows[1].rows[0].age = "0.2 s";
    tree.ShowPage(page);
    EXPECT_EQ(reset.count(), 0) << "an age is no other tree";
    page.rows[0].rows[1].rows.pop_back();
    tree.ShowPage(page);
    EXPECT_EQ(reset.count(), 1);
    EXPECT_EQ(tree.ChosenRow(), 121U);
    EXPECT_FALSE(tree.isExpanded(find("ttyUSB1 4800 8N1").front()));
    EXPECT_TRUE(tree.isExpanded(find("Profiler HE").front()));
    EXPECT_EQ(find("GPS 17x").front().data(Qt::AccessibleTextRole).toString().toStdString(),
              "GPS 17x, stale, G, 0.0/1, 38 s");
}

} // namespace qor
