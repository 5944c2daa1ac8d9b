// SPDX-License-Identifier: GPL-3.0-or-later
//
// Instruments whose sensors a test sets as it likes: every sensor is an eight-byte number, so a
// frame carries exactly the values that the test names. NaN is a field without a value.
#pragma once

#include "fakes/CollectingSink.h"
#include "fakes/DefinedInstrument.h"
#include "session/QorViewIns.h"
#include "views/GridPage.h"

#include <bit>
#include <memory>
#include <string>
#include <vector>

namespace qor {

/// A page as text; cells that are not black are marked.
inline std::string PageText(const GridPage& page) {
    std::string text = page.title + "\n";
    for (const GridRow& row : page.rows)
        text += "  " + row.label + " [" + row.units + "] = " + row.value.text +
                (row.value.background == Black ? "" : " !") + "\n";
    return text;
}

class CViewedInstrument {
  public:
    /// Lines of "TYPE ID UNITS"; optical ones (ES, ED, LU, EU) get an optical fit.
    explicit CViewedInstrument(const std::vector<std::string>& sensors,
                               const std::string& more = {})
        : Definition(DefineFixed(Lines(sensors) + more)),
          Instrument(*Definition, NextId(), "COM1", Sink) {}

    CQorViewIns& Ins() { return Instrument; }
    const CLiveInstrument& Live() { return Instrument.Live; }

    /// The next frame arrives.
    void Send(const std::vector<double>& values) {
        CFrameData frame;
        frame.Bytes = {'H', 'D', 'R'};
        for (const double value : values) {
            std::uint8_t bytes[8];
            PutBigEndian(std::bit_cast<std::uint64_t>(value), bytes);
            frame.Bytes.insert(frame.Bytes.end(), std::begin(bytes), std::end(bytes));
        }
        frame.Info.frameSize = static_cast<std::int32_t>(frame.Bytes.size());
        frame.Info.frameCounter = ++Sent;
        Instrument.Process(frame);
    }

  private:
    static InstrumentId NextId() {
        static std::uint32_t last = 0;
        return InstrumentId{++last};
    }
    static std::string Lines(const std::vector<std::string>& sensors) {
        std::string text;
        for (const std::string& sensor : sensors) {
            const std::size_t units = sensor.rfind(' ');
            const std::string type = sensor.substr(0, 2);
            const bool optic = type == "ES" || type == "ED" || type == "LU" || type == "EU";
            text += sensor.substr(0, units) + " '" + sensor.substr(units + 1) + "' 8 BD ";
            text += optic ? "1 OPTIC2\n0 1 1\n" : "0 COUNT\n";
        }
        return text;
    }

    CCollectingSink Sink;
    std::unique_ptr<CInstrument> Definition;
    CQorViewIns Instrument;
    std::uint32_t Sent = 0;
};

} // namespace qor
