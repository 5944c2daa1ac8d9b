// SPDX-License-Identifier: GPL-3.0-or-later
//
// The door of limits of values: any text as such a file. What is taken can be applied, to any
// values.
#include "Require.h"

#include "export/BinSpan.h"
#include "export/QcLimits.h"

#include <algorithm>

using namespace qor;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    QcLimits limits{.path = "limits.txt"};
    const std::string fault = ParseQcLimits(text, limits);
    Require(fault.find('\n') == std::string::npos);
    const std::string names[] = {"*", "TEMP", "TEMP(W)"};
    CQcTests tests(limits.RulesOf(names));
    for (std::size_t i = 0; i < std::min<std::size_t>(size, 64); ++i) {
        const double value = static_cast<double>(data[i]) - 128.0;
        const QcFlag flag = Worse(tests.SpikeBefore(value), tests.Take(value, value * value));
        Require(flag >= QcFlag::Good && flag <= QcFlag::Bad);
    }
    static_cast<void>(limits.WhyUnknown(names, names));
    const std::optional<BinSpan> span = ReadBinSpan(text);
    Require(!span || span->BinOf(span->Centre(7.0)) == 7.0);
    return 0;
}
