// SPDX-License-Identifier: GPL-3.0-or-later
//
// The door of Instruments.ini: the first line is an instrument's name, the rest the file. What is
// set for that name is read back, and nobody else's settings change.
#include "Require.h"

#include "session/InstrumentDefaults.h"

#include <algorithm>

using namespace qor;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(input.find('\n'), size);
    const std::string name(input.substr(0, end));
    const std::string_view text = input.substr(std::min(end + 1, size));
    InstrumentDefaultsReading before = ReadInstrumentDefaults(text, "I");
    InstrumentDefaults wanted = before.Of(name);
    wanted.Immersed = !wanted.Immersed;
    wanted.Title = "title";
    const std::string written = WithInstrumentDefaults(text, name, wanted);
    Require(WithInstrumentDefaults(written, name, wanted) == written);
    before.instruments[name] = wanted;
    Require(ReadInstrumentDefaults(written, "I").instruments == before.instruments);
    return 0;
}
