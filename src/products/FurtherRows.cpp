// SPDX-License-Identifier: GPL-3.0-or-later
//
// The table of further derived rows, and what fills it.
#include "products/FurtherRows.h"

#include "base/Text.h"
#include "products/SeaWater.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

using Q = WaterQuantity;

/// The numbers of a row whose needs are all there.
class CNumbers {
  public:
    explicit CNumbers(const CWaterNow& water) : Water(water) {}
    double operator()(Q quantity) const { return Water[quantity].value.value_or(0.0); }
    /// Decided: without a position gravity is that of 45 degrees, at most 0.27 % off.
    double Latitude() const { return Water.position ? Water.position->latitude : 45.0; }

  private:
    const CWaterNow& Water;
};

using Value = std::optional<double>;

/// Light that is left, over light that came; nothing in the dark.
Value Ratio(double part, double whole) {
    return whole > 0.0 ? Value(part / whole) : std::nullopt;
}

/// Depth at which a hundredth of the surface's PAR is left (Kirk 2011: ln 100 / Kd(PAR)).
Value OnePercentDepth(double attenuation) {
    return attenuation > 0.0 ? Value(std::log(100.0) / attenuation) : std::nullopt;
}

/// Remote-sensing reflectance: the upwelling radiance is carried up to the surface by its
/// attenuation, through it by 0.54 (Mobley 1999), and divided by the surface irradiance.
Value Reflectance(const CNumbers& now) {
    const double belowSurface = now(Q::Lu) * std::exp(now(Q::LuAttenuation) * now(Q::Pressure));
    return Ratio(0.54 * belowSurface, now(Q::Es));
}

/// Percent of what water in balance with the air holds (Garcia and Gordon 1992).
Value OxygenSaturation(const CNumbers& now) {
    const double potential =
        PotentialTemperature(now(Q::Absolute), now(Q::Temperature), now(Q::Pressure));
    return 100.0 * now(Q::Oxygen) / OxygenSolubility(now(Q::Salinity), potential);
}

struct FurtherRow {
    ANCDATATYPE kind;
    const char* label;
    const char* units;
    std::uint8_t decimals;
    std::initializer_list<Q> needs;
    Value (*value)(const CNumbers& now);
};

constexpr std::initializer_list<Q> Sea = {Q::Absolute};
constexpr std::initializer_list<Q> Warm = {Q::Conservative};
constexpr std::initializer_list<Q> WarmAtDepth = {Q::Conservative, Q::Pressure};
constexpr std::initializer_list<Q> Depth = {Q::Pressure};
constexpr std::initializer_list<Q> KPar = {Q::ParAttenuation};
constexpr std::initializer_list<Q> Looking = {Q::Lu, Q::LuAttenuation, Q::Pressure, Q::Es};
constexpr std::initializer_list<Q> TwoPars = {Q::Par, Q::SurfacePar};
constexpr std::initializer_list<Q> KEdByEs = {Q::EdByEsAttenuation};
constexpr std::initializer_list<Q> KLuByEs = {Q::LuByEsAttenuation};
constexpr std::initializer_list<Q> KEuByEs = {Q::EuByEsAttenuation};
constexpr std::initializer_list<Q> Breathing = {Q::Oxygen, Q::Conservative, Q::Pressure};

constexpr FurtherRow Table[] = {
    {ANCDATATYPE::AbsoluteSalinity, "ABSOLUTE SALINITY", "g/kg", 3, Sea,
     [](const CNumbers& now) { return Value(now(Q::Absolute)); }},
    {ANCDATATYPE::ConservativeTemperature, "CONSERVATIVE TEMPERATURE",
     "\xB0"
     "C",
     3, Warm, [](const CNumbers& now) { return Value(now(Q::Conservative)); }},
    {ANCDATATYPE::SigmaTheta, "SIGMA-THETA", "kg/m^3", 3, Warm,
     [](const CNumbers& now) { return Value(SigmaTheta(now(Q::Absolute), now(Q::Conservative))); }},
    {ANCDATATYPE::SoundSpeed, "SOUND SPEED", "m/s", 2, WarmAtDepth,
     [](const CNumbers& now) {
         return Value(SoundSpeed(now(Q::Absolute), now(Q::Conservative), now(Q::Pressure)));
     }},
    {ANCDATATYPE::DepthInMetres, "DEPTH (M)", "m", 2, Depth,
     [](const CNumbers& now) { return Value(DepthInMetres(now(Q::Pressure), now.Latitude())); }},
    {ANCDATATYPE::KPar, "Kd(PAR)", "1/m", 6, KPar,
     [](const CNumbers& now) { return Value(now(Q::ParAttenuation)); }},
    {ANCDATATYPE::OnePercentDepth, "1% DEPTH", "m", 2, KPar,
     [](const CNumbers& now) { return OnePercentDepth(now(Q::ParAttenuation)); }},
    {ANCDATATYPE::Reflectance, "Rrs(490)", "1/sr", 6, Looking, Reflectance},
    {ANCDATATYPE::ParRatio, "PAR(Z)/PAR(0+)", "", 6, TwoPars,
     [](const CNumbers& now) { return Ratio(now(Q::Par), now(Q::SurfacePar)); }},
    {ANCDATATYPE::KEdByEs, "K Ed(490)/ES", "1/m", 6, KEdByEs,
     [](const CNumbers& now) { return Value(now(Q::EdByEsAttenuation)); }},
    {ANCDATATYPE::KLuByEs, "K Lu(490)/ES", "1/m", 6, KLuByEs,
     [](const CNumbers& now) { return Value(now(Q::LuByEsAttenuation)); }},
    {ANCDATATYPE::KEuByEs, "K Eu(490)/ES", "1/m", 6, KEuByEs,
     [](const CNumbers& now) { return Value(now(Q::EuByEsAttenuation)); }},
    {ANCDATATYPE::OxygenSaturation, "OXYGEN SATURATION", "%", 2, Breathing, OxygenSaturation},
};

