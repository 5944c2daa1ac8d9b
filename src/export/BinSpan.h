// SPDX-License-Identifier: GPL-3.0-or-later
//
// What frames are averaged over: stretches of one width of time, pressure or depth. Bin k goes from
// k widths on to before k + 1 widths, of seconds since 1970 in the times that are shown, of dbar
// below the surface. Pure; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qor {

struct BinSpan {
    enum class Axis : std::uint8_t { Time, Pressure, Depth };

    Axis axis = Axis::Pressure;
    double width = 1.0; ///< s, dbar or m

    bool IsTime() const { return axis == Axis::Time; }
    /// Which bin a place (in seconds, dbar or m) lies in.
    double BinOf(double place) const;
    double Centre(double bin) const { return (bin + 0.5) * width; }
    double Begin(double bin) const { return bin * width; }

    std::string_view Name() const;  ///< of the axis: "time", "pressure" or "depth"
    std::string_view Units() const; ///< "s", "dbar" or "m"
};

/// Reads "1 dbar", "0.5 m", "10 s", "5 min" or "1 h". None when the text is no such span; times
/// are whole hundredths of a second.
std::optional<BinSpan> ReadBinSpan(std::string_view text);

} // namespace qor
