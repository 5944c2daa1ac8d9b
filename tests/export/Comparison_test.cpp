// SPDX-License-Identifier: GPL-3.0-or-later
//
// Which series are compared, and how old the reference is.
#include "export/Comparison.h"

#include "fakes/DefinedInstrument.h"
#include "fakes/TempFolder.h"

#include <gmock/gmock.h>

namespace qor {
namespace {

std::string Series(const std::string& type) {
    return type + " 500 'uW' 1 BU 1 OPTIC2\n0 1 1\n";
}

void Take(CLiveInstrument& instrument, std::uint8_t value, const FrameTime& time) {
    CFrameData frame;
    frame.Bytes = {'H', 'D', 'R', value};
    frame.Info.frameSize = 4;
    frame.Info.time = time;
    instrument.Take(frame);
}

TEST(Comparison, ChoosesTheSeriesOfTheTypeOrTheOnlyOne) {
    const struct {
        std::string dut, reference, type, chosen;
    } cases[] = {
        {Series("LU") + Series("ED"), Series("ED"), "ED", "ED ED"},
        {Series("LU") + Series("ED"), Series("ES"), "ed", "ED ES"}, // its only one
        {Series("LU"), Series("ED"), "", "LU ED"},
        {Series("LU") + Series("ED"), Series("ES") + Series("EU"), "ED", "no reference"},
        {"", Series("ED"), "ED", "no dut"},
    };
    for (const auto& row : cases) {
        const auto dutDefinition = DefineFixed(row.dut + "X 1 '' 1 BU 0 COUNT\n"),
                   referenceDefinition = DefineFixed(row.reference);
        const CLiveInstrument dut(*dutDefinition), reference(*referenceDefinition);
        ComparedPair pair{&dut, &reference, {}, {}};
        const CLiveInstrument* without = ChooseComparedSeries(pair, row.type);
        EXPECT_EQ(without == &dut         ? "no dut"
                  : without == &reference ? "no reference"
                                          : pair.dutSeries.type + " " + pair.referenceSeries.type,
                  row.chosen);
    }
}

TEST(Comparison, TellsTheAgeOfTheReference) {
    const auto definition = DefineFixed(Series("ED"));
    CLiveInstrument dut(*definition), reference(*definition);
    ComparedPair pair{&dut, &reference, {}, {}};
    ASSERT_EQ(ChooseComparedSeries(pair, "ED"), nullptr);
    CTempFolder folder;
    COutput output([](const std::string& text) { ADD_FAILURE() << text; });
    ASSERT_TRUE(output.Open(folder.Path + "out", {}).Good());
    const FrameTime now{1'115'130'185, 250, 0, false, true},
        before{1'115'130'183, 500, 0, false, true};
    Take(dut, 20, now);
    WriteComparisonCsv(output, CompareCurrent(pair));
    Take(reference, 10, before);
    WriteComparisonCsv(output, CompareCurrent(pair));
    Take(reference, 10, {}); // its log has no times
    WriteComparisonJson(output, CompareCurrent(pair));
    ASSERT_TRUE(output.Finish().Good());
    EXPECT_EQ(folder.Content("out"), "2005-05-03T14:23:05.250,0,500,20,,,\r\n"
                                     "2005-05-03T14:23:05.250,0,500,20,10,100,1.75\r\n"
                                     "{\"time\":\"2005-05-03T14:23:05.250\",\"frame\":0,"
                                     "\"points\":[[500,20,10,100]],\"reference_age\":null}\n");
}

} // namespace
} // namespace qor
