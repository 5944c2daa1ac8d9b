// SPDX-License-Identifier: GPL-3.0-or-later
//
// The inverse of raw extraction and fits.
#include "simulation/FieldEncoder.h"

#include "base/Text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

namespace qor {

namespace {

constexpr double NoRaw = std::numeric_limits<double>::quiet_NaN();
constexpr double LargestInteger = 2147483646.0; // the largest that an ASCII integer may say

double Power(double base, std::uint32_t exponent) {
    return std::pow(base, static_cast<double>(exponent));
}

/// Digits before the point in a text field of so many characters; 15 are exact.
RawRange TextRange(const CSensor& sensor, double bound) {
    if (sensor.VariableLength)
        return {-bound, bound, sensor.Data == DataType::AI};
    if (sensor.FieldLength == 0)
        return {};
    const std::uint32_t digits = std::min(sensor.FieldLength, 15U);
    return {std::max(-bound, 1.0 - Power(10, digits - 1)), std::min(bound, Power(10, digits) - 1),
            sensor.Data == DataType::AI};
}

/// The raw value of an OPTIC1 field: of the gains that can say the value, the nearest.
double RawForOptic1(const CSensor& sensor, const RawRange& range, double value, bool immersed) {
    double best = NoRaw, leastError = std::numeric_limits<double>::infinity();
    for (std::size_t g = 0; g < std::min<std::size_t>(4, sensor.Coefficients.size()); ++g) {
        const std::vector<double>& c = sensor.Coefficients[g];
        if (c.size() < 3)
            continue;
        const double factor = (immersed ? c[2] : 1.0) * c[1];
        const double lowest = std::ceil(range.lowest / 4) * 4;
        const double highest = std::floor((range.highest - static_cast<double>(g)) / 4) * 4;
        const double wanted = std::round((value / factor + c[0]) / 4) * 4;
        if (!std::isfinite(wanted) || lowest > highest)
            continue;
        const double counts = std::clamp(wanted, lowest, highest);
        const double error = std::fabs((counts - c[0]) * factor - value);
        if (error < leastError) {
            leastError = error;
            best = counts + static_cast<double>(g);
        }
    }
    return best;
}

double PolynomialOf(const CSensor& sensor, double x) {
    const std::vector<double>& c = sensor.Coefficients[0];
    return sensor.Fit == FitType::POLYF ? FactoredPolynomial(c, x) : UnfactoredPolynomial(c, x);
}

/// Where the polynomial takes the value between two points that enclose it.
double Bisect(const CSensor& sensor, double low, double high, double value) {
    const bool rising = PolynomialOf(sensor, low) < value;
    for (int i = 0; i < 80; ++i) {
        const double middle = low + (high - low) / 2;
        ((PolynomialOf(sensor, middle) < value) == rising ? low : high) = middle;
    }
    return low + (high - low) / 2;
}

/// Looks for the value between growing powers of two up to the range's bound on that side of zero;
/// remembers the nearest point on the way.
double SearchSide(const CSensor& sensor, double bound, double value, double& nearest,
                  double& leastError) {
    double before = 0.0, atBefore = PolynomialOf(sensor, before);
    for (double step = 0x1p-10; before != bound; step *= 2) {
        const double x = bound < 0 ? std::max(-step, bound) : std::min(step, bound);
        const double at = PolynomialOf(sensor, x);
        if (std::isfinite(at) && std::fabs(at - value) < leastError) {
            leastError = std::fabs(at - value);
            nearest = x;
        }
        if (std::isfinite(at) && std::isfinite(atBefore) && (atBefore < value) != (at < value))
            return Bisect(sensor, before, x, value);
        before = x;
        atBefore = at;
    }
    return NoRaw;
}

double RawForPolynomial(const CSensor& sensor, const RawRange& range, double value) {
    const std::vector<double>& c = sensor.Coefficients[0];
    if (c.size() == 1)
        return 0.0;
    if (c.size() == 2)
        return sensor.Fit == FitType::POLYF ? value / c[0] + c[1] : (value - c[0]) / c[1];
    double nearest = NoRaw, leastError = std::numeric_limits<double>::infinity();
    double raw = SearchSide(sensor, range.highest, value, nearest, leastError);
    if (std::isnan(raw))
        raw = SearchSide(sensor, range.lowest, value, nearest, leastError);
    return std::isnan(raw) ? nearest : raw;
}

/// The number in a field of exactly so many characters, with as many decimals as there is room for.
std::string PaddedText(const CSensor& sensor, double raw, std::size_t length) {
    const auto room = static_cast<int>(std::min<std::size_t>(length, 12));
    const int whole = raw == 0.0 ? 1 : static_cast<int>(std::log10(std::fabs(raw))) + 1;
    int decimals = sensor.Data == DataType::AF ? room - std::max(whole, 1) - 1 - (raw < 0) : 0;
    std::string text = FixedNumber(raw, std::max(decimals, 0));
    while (text.size() > length && decimals > 0)
        text = FixedNumber(raw, --decimals);
    if (text.size() < length)
        text.insert(text.starts_with('-') ? 1 : 0, length - text.size(), '0');
    return text;
}

std::string HexDigits(const CSensor& sensor, double raw, std::size_t length) {
    auto digits = static_cast<std::uint64_t>(std::fabs(raw));
    if (sensor.Data == DataType::HS && raw < 0 && length > 0)
        digits |= std::uint64_t{4} << 4 * (length - 1);
    std::string text;
    for (std::size_t i = length; i-- > 0;)
        text += "0123456789ABCDEF"[digits >> 4 * std::min<std::size_t>(i, 15) & 15];
    return text;
}

} // namespace

RawRange RangeOf(const CSensor& sensor) {
    const std::uint32_t length = sensor.FieldLength;
    switch (sensor.Data) {
    case DataType::BU:
        return {0.0, Power(256, length) - 1, true};
    case DataType::BS:
        return length == 0 ? RawRange{}
                           : RawRange{-Power(256, length) / 2, Power(256, length) / 2 - 1, true};
    case DataType::BF:
        return {-1e30, 1e30, false};
    case DataType::BD:
        return {-1e100, 1e100, false};
    case DataType::HU:
        return {0.0, Power(16, length) - 1, true};
    case DataType::HS: {
        const double largest = length == 0 ? 0.0 : 4 * Power(16, length - 1) - 1;
        return {-largest, largest, true};
    }
    case DataType::AI:
        return TextRange(sensor, LargestInteger);
    case DataType::AF:
        return TextRange(sensor, 1e15);
    default:
        return {};
    }
}

double RawForValue(const CSensor& sensor, const RawRange& range, double value,
                   const IntegrationTimeValue& time, bool immersed) {
    const bool has = !sensor.Coefficients.empty();
    const std::span<const double> c =
        has ? std::span<const double>(sensor.Coefficients[0]) : std::span<const double>();
    switch (sensor.Fit) {
    case FitType::COUNT:
        return value;
    case FitType::OPTIC1:
        return RawForOptic1(sensor, range, value, immersed);
    case FitType::OPTIC2:
        return c.size() < 3 ? NoRaw : value / ((immersed ? c[2] : 1.0) * c[1]) + c[0];
    case FitType::OPTIC3:
        return c.size() < 4 || time.status != ConversionStatus::Good
                   ? NoRaw
                   : value / (c[3] / time.seconds * (immersed ? c[2] : 1.0) * c[1]) + c[0];
    case FitType::POLYF:
    case FitType::POLYU:
        return c.empty() ? NoRaw : RawForPolynomial(sensor, range, value);
    default:
        return NoRaw;
    }
}

void EncodeRaw(const CSensor& sensor, double raw, std::span<std::uint8_t> field) {
    std::string text;
    switch (sensor.Data) {
    case DataType::BU:
    case DataType::BS:
        PutBigEndian(static_cast<std::uint64_t>(static_cast<std::int64_t>(raw)), field);
        return;
    case DataType::BF:
        PutBigEndian(std::bit_cast<std::uint32_t>(static_cast<float>(raw)), field);
        return;
    case DataType::BD:
        PutBigEndian(std::bit_cast<std::uint64_t>(raw), field);
        return;
    case DataType::HU:
    case DataType::HS:
        text = HexDigits(sensor, raw, field.size());
        break;
    default:
        text = PaddedText(sensor, raw, field.size());
        break;
    }
    std::copy_n(text.begin(), std::min(text.size(), field.size()), field.begin());
}

std::string TextOfRaw(const CSensor& sensor, double raw, std::string_view forbidden) {
    const auto allowed = [forbidden](std::string_view text) {
        return text.find_first_of(forbidden) == std::string_view::npos;
    };
    char digits[340];
    const auto end = std::to_chars(digits, digits + sizeof digits, raw, std::chars_format::fixed);
    std::string shortest(digits, end.ptr);
    if (sensor.Data == DataType::AI)
        shortest = FixedNumber(raw, 0);
    else if (shortest.size() > 20)
        shortest = FixedNumber(raw, 6);
    for (const std::string& text : {shortest, FixedNumber(raw, 0), FixedNumber(std::fabs(raw), 0)})
        if (allowed(text))
            return text;
    const std::size_t digit = std::string_view("0123456789").find_first_not_of(forbidden);
    return digit == std::string_view::npos ? std::string() : std::to_string(digit);
}

} // namespace qor
