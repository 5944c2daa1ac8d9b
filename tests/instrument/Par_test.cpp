// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/Par.h"

#include "fakes/DefinedInstrument.h"

#include <gmock/gmock.h>

using namespace qor;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

constexpr double Photons = 8.355108835736473e-05;

std::string Channel(const std::string& type, const std::string& id, const std::string& rest = {}) {
    return type + " " + id + " " +
           (rest.empty() ? "'uW/cm^2/nm' 1 BS 1 OPTIC2\n0 1 2\n" : rest + "\n0 1 2\n");
}

std::vector<std::pair<double, int>> Points(const std::vector<ParChannel>& channels) {
    std::vector<std::pair<double, int>> points;
    for (const ParChannel& c : channels)
        points.emplace_back(c.wavelength, c.sensor->Index);
    return points;
}

double ParOf(const CInstrument& instrument, const std::string& body, bool immersed = false) {
    const std::string frame = "HDR" + body;
    double par = -1.0, fromValues = -2.0;
    FrameValues values;
    CConversionPlan(instrument).Convert(AsBytes(frame), immersed, values);
    const ConversionStatus status = ComputePar(ParList(instrument), AsBytes(frame), immersed, par);
    EXPECT_EQ(status, ComputePar(ParList(instrument), values, fromValues));
    EXPECT_EQ(status, ConversionStatus::Good);
    EXPECT_EQ(par, fromValues);
    return par;
}

TEST(Par, TheSeriesIsSortedAndClosedAtItsEnds) {
    const auto instrument =
        DefineFixed(Channel("ED", "600") + Channel("ed", "420.5") + Channel("ED", "399.4") +
                    Channel("ED", "701") + Channel("ED", "5OO") + Channel("ED", "NONE") +
                    Channel("ED", "500", "'UW/cm^2/nm' 1 BS 1 OPTIC2") +
                    Channel("ED", "510", "'uW/cm^2/nm' 1 BS 1 POLYU") + Channel("LU", "520"));
    EXPECT_THAT(Points(ParSeries(*instrument, "ED")),
                ElementsAre(Pair(400, 1), Pair(420.5, 1), Pair(600, 0), Pair(700, 0)));
    const auto points = [](const std::vector<const char*>& ids) {
        std::string lines;
        for (const char* id : ids)
            lines += Channel("ES", id);
        return Points(ParSeries(*DefineFixed(lines), "ES"));
    };
    EXPECT_THAT(points({"399.5", "700.4"}), ElementsAre(Pair(399.5, 0), Pair(700.4, 1)));
    EXPECT_THAT(points({"400.1", "699.9"}),
                ElementsAre(Pair(400, 0), Pair(400.1, 0), Pair(699.9, 1), Pair(700, 1)));
    EXPECT_THAT(points({"500", "500", "400", "700"}),
                ElementsAre(Pair(400, 2), Pair(500, 1), Pair(500, 0), Pair(700, 3)))
        << "equal wavelengths stand where exchanges put them";
}

TEST(Par, SumsIrradianceTimesWavelengthTimesWidth) {
    const auto three =
        DefineFixed(Channel("ED", "400") + Channel("ED", "550") + Channel("ED", "700"));
    const double expected = Photons * (10 * 400.0 * 75 + 20 * 550.0 * 150 + 30 * 700.0 * 75);
    EXPECT_NEAR(ParOf(*three, "\x0A\x14\x1E"), expected, 1e-12 * expected);
    EXPECT_NEAR(ParOf(*three, "\x0A\x14\x1E", true), 2 * expected, 1e-11 * expected);
    EXPECT_NEAR(ParOf(*three, "\x0A\xF0\x1E"), Photons * (10 * 400.0 * 75 + 30 * 700.0 * 75), 1e-9)
        << "a negative reading counts as nothing";
    const auto flat = DefineFixed(Channel("ED", "500"));
    EXPECT_NEAR(ParOf(*flat, "\x01"), Photons * (400.0 * 50 + 500.0 * 150 + 700.0 * 100), 1e-12);
}

TEST(Par, TheSurfaceSeriesReplacesTheOther) {
    const std::string ed = Channel("ED", "500"), es = Channel("ES", "600");
    EXPECT_THAT(Points(ParList(*DefineFixed(ed))), testing::SizeIs(3));
    EXPECT_EQ(Points(ParList(*DefineFixed(es + ed)))[1], std::pair(600.0, 0));
    EXPECT_THAT(Points(ParList(*DefineFixed(ed + Channel("ES", "900")))), IsEmpty());
    EXPECT_THAT(Points(ParList(*DefineFixed(ed + Channel("ES", "600", "'V' 1 BS 1 OPTIC2")))),
                testing::SizeIs(3));
}

TEST(Par, FailsWithTheStatusOfItsFirstFailingChannel) {
    const auto instrument = DefineFixed(Channel("ED", "500") + Channel("ED", "600"));
    const std::string cut = "HDR\x01";
    double par = 7.0;
    EXPECT_EQ(ComputePar(ParList(*instrument), AsBytes(cut), false, par),
              ConversionStatus::FrameTooShort);
    EXPECT_EQ(ComputePar({}, AsBytes(cut), false, par), ConversionStatus::NotUsable);
    EXPECT_EQ(par, 7.0);
}

} // namespace
