// SPDX-License-Identifier: GPL-3.0-or-later
//
// The colours and sizes of the desktop as tables: one row of tokens a palette, the colours of
// series and of wavelengths. Everything that is painted takes its colour from here, so that a test
// can compute the contrasts and the night palette holds nothing but red.
#pragma once

#include <QRgb>

#include <array>
#include <cstddef>
#include <cstdint>

namespace qor {

enum class Look : std::uint8_t { Light, Dark, Night };
inline constexpr std::size_t LookCount = 3;

/// A colour that is not transparent, from 0xRRGGBB.
constexpr QRgb Solid(std::uint32_t rgb) {
    return 0xFF000000U | rgb;
}

struct Tokens {
    QRgb window;
    QRgb base;   ///< plots and fields
    QRgb raised; ///< buttons
    QRgb text;
    QRgb text2; ///< beside the main thing; not on raised
    QRgb border;
    QRgb accent; ///< focus, selection, links
    QRgb stale;
    QRgb grid; ///< ornament only
    QRgb petrol, petrolText;
    QRgb amber, amberText;
    QRgb red, redText;
};

inline constexpr std::array<Tokens, LookCount> TokenTable{{
    {Solid(0xEEF1F4), Solid(0xFFFFFF), Solid(0xDDE3E9), Solid(0x15191E), Solid(0x47525D),
     Solid(0x7B8794), Solid(0x0B5CAD), Solid(0x5C6670), Solid(0xD5DBE1), Solid(0x005A73),
     Solid(0xFFFFFF), Solid(0xFFC04D), Solid(0x15191E), Solid(0xB3121D), Solid(0xFFFFFF)},
    {Solid(0x171C22), Solid(0x0E1216), Solid(0x262F38), Solid(0xE6EAEE), Solid(0xAAB5C0),
     Solid(0x76828E), Solid(0x6DB3FF), Solid(0x94A0AC), Solid(0x2B343D), Solid(0x005A73),
     Solid(0xFFFFFF), Solid(0xFFC04D), Solid(0x15191E), Solid(0xB3121D), Solid(0xFFFFFF)},
    // At night only failure and alarm are filled: petrol and amber are outlines on black.
    {Solid(0x000000), Solid(0x000000), Solid(0x200000), Solid(0xFF0000), Solid(0xEC0000),
     Solid(0xBE0000), Solid(0xFF0000), Solid(0xEC0000), Solid(0x3C0000), Solid(0x000000),
     Solid(0xFF0000), Solid(0x000000), Solid(0xFF0000), Solid(0xFF0000), Solid(0x000000)},
}};

constexpr const Tokens& TokensOf(Look look) {
    return TokenTable[static_cast<std::size_t>(look)];
}

/// Series by their number; those behind the last begin again, dashed. At night two reds, each in
/// four dashings.
inline constexpr std::array<QRgb, 6> LightSeries{Solid(0x00238C), Solid(0xE66B07), Solid(0x18664C),
                                                 Solid(0xBD5187), Solid(0x149AC7), Solid(0x660000)};
inline constexpr std::array<QRgb, 6> DarkSeries{Solid(0x4583FF), Solid(0xE88000), Solid(0x4DFFA6),
                                                Solid(0xDF2D8C), Solid(0x73C7E6), Solid(0x99593D)};
inline constexpr std::array<QRgb, 2> NightSeries{Solid(0xFF0000), Solid(0xBE0000)};

/// Colours at wavelengths in nm, linear between them.
struct WavelengthColour {
    double nm;
    QRgb light, dark;
};
inline constexpr std::array<WavelengthColour, 9> WavelengthTable{{
    {412.0, Solid(0x7B2FD0), Solid(0xB08CFF)},
    {443.0, Solid(0x1B3FC4), Solid(0x5A86FF)},
    {490.0, Solid(0x0086C9), Solid(0x46C3FF)},
    {510.0, Solid(0x00857A), Solid(0x3FD6C4)},
    {555.0, Solid(0x2F8F1A), Solid(0x7BE05A)},
    {590.0, Solid(0x8A7000), Solid(0xE8D24A)},
    {625.0, Solid(0xC85A00), Solid(0xFF9A3D)},
    {665.0, Solid(0xB8101C), Solid(0xFF5A52)},
    {710.0, Solid(0x6E0F2A), Solid(0xC8486A)},
}};

/// Sizes in logical pixels at a text size of 100 %.
namespace size {
inline constexpr int Text = 14, Ticks = 13, ToolText = 16, Value = 22, Banner = 40, Watch = 64;
inline constexpr int Grid = 4, Between = 8, Margin = 16;
inline constexpr int Target = 36, LargeTarget = 48;
inline constexpr int ToolButtonWidth = 84, ToolButtonHeight = 96, ToolIcon = 48;
inline constexpr int NarrowToolButtonWidth = 64;
inline constexpr int MenuBar = 26, TopRow = 112, Strip = 40, TitleBar = 36, TreeRow = 30;
inline constexpr int NarrowTitleBar = 320; ///< below it, only the menu button
inline constexpr int MinimumTextPercent = 90, MaximumTextPercent = 200;
} // namespace size

} // namespace qor
