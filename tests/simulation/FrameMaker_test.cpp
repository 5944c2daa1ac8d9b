// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulation/FrameMaker.h"

#include "fakes/CollectingSink.h"
#include "fakes/DefinedInstrument.h"
#include "instrument/Calibration.h"
#include "instrument/FieldText.h"
#include "instrument/FrameChecks.h"

#include <gmock/gmock.h>

using namespace qor;

namespace {

constexpr double Noon = 1115122805.25; // 2005-05-03 12:20:05.25 UTC

const std::string Irradiance = "INTTIME ED 'sec' 2 BU 1 POLYU\n0 0.001\n"
                               "ED 350.5 'uW/cm^2/nm' 2 BU 1 OPTIC3\n2050.5 0.00021 1.7 0.256\n";

TEST(FrameMaker, WantedValuesComeBackAsNearAsTheFieldAllows) {
    struct {
        std::string line;
        double wanted, tolerance;
    } const cases[] = {
        {"X 1 '' 2 BU 1 OPTIC2\n2050.5 0.01 1.5\n", 12.345, 0.0076},
        {"X 1 '' 2 BU 1 OPTIC2\n2050.5 0.01 1.5\n", 1e9, 1e9}, // more than the field holds
        {"X 1 '' 3 BU 4 OPTIC1\n9 1 1\n9 .1 1\n9 .01 1\n9 .001 1\n", 1.2345, 0.002},
        {"X 1 '' 2 BS 1 POLYU\n10 0.01 -1e-7\n", -3.21, 0.01},
        {"X 1 '' 3 BU 1 POLYU\n-2 1e-3 1e-9 1e-16\n", 4321.5, 0.02},
        {"X 1 '' 4 BF 1 POLYF\n0.5 2 -7\n", 33.3, 1e-4},
        {"X 1 '' 8 BD 0 COUNT\n", -1.0 / 3, 0},
        {"X 1 '' 4 HS 0 COUNT\n", -291, 0},
        {"X 1 '' 6 AI 1 POLYF\n0.1 5\n", -77.7, 1e-12},
        // Both the time and the irradiance that counts with it.
        {Irradiance, 0.064, 0.00021 * 0.256 / 0.064},
        {Irradiance, 0.512, 0.00021 * 0.256 / 0.512},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const auto instrument = DefineFixed(c.line);
        CFrameMaker maker(*instrument);
        maker.SetImmersed(true);
        maker.SetValues([&c](const CSensor&) { return c.wanted; });
        double value = 0.0;
        ASSERT_EQ(CalibratedValue(instrument->Sensors().back(), maker.Next(Noon), true, value),
                  ConversionStatus::Good);
        EXPECT_NEAR(value, c.wanted, c.tolerance);
    }
}

TEST(FrameMaker, ADelimitedFramePassesTheCheckOfItsSum) {
    const auto field = [](const std::string& sensor) {
        return "FIELD NONE ',' 1 AS 0 DELIMITER\n" + sensor + "\n";
    };
    const std::string counter = field("FRAME COUNTER '' V AI 0 COUNT");
    const std::string sum = field("CHECK SUM '' V AI 0 COUNT");
    const std::string depth = field("PRES NONE 'dbar' V AF 1 POLYU\n0 1");
    const std::string name = field("NAME NONE '' V AS 0 NONE");
    for (const std::string& lines :
         {counter + depth + depth + depth + sum, depth + sum, name + counter + sum,
          sum + counter + depth, name + depth + sum + counter}) {
        SCOPED_TRACE(lines);
        const auto instrument = DefineDelimited(lines);
        ASSERT_TRUE(HasDelimitedChecksum(*instrument));
        CFrameMaker maker(*instrument);
        CCollectingSink sink;
        CFrameChecks checks;
        checks.CounterEnabled = FrameCounterIndex(*instrument) >= 0;
        checks.SetUp(*instrument, "TXT", "COM1", sink);
        for (int i = 0; i < 300; ++i) {
            const std::vector<std::uint8_t> frame = maker.Next(Noon + i);
            checks.Check(frame);
            for (const CSensor& sensor : instrument->Sensors()) {
                std::string text;
                EXPECT_EQ(FormatField(sensor, frame, false, FieldView::Calibrated, 2, text),
                          ConversionStatus::Good)
                    << sensor.Type << " in " << testing::PrintToString(frame);
            }
        }
        EXPECT_THAT(sink.Messages(), testing::IsEmpty());
    }
}

} // namespace
