// SPDX-License-Identifier: GPL-3.0-or-later
//
// A session whose instruments send what a test says: every sensor is a two-byte count, so a frame
// carries exactly the numbers that the test names.
#pragma once

#include "fakes/DefinedInstrument.h"
#include "fakes/SessionFixture.h"

#include <cmath>

namespace qor {

class ASendingSession : public ASession {
  protected:
    static constexpr const char* Profiler =
        "PRES NONE 'kPa' 2 BU 0 COUNT\nTEMP W 'C' 2 BU 0 COUNT\n";
    static constexpr const char* Meter = "CHL NONE 'ug/l' 2 BU 0 COUNT\n";

    static std::string Definition(const std::string& name, const std::string& sensors) {
        return Format("INSTRUMENT %s '' %zu AS 0 NONE\n", name.c_str(), name.size()) + sensors;
    }
    InstrumentId Attach(const std::string& name, const std::string& sensors, ResourceId to) {
        return Doc.AddInstrument(Temp.Put(name + ".cal", Definition(name, sensors)), to).id;
    }
    InstrumentId Attach(const std::string& name, const std::string& sensors) {
        return Attach(name, sensors, Port);
    }
    /// A frame arrives; NaN is not to be had, so a short frame is one without its last values.
    void Send(const std::string& name, const std::vector<int>& values, double seconds = 0.1) {
        std::string bytes = name;
        for (const int value : values)
            bytes += {static_cast<char>(value >> 8), static_cast<char>(value & 0xFF)};
        CFrameQueue queue;
        CFrameInfo info;
        info.identity = static_cast<std::uint32_t>(Doc.FindInstrument(name));
        info.time = Clock.Now();
        info.time.known = Stamped;
        queue.Push(info, AsBytes(bytes), 0);
        Doc.Acquisition.ProcessFrames(queue);
        Clock.Advance(std::llround(seconds * 1000));
    }
    PackageId AddPackage() {
        LoadedPackage loaded;
        loaded.ok = true;
        loaded.name = "Cast";
        for (const auto& [name, sensors] : {std::pair("CTD", Profiler), std::pair("FLU", Meter)})
            loaded.members.push_back({name, Define(Definition(name, sensors))});
        return Doc.Packages.AddPackage(std::move(loaded), Port);
    }

    bool Stamped = true; ///< the frames' times are known
};

} // namespace qor
