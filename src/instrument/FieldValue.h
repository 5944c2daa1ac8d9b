// SPDX-License-Identifier: GPL-3.0-or-later
//
// The fits, applied to a field that is already cut out of its frame: the common ground of the
// per-sensor functions and of the conversion plan, which is why both give the same bits. Reentrant,
// no state.
#pragma once

#include "base/Bytes.h"
#include "instrument/ConversionStatus.h"
#include "instrument/FitTypes.h"
#include "instrument/RawValue.h"

#include <span>
#include <string>

namespace qor {

/// c0 + c1 x + c2 x^2 + ..., summed from the left, the powers by repeated multiplication.
inline double UnfactoredPolynomial(std::span<const double> c, double x) {
    double value = c[0], power = 1.0;
    for (std::size_t k = 1; k < c.size(); ++k) {
        power *= x;
        value += c[k] * power;
    }
    return value;
}

/// c0 (x - c1) (x - c2) ..., multiplied from the left.
inline double FactoredPolynomial(std::span<const double> c, double x) {
    double value = c[0];
    for (std::size_t k = 1; k < c.size(); ++k)
        value *= x - c[k];
    return value;
}

/// The fit of a POLYU or POLYF sensor; without coefficients the raw value itself.
struct FieldPolynomial {
    std::span<const double> c;
    bool factored = false;

    double operator()(double x) const {
        if (c.empty())
            return x;
        return factored ? FactoredPolynomial(c, x) : UnfactoredPolynomial(c, x);
    }
};

/// Applies the fit to a raw value; `time` matters to OPTIC3 only. NotUsable for a fit without a
/// number or a sensor without the coefficients that its fit needs.
ConversionStatus ApplyFit(const CSensor& sensor, const RawValue& raw,
                          const IntegrationTimeValue& time, bool immersed, double& value);

/// Raw extraction and fit of a cut field, as CalibratedValue.
ConversionStatus NumberOfField(const CSensor& sensor, ByteSpan field,
                               const IntegrationTimeValue& time, bool immersed, double& value);

/// The text of a cut field, as ValueText; a null `text` asks for the status alone.
ConversionStatus TextOfField(const CSensor& sensor, ByteSpan field, std::string* text);

/// The text of a time or position fit stands for raw values of a magnitude below this one; 0 when
/// the fit does not take the data type, or is no such fit.
double TimeTextLimit(FitType fit, DataType data);

/// The text of a DDMMYY, HHMMSS, DDMM or TIME2 fit; a null `text` asks for the status alone.
/// WrongDataType when the fit does not take the sensor's data type, NotFinite for a position or
/// time beyond every calendar and globe, NotUsable for any other fit.
ConversionStatus TimeText(const CSensor& sensor, const RawValue& raw, std::string* text);

} // namespace qor