Q AttenuationByEs(std::size_t field) {
    return static_cast<Q>(static_cast<std::size_t>(Q::EdByEsAttenuation) + field);
}

Q LightOf(std::size_t field) {
    return static_cast<Q>(static_cast<std::size_t>(Q::Ed) + field);
}

/// A quantity made of others has a value when they have one, otherwise the first failure.
template <class Make>
Reading Made(const CWaterNow& water, std::initializer_list<Q> from, Make make) {
    for (const Q quantity : from)
        if (water[quantity].status != ConversionStatus::Good)
            return {{}, water[quantity].status};
    for (const Q quantity : from)
        if (!water[quantity].value)
            return {};
    return {make(CNumbers(water))};
}

} // namespace

CFurtherRows::CFurtherRows(PackageInstruments instruments, const PackageSensors& sensors)
    : Sensors(sensors) {
    FindMore(instruments);
    FindCarriers();
    BuildRows();
}

void CFurtherRows::FindMore(PackageInstruments instruments) {
    SurfaceLight = FindLight(instruments, "ES");
    const CSensor* above = SensorAt(instruments, SurfaceLight);
    const CSensor* below =
        SensorAt(instruments, Sensors.light[static_cast<std::size_t>(LightField::Lu)]);
    SameLightUnits = above && below && EqualsNoCase(below->Units, above->Units + "/sr");

    Oxygen = FindOxygen(instruments);
    if (const CSensor* oxygen = SensorAt(instruments, Oxygen)) {
        OxygenUnits = OxygenScaleOf(oxygen->Units);
        if (!OxygenUnits && Sensors.MeasureSalinity())
            Faults.push_back(UnknownUnits(*InstrumentAt(instruments, Oxygen.instrument), *oxygen,
                                          "umol/kg, umol/l, ml/l and mg/l"));
    }
}

void CFurtherRows::FindCarriers() {
    const auto from = [this](Q quantity) -> std::vector<int>& {
        return Carriers[static_cast<std::size_t>(quantity)];
    };
    const auto found = [&](Q quantity, SensorPlace place) {
        if (place.Found())
            from(quantity) = {place.instrument};
    };
    // What is made of others comes from all their instruments, when every one is there.
    const auto joined = [&](Q quantity, std::initializer_list<Q> parts) {
        std::vector<int> all;
        for (const Q part : parts) {
            if (from(part).empty())
                return;
            all.insert(all.end(), from(part).begin(), from(part).end());
        }
        from(quantity) = all;
    };
    found(Q::Pressure, Sensors.pressure);
    found(Q::Temperature, Sensors.temperature);
    if (Sensors.MeasureSalinity())
        from(Q::Salinity) = {Sensors.conductivity.instrument, Sensors.temperature.instrument,
                             Sensors.pressure.instrument};
    joined(Q::Absolute, {Q::Salinity});
    joined(Q::Conservative, {Q::Salinity});
    found(Q::Oxygen, Oxygen);
    if (Sensors.inWater >= 0)
        from(Q::Par) = {Sensors.inWater};
    // One instrument with both series has one PAR, which is no light below over light above.
    if (Sensors.surface >= 0 && Sensors.surface != Sensors.inWater)
        from(Q::SurfacePar) = {Sensors.surface};
    joined(Q::ParAttenuation, {Q::Par, Q::Pressure});
    for (std::size_t field = 0; field < LightFieldCount; ++field)
        found(LightOf(field), Sensors.light[field]);
    found(Q::Es, SurfaceLight);
    for (std::size_t field = 0; field < LightFieldCount; ++field)
        joined(AttenuationByEs(field), {LightOf(field), Q::Pressure, Q::Es});
    if (SameLightUnits)
        joined(Q::LuAttenuation, {Q::Lu, Q::Pressure});
}

