// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/ConversionPlan.h"

#include "fakes/DefinedInstrument.h"
#include "instrument/Calibration.h"

#include <gmock/gmock.h>

#include <bit>
#include <random>
#include <set>

using namespace qor;

namespace {

/// Makes up definitions and frames for them.
class CDice {
  public:
    explicit CDice(unsigned seed) : Engine(seed) {}

    int Roll(int sides) { return static_cast<int>(Engine() % static_cast<unsigned>(sides)); }
    bool Chance(int percent) { return Roll(100) < percent; }
    template <class T, std::size_t N> const T& Pick(const T (&of)[N]) {
        return of[Roll(static_cast<int>(N))];
    }

    std::string Definition(bool delimited) {
        std::string lines =
            "INTTIME LU 'sec' " + std::string(delimited ? "0" : "2") + " BU 1 OPTIC2\n-2 1 2\n";
        // The other integration time may have no value.
        lines += delimited    ? "FIELD NONE ',' 1 AS 0 DELIMITER\nINTTIME ES 'sec' V AF"
                 : Chance(50) ? "INTTIME ES 'sec' 2 AI"
                              : "INTTIME ES 'sec' 2 BU";
        lines += " 1 POLYU\n0.5 0.001\n";
        const int runs = 1 + Roll(8);
        for (int i = 0; i < runs; ++i)
            lines += Run(delimited);
        return lines;
    }

    /// What follows the header; often the numbers that text fields want.
    std::string Body(std::size_t length) {
        static const std::string likely = "0123456789.-+ eE,;\r\n";
        const bool text = Chance(50);
        std::string bytes;
        while (bytes.size() < length)
            bytes += text && !Chance(3) ? likely[static_cast<std::size_t>(Roll(20))]
                                        : static_cast<char>(Roll(256));
        return bytes;
    }

    std::string DelimitedBody() {
        static const char* const fields[] = {"1",     "-12.5",       "",
                                             "0.1e3", "x",           "1e999",
                                             "4095",  " 7",          "1234.5678901234567",
                                             "\2015", "-2147483648", "235959.5",
                                             "1e300", "130705"};
        std::string body;
        for (int i = Roll(30); i > 0; --i)
            body += std::string(Chance(90) ? "," : ";") + (Chance(60) ? Number() : Pick(fields));
        return body + (Chance(90) ? "\r\n" : "");
    }

  private:
    std::string Number() {
        std::string text = Chance(20) ? "-" : "";
        const int digits = 1 + Roll(Chance(70) ? 8 : 18), point = Roll(2 * digits);
        for (int n = 0; n < digits; ++n)
            text += n == point ? '.' : static_cast<char>('0' + Roll(10));
        return Chance(5) ? text + Pick({'.', 'e', ' ', '\xFF', '/', ':'}) : text;
    }

    /// Neighbours of one fit, any of the table's; a FIELD line is no sensor.
    std::string Run(bool delimited) {
        const FitRow& picked = Pick(FitTable);
        const FitRow& fit = picked.fit == FitType::DELIMITER ? FitTable[0] : picked;
        const DataType data = Chance(40) ? DataType::BU : Pick(DataTypeTable).data;
        const std::string length = delimited ? "V" : Chance(40) ? "2" : std::to_string(1 + Roll(9));
        std::string lines;
        for (int n = Chance(50) ? 1 : 1 + Roll(20); n > 0; --n) {
            if (delimited)
                lines +=
                    std::string("FIELD NONE '") + (Chance(90) ? "," : ";") + "' 1 AS 0 DELIMITER\n";
            const auto more = static_cast<int>(fit.mostGains - fit.fewestGains);
            const int gains = static_cast<int>(fit.fewestGains) + Roll(1 + more);
            lines += std::string(Chance(80) ? "ES" : "LU") + " 1 '' " + length + " " +
                     KeywordOf(data) + " " + std::to_string(gains) + " " + KeywordOf(fit.fit) +
                     "\n";
            for (int g = 0; g < gains; ++g)
                lines += Coefficients(fit);
        }
        return lines;
    }

