// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/CheckCounts.h"

#include "session/SessionSnapshot.h"

namespace qor {

void CheckCounts::Add(const FrameCheckResult& checks) {
    ++frames;
    checksCounter = checks.checksCounter;
    checksSum = checks.checksSum;
    failed += checks.Failed();
    dropped += checks.dropped;
    checksumErrors += checks.checksumError;
    valueErrors += checks.valueError;
}

std::string CheckCounts::Text() const {
    return CheckedCount(checksCounter, dropped, "dropped") + ", " +
           CheckedCount(checksSum, checksumErrors, "checksum errors") +
           (valueErrors > 0 ? ", " + CheckedCount(true, valueErrors, "value errors") : "");
}

void CFailedFrames::Add(const std::string& instrument, const FrameCheckResult& checks) {
    ++Frames;
    if (!checks.Failed())
        return;
    ++Failed;
    Instruments[instrument].Add(checks);
}

std::string CFailedFrames::Sentence() const {
    if (Failed == 0)
        return {};
    std::string text =
        std::to_string(Failed) + " of " + std::to_string(Frames) + " frames failed their checks (";
    const char* separator = "";
    for (const auto& [name, counts] : Instruments) {
        text += separator + name + ": " + counts.Text();
        separator = "; ";
    }
    return text + ").";
}

} // namespace qor