void CFurtherRows::BuildRows() {
    for (std::size_t at = 0; at < std::size(Table); ++at) {
        const FurtherRow& one = Table[at];
        Row row{{one.kind, one.label, one.units, {}, {}, {}, one.decimals}, {}};
        bool possible = true;
        for (const Q quantity : one.needs) {
            const std::vector<int>& carriers = Carriers[static_cast<std::size_t>(quantity)];
            possible = possible && !carriers.empty();
            row.carriers.insert(row.carriers.end(), carriers.begin(), carriers.end());
        }
        if (!possible)
            continue;
        List.push_back(std::move(row));
        TableRows.push_back(at);
    }
}

void CFurtherRows::ReadMore(PackageInstruments instruments, CWaterNow& water) const {
    water[Q::Es] = ReadSensor(instruments, SurfaceLight);
    water[Q::Absolute] = Made(water, {Q::Salinity}, [&water](const CNumbers& now) {
        return AbsoluteSalinity(now(Q::Salinity), water.position);
    });
    water[Q::Conservative] =
        Made(water, {Q::Absolute, Q::Temperature, Q::Pressure}, [](const CNumbers& now) {
            return ConservativeTemperature(now(Q::Absolute), now(Q::Temperature), now(Q::Pressure));
        });
    water[Q::Oxygen] = OxygenUnits ? ReadSensor(instruments, Oxygen) : Reading{};
    water[Q::Oxygen] = Made(water, {Q::Oxygen, Q::Conservative}, [this](const CNumbers& now) {
        const double amount = OxygenUnits->scale.Convert(now(Q::Oxygen));
        return OxygenUnits->perMass
                   ? amount
                   : amount /
                         (SeaWaterDensity(now(Q::Absolute), now(Q::Conservative), 0.0) / 1000.0);
    });
    water[Q::ParAttenuation] = Made(water, {Q::Par, Q::Pressure}, [this](const CNumbers&) {
        return FollowedPar.attenuation.Coefficient();
    });
    for (std::size_t field = 0; field < LightFieldCount; ++field)
        water[AttenuationByEs(field)] =
            Made(water, {LightOf(field), Q::Pressure, Q::Es}, [this, field](const CNumbers&) {
                return FollowedByEs[field].attenuation.Coefficient();
            });
}

void CFurtherRows::Follow(Followed& followed, const CLiveInstrument* instrument,
                          const Reading& light, const CWaterNow& water) {
    const Reading& depth = water[Q::Pressure];
    if (!instrument || !light.value || !depth.value ||
        instrument->FrameNumber() == followed.lastFrame)
        return;
    followed.lastFrame = instrument->FrameNumber();
    followed.attenuation.Add(*depth.value, *light.value, water.attenuationWindow);
}

void CFurtherRows::Advance(PackageInstruments instruments, CWaterNow water) {
    Follow(FollowedPar, InstrumentAt(instruments, Sensors.inWater), water[Q::Par], water);
    water[Q::Es] = ReadSensor(instruments, SurfaceLight);
    for (std::size_t field = 0; field < LightFieldCount; ++field) {
        // Clouds that pass while the instrument sinks shade both, and leave their ratio alone.
        const Reading light = Made(water, {LightOf(field), Q::Es}, [field](const CNumbers& now) {
            return Ratio(now(LightOf(field)), now(Q::Es));
        });
        Follow(FollowedByEs[field], InstrumentAt(instruments, Sensors.light[field].instrument),
               light, water);
    }
}

void CFurtherRows::Read(PackageInstruments instruments, CWaterNow water,
                        std::span<DerivedRow> rows) const {
    ReadMore(instruments, water);
    for (std::size_t i = 0; i < rows.size() && i < TableRows.size(); ++i) {
        const FurtherRow& one = Table[TableRows[i]];
        const Reading reading = Made(water, one.needs, one.value);
        SetRow(rows[i], reading.value, reading.status);
    }
}

Reading CFurtherRows::ReadRow(PackageInstruments instruments, CWaterNow water,
                              std::size_t row) const {
    ReadMore(instruments, water);
    const FurtherRow& one = Table[TableRows[row]];
    return Made(water, one.needs, one.value);
}

} // namespace qor