    std::string Coefficients(const FitRow& fit) {
        static const char* const values[] = {"0", "1", "-1.7", "0.0013", "123.25", "2"};
        const std::size_t more = std::min<std::size_t>(fit.mostCoefficients, 5);
        auto n = static_cast<int>(fit.fewestCoefficients);
        n += Roll(1 + static_cast<int>(more) - n);
        std::string line;
        for (; n > 0; --n)
            line += std::string(Chance(4) ? "1e300" : Pick(values)) + " ";
        return line + "\n";
    }

    std::mt19937 Engine;
};

/// The plan says of every sensor what the functions for one sensor say.
void ExpectSameValues(const CInstrument& instrument, const std::string& frame, bool immersed,
                      const CConversionPlan& plan, FrameValues& values) {
    plan.Convert(AsBytes(frame), immersed, values);
    ASSERT_EQ(values.numbers.size(), instrument.Sensors().size());
    bool failed = false;
    for (const CSensor& sensor : instrument.Sensors()) {
        const auto i = static_cast<std::size_t>(sensor.Index);
        double number = 0.0;
        std::string text, planText;
        const bool isText = KindOfValue(sensor) == ValueKind::Text;
        const ConversionStatus status =
            isText ? ValueText(sensor, AsBytes(frame), text)
                   : CalibratedValue(sensor, AsBytes(frame), immersed, number);
        failed = failed || status != ConversionStatus::Good;
        ASSERT_EQ(values.statuses[i], status)
            << "sensor " << i << " " << KeywordOf(sensor.Data) << " " << KeywordOf(sensor.Fit);
        if (isText) {
            ASSERT_EQ(plan.Text(sensor, AsBytes(frame), values, planText), status);
            ASSERT_EQ(planText, text);
        } else if (status == ConversionStatus::Good) {
            ASSERT_EQ(std::bit_cast<std::uint64_t>(values.numbers[i]),
                      std::bit_cast<std::uint64_t>(number))
                << "sensor " << i << " " << KeywordOf(sensor.Data) << " " << KeywordOf(sensor.Fit);
        }
    }
    ASSERT_EQ(values.anyFailed, failed);
}

TEST(ConversionPlan, GivesTheBitsOfTheSingleConversions) {
    FrameValues values; // shared, so that every plan meets what another left behind
    std::set<std::pair<DataType, FitType>> met;
    for (unsigned seed = 0; seed < 1500; ++seed) {
        CDice dice(seed);
        const bool delimited = dice.Chance(30);
        const std::string lines = dice.Definition(delimited);
        const auto instrument = delimited ? DefineDelimited(lines) : DefineFixed(lines);
        const CConversionPlan plan(*instrument);
        for (const CSensor& sensor : instrument->Sensors())
            met.emplace(sensor.Data, sensor.Fit);
        std::string frame;
        for (int i = 0; i < 12; ++i) {
            const auto length = static_cast<std::size_t>(instrument->FrameSize() - 3);
            if (dice.Chance(70)) // else the last frame once more
                frame = delimited ? "$TXT" + dice.DelimitedBody()
                                  : "HDR" + dice.Body(dice.Chance(90) ? length : length / 2);
            SCOPED_TRACE("seed " + std::to_string(seed) + "\n" + lines +
                         testing::PrintToString(frame));
            ASSERT_NO_FATAL_FAILURE(
                ExpectSameValues(*instrument, frame, dice.Chance(30), plan, values));
        }
    }
    // Whatever the table allows was among them.
    for (const FitRow& fit : FitTable)
        for (const DataTypeRow& data : DataTypeTable)
            EXPECT_TRUE(met.count({data.data, fit.fit}) == 1 || !fit.allowed.Has(data.data) ||
                        fit.fit == FitType::DELIMITER)
                << data.keyword << " " << fit.keyword;
}

} // namespace
