// SPDX-License-Identifier: GPL-3.0-or-later
//
// The tests of values. See QcTests.h.
#include "export/QcTests.h"

#include <cmath>

namespace qor {

namespace {

QcFlag ByStep(const QcSteps& steps, double step) {
    if (steps.bad && step > *steps.bad)
        return QcFlag::Bad;
    return step > steps.suspect ? QcFlag::Suspect : QcFlag::Good;
}

bool Has(const QcRange& range, double value) {
    return value >= range.least && value <= range.greatest;
}

bool IsWithin(const QcRange& range, double value) {
    return value > range.least && value < range.greatest;
}

} // namespace

QcFlag CQcTests::Take(std::optional<double> value, std::optional<double> seconds) {
    QcFlag flag = QcFlag::Missing;
    if (value)
        flag = Worse(Worse(TestRanges(*value), TestRate(*value, seconds)), TestFlat(*value));
    Before = Last;
    Last = value;
    LastSeconds = seconds;
    return flag;
}

QcFlag CQcTests::SpikeBefore(std::optional<double> next) const {
    if (!Rules.spike || !Before || !Last || !next)
        return QcFlag::NotEvaluated;
    return ByStep(*Rules.spike, std::fabs(*Last - (*Before + *next) / 2.0));
}

QcFlag CQcTests::TestRanges(double value) const {
    if ((Rules.gross && !Has(*Rules.gross, value)) ||
        (Rules.alarm && IsWithin(*Rules.alarm, value)))
        return QcFlag::Bad;
    if ((Rules.likely && !Has(*Rules.likely, value)) ||
        (Rules.warning && IsWithin(*Rules.warning, value)))
        return QcFlag::Suspect;
    return Rules.gross || Rules.likely || Rules.warning || Rules.alarm ? QcFlag::Good
                                                                       : QcFlag::NotEvaluated;
}

QcFlag CQcTests::TestRate(double value, std::optional<double> seconds) const {
    if (!Rules.rate || !Last || !LastSeconds || !seconds || *seconds <= *LastSeconds)
        return QcFlag::NotEvaluated;
    return ByStep(*Rules.rate, std::fabs(value - *Last) / (*seconds - *LastSeconds));
}

/// Decided: values that are missing are passed over; a sensor that is stuck stays stuck meanwhile.
QcFlag CQcTests::TestFlat(double value) {
    if (!Rules.flat)
        return QcFlag::NotEvaluated;
    Latest.push_back(value);
    if (Latest.size() > Rules.flat->bad)
        Latest.pop_front();
    std::size_t alike = 0;
    for (auto one = Latest.rbegin();
         one != Latest.rend() && std::fabs(*one - value) <= Rules.flat->within; ++one)
        ++alike;
    if (alike >= Rules.flat->bad)
        return QcFlag::Bad;
    if (alike >= Rules.flat->suspect)
        return QcFlag::Suspect;
    return Latest.size() < Rules.flat->suspect ? QcFlag::NotEvaluated : QcFlag::Good;
}

} // namespace qor
