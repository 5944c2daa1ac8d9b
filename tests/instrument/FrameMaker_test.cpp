// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/FrameMaker.h"

#include "fakes/CollectingSink.h"
#include "fakes/DefinedInstrument.h"
#include "instrument/Calibration.h"
#include "instrument/FrameChecks.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace qor;
using testing::IsEmpty;

namespace {

constexpr double Noon = 1115122805.25; // 2005-05-03 12:20:05.25 UTC

std::string Channels(const std::string& type, int count, const std::string& fit) {
    std::string lines;
    for (int i = 0; i < count; ++i)
        lines += type + " " + std::to_string(350 + 3 * i) + ".5 'uW/cm^2/nm' 2 BU 1 " + fit +
                 "\n2050.5 0.00021 1.7" + (fit == "OPTIC3" ? " 0.256\n" : "\n");
    return lines;
}

std::string Delimited(const std::string& separator, const std::string& sensorLine) {
    return "FIELD NONE '" + separator + "' 1 AS 0 DELIMITER\n" + sensorLine;
}

const std::string IntegrationTime = "INTTIME ED 'sec' 2 BU 1 POLYU\n0 0.001\n";
const std::string Profiler = IntegrationTime + Channels("ED", 137, "OPTIC3") +
                             "PRES NONE 'm' 2 BU 1 POLYU\n-10.1 0.0071\n"
                             "TEMP NONE 'C' 2 BS 1 POLYU\n10 0.01 -1e-7\n"
                             "TILT X 'deg' 4 BF 0 COUNT\nTILT Y 'deg' 8 BD 1 POLYF\n2 1\n"
                             "VS NONE 'V' 4 HU 1 POLYU\n0 0.001\nDRIFT NONE '' 4 HS 0 COUNT\n"
                             "TIMER NONE 'sec' 8 AF 0 COUNT\nSPARE NONE '' 3 AI 0 NONE\n"
                             "NOTE NONE '' 5 AS 0 NONE\nCLOCK NONE '' 4 BU 0 TIME2\n"
                             "FRAME COUNTER '' 1 BU 0 COUNT\nCHECK SUM '' 1 BU 0 COUNT\n";
const std::string Position =
    Delimited(",", "TIME NONE '' V AF 0 HHMMSS\n") + Delimited(",", "LAT NONE '' V AF 0 DDMM\n") +
    Delimited(",", "LATHEMI NONE '' V AS 0 NONE\n") + Delimited(",", "LON NONE '' V AF 0 DDMM\n") +
    Delimited(".", "LONHEMI NONE '' V AS 0 NONE\n") +
    Delimited(";", "SPEED NONE 'm/s' V AF 0 COUNT\n") +
    Delimited("-", "DRIFT NONE '' V AI 1 POLYU\n-500 1\n") +
    Delimited("\\x20", "DATE NONE '' V AI 0 DDMMYY\n") +
    Delimited("*", "FRAME NONE '' V AI 0 COUNT\n");

TEST(FrameMaker, FramesConvertAndPassTheChecks) {
    std::vector<std::unique_ptr<CInstrument>> kinds;
    kinds.push_back(DefineFixed(Profiler));
    kinds.push_back(DefineDelimited(Position));
    // Counter and checksum in digits; gains; times too coarse for their unit.
    kinds.push_back(DefineFixed("FRAME NONE '' 3 AI 0 COUNT\nX NONE '' 2 BU 0 COUNT\n"
                                "CHECKSUM NONE '' 1 AI 0 COUNT\n"));
    kinds.push_back(DefineFixed("LU 412 'uW/cm^2/nm' 2 BU 4 OPTIC1\n9 1 1\n9 .1 1\n9 .01 1\n"
                                "9 .001 1\nLU 555 '' 1 BU 1 OPTIC1\n1 2 3\n"
                                "LU 670 '' 2 BS 2 OPTIC1\n1 2 3\n2 3 4\n"));
    kinds.push_back(DefineFixed("INTTIME ED 'sec' 1 BU 1 POLYU\n0 1\n" +
                                Channels("ED", 3, "OPTIC3") + "CLOCK NONE '' 4 BF 0 HHMMSS\n"));
    for (const auto& kind : kinds) {
        const CInstrument& instrument = *kind;
        SCOPED_TRACE(instrument.Sensors()[0].Type);
        CFrameMaker maker(instrument, 7);
        CCollectingSink sink;
        CFrameChecks checks;
        checks.CounterEnabled = FrameCounterIndex(instrument) >= 0;
        checks.ChecksumEnabled = ChecksumIndexOf(instrument) >= 0;
        checks.SetUp(instrument, "HDR", "COM1", sink);
        for (int i = 0; i < 600; ++i) {
            const std::vector<std::uint8_t> frame = maker.Next(Noon + i);
            checks.Check(frame);
            ASSERT_TRUE(AsText(frame).starts_with(instrument.SyncHeader()));
            if (instrument.Type() == FrameType::Fixed)
                ASSERT_EQ(frame.size(), static_cast<std::size_t>(instrument.FrameSize()));
            else
                ASSERT_EQ(AsText(frame).find(instrument.Terminator()), frame.size() - 2);
            for (const CSensor& sensor : instrument.Sensors()) {
                double value = 0.0;
                std::string text;
                const ConversionStatus status = KindOfValue(sensor) == ValueKind::Text
                                                    ? ValueText(sensor, frame, text)
                                                    : CalibratedValue(sensor, frame, false, value);
                ASSERT_EQ(status, sensor.Fit == FitType::NONE && text.empty()
                                      ? ConversionStatus::NotUsable
                                      : ConversionStatus::Good)
                    << sensor.Type << " " << AsText(frame);
            }
        }
        EXPECT_THAT(sink.Messages(), IsEmpty());
    }
}

TEST(FrameMaker, WantedValuesComeBackAsNearAsTheFieldAllows) {
    struct {
        std::string line;
        double wanted, tolerance;
    } const cases[] = {
        {"X 1 '' 2 BU 1 OPTIC2\n2050.5 0.01 1.5\n", 12.345, 0.0076},
        {"X 1 '' 2 BU 1 OPTIC2\n2050.5 0.01 1.5\n", 1e9, 1e9}, // more than the field holds
        {"X 1 '' 3 BU 4 OPTIC1\n9 1 1\n9 .1 1\n9 .01 1\n9 .001 1\n", 1.2345, 0.002},
        {"X 1 '' 2 BU 4 OPTIC1\n9 1 1\n9 .1 1\n9 .01 1\n9 .001 1\n", 5000, 0.2},
        {"X 1 '' 2 BS 1 POLYU\n10 0.01 -1e-7\n", -3.21, 0.01},
        {"X 1 '' 3 BU 1 POLYU\n-2 1e-3 1e-9 1e-16\n", 4321.5, 0.02},
        {"X 1 '' 4 BF 1 POLYF\n0.5 2 -7\n", 33.3, 1e-4},
        {"X 1 '' 8 BD 0 COUNT\n", -1.0 / 3, 0},
        {"X 1 '' 4 HS 0 COUNT\n", -291, 0},
        {"X 1 '' 7 AF 0 COUNT\n", -12.3456, 5e-4},
        {"X 1 '' 6 AI 1 POLYF\n0.1 5\n", -77.7, 1e-12},
        // Both the time and the irradiance that counts with it.
        {IntegrationTime + Channels("ED", 1, "OPTIC3"), 0.064, 0.00021 * 0.256 / 0.064},
        {IntegrationTime + Channels("ED", 1, "OPTIC3"), 0.512, 0.00021 * 0.256 / 0.512},
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

TEST(FrameMaker, TimesSeedsAndSkippedFramesShowInTheBytes) {
    const auto gps = DefineDelimited(Position);
    const auto text = [](const std::vector<std::uint8_t>& frame) {
        return std::string(AsText(frame));
    };
    CFrameMaker one(*gps, 1), same(*gps, 1), other(*gps, 2);
    const std::string first = text(one.Next(Noon));
    EXPECT_TRUE(first.starts_with("$TXT,122005.25,4438.7,N,6335.W;")) << first;
    EXPECT_TRUE(first.ends_with(" 30505*0\r\n")) << first;
    EXPECT_EQ(text(same.Next(Noon)), first);
    EXPECT_NE(text(other.Next(Noon)), first);
    one.Skip(254);
    EXPECT_TRUE(text(one.Next(Noon)).ends_with("*255\r\n"));
    EXPECT_TRUE(text(one.Next(Noon)).ends_with("*0\r\n"));
}

} // namespace
