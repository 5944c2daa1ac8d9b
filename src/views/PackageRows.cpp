// SPDX-License-Identifier: GPL-3.0-or-later
//
// Which sensors of a package its derived products come from, and what they are worth.
#include "views/PackageRows.h"

#include "base/Text.h"

#include <cmath>
#include <limits>

namespace qor {

namespace {

constexpr const char* ParUnits = "uMol/m^2/s";
constexpr double AttenuationWavelength = 490.0;
constexpr double FarthestChannel = 10.0; ///< nm from 490
constexpr std::size_t MostScatteringChannels = 2;

struct LightFieldKind {
    const char* series;
    const char* label;
    ANCDATATYPE kind;
};

constexpr LightFieldKind LightFields[] = {
    {"ED", "K Ed(490)", ANCDATATYPE::KEd},
    {"LU", "K Lu(490)", ANCDATATYPE::KLu},
    {"EU", "K Eu(490)", ANCDATATYPE::KEu},
};

/// The id as a finite number (a wavelength), or empty.
std::optional<double> NumericId(const CSensor& sensor) {
    const std::optional<double> number = WholeNumber(sensor.Id);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

/// The first sensor that the test accepts, over the instruments in their order.
template <class Test> SensorPlace FirstPlace(CPackageRows::Instruments instruments, Test test) {
    for (std::size_t i = 0; i < instruments.size(); ++i) {
        if (!instruments[i])
            continue;
        for (const CSensor& sensor : instruments[i]->Definition().Sensors())
            if (test(sensor))
                return {static_cast<int>(i), sensor.Index};
    }
    return {};
}

SensorPlace FirstOfType(CPackageRows::Instruments instruments,
                        std::initializer_list<std::string_view> types) {
    return FirstPlace(instruments,
                      [types](const CSensor& sensor) { return IsType(sensor, types); });
}

const CQorViewIns* InstrumentAt(CPackageRows::Instruments instruments, int place) {
    return place >= 0 && static_cast<std::size_t>(place) < instruments.size()
               ? instruments[static_cast<std::size_t>(place)]
               : nullptr;
}

const CSensor* SensorAt(CPackageRows::Instruments instruments, SensorPlace place) {
    const CQorViewIns* instrument = InstrumentAt(instruments, place.instrument);
    return instrument ? instrument->Definition().Sensor(place.sensor) : nullptr;
}

int FirstWithSeries(CPackageRows::Instruments instruments, std::string_view series) {
    for (std::size_t i = 0; i < instruments.size(); ++i)
        if (instruments[i] && !instruments[i]->Unusable &&
            HasParSeries(instruments[i]->Definition(), series))
            return static_cast<int>(i);
    return -1;
}

} // namespace

CPackageRows::CPackageRows(Instruments instruments, const PackageSettings& settings) {
    FindSensors(instruments);
    FindScattering(instruments);
    FindLight(instruments);
    BuildRows(instruments);
    if (settings.UseDefSalinity)
        LastSalinity = settings.DefaultSalinity;
}

void CPackageRows::FindSensors(Instruments instruments) {
    const auto tilt = [instruments](std::string_view axis) {
        return FirstPlace(instruments, [axis](const CSensor& sensor) {
            return IsType(sensor, {"TILT"}) && EqualsNoCase(sensor.Id, axis);
        });
    };
    TiltX = tilt("X");
    TiltY = tilt("Y");
    Pressure = FirstOfType(instruments, {"PRES", "PRESSURE"});
    Timer = FirstOfType(instruments, {"TIMER"});
    Temperature = FirstPlace(instruments, [](const CSensor& sensor) {
        return IsType(sensor, {"TEMP", "TEMPERATURE"}) &&
               (EqualsNoCase(sensor.Id, "W") || EqualsNoCase(sensor.Id, "WATER"));
    });
    if (!Temperature.Found())
        Temperature = FirstOfType(instruments, {"TEMP", "TEMPERATURE"});
    Conductivity = FirstOfType(instruments, {"COND", "CONDUCTIVITY"});
    Cdom = FirstOfType(instruments, {"CDOM"});
    Nitrate = FirstOfType(instruments, {"NITRATE", "NO3"});
    InWater = FirstWithSeries(instruments, "ED");
    Surface = FirstWithSeries(instruments, "ES");
}

void CPackageRows::FindScattering(Instruments instruments) {
    for (std::size_t i = 0; i < instruments.size(); ++i) {
        if (!instruments[i])
            continue;
        for (const CSensor& sensor : instruments[i]->Definition().Sensors()) {
            const std::optional<double> wavelength = NumericId(sensor);
            if (!wavelength || !IsType(sensor, {"BETA", "VSF"}))
                continue;
            if (Scattering.size() == MostScatteringChannels)
                return;
            Scattering.push_back({{static_cast<int>(i), sensor.Index},
                                  *wavelength,
                                  WaterBackscattering(*wavelength)});
        }
    }
}

void CPackageRows::FindLight(Instruments instruments) {
    for (std::size_t field = 0; field < std::size(LightFields); ++field) {
        const char* series = LightFields[field].series;
        double nearest = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < instruments.size(); ++i) {
            if (!instruments[i])
                continue;
            for (const CSensor& sensor : instruments[i]->Definition().Sensors()) {
                if (!IsType(sensor, {series}) || !IsOptic(sensor.Fit))
                    continue;
                if (Fields[field].place.instrument < 0)
                    Fields[field].place.instrument = static_cast<int>(i);
                const double distance =
                    std::fabs(NumericId(sensor).value_or(0.0) - AttenuationWavelength);
                if (distance > FarthestChannel || distance >= nearest)
                    continue;
                nearest = distance;
                Fields[field].place = {static_cast<int>(i), sensor.Index};
            }
        }
    }
}

void CPackageRows::AddRow(ANCDATATYPE kind, std::string label, std::string units) {
    List.push_back({kind, std::move(label), std::move(units), {}, {}});
}

void CPackageRows::BuildRows(Instruments instruments) {
    if (TiltX.Found() && TiltY.Found())
        AddRow(ANCDATATYPE::Tilt, "TILT", "deg");
    if (const CSensor* pressure = SensorAt(instruments, Pressure)) {
        // Decided: the depth carries the units of the pressure it is taken from.
        AddRow(ANCDATATYPE::Depth, "DEPTH", pressure->Units);
        AddRow(ANCDATATYPE::Velocity, "VELOCITY", "m/s");
    }
    if (Temperature.Found())
        AddRow(ANCDATATYPE::WaterTemperature, "T (W)",
               "\xB0"
               "C");
    if (MeasuresSalinity())
        AddRow(ANCDATATYPE::Salinity, "SALINITY", "psu");
    if (const CSensor* cdom = SensorAt(instruments, Cdom))
        AddRow(ANCDATATYPE::Cdom, "CDOM(" + cdom->Id + ")", "ppb/l");
    if (Nitrate.Found())
        AddRow(ANCDATATYPE::Nitrate, "[NO3-]", "uMolar");
    if (InWater >= 0)
        AddRow(ANCDATATYPE::ParZ, "PAR(Z)", ParUnits);
    if (Surface >= 0)
        AddRow(ANCDATATYPE::Par0, "PAR(0+)", ParUnits);
    if (InWater >= 0)
        AddRow(ANCDATATYPE::LightSaturation, "LIGHT SATURATION", "%");
    FirstScatteringRow = List.size();
    for (const ScatteringChannel& channel : Scattering) {
        const std::string& id = SensorAt(instruments, channel.place)->Id;
        AddRow(ANCDATATYPE::BetaP, "BETAp(" + id + ")", "1/(m*sr)");
        AddRow(ANCDATATYPE::Bbp, "bbp(" + id + ")", "1/m");
        AddRow(ANCDATATYPE::Bb, "bb(" + id + ")", "1/m");
    }
    for (std::size_t field = 0; field < std::size(LightFields); ++field)
        if (Fields[field].place.instrument >= 0)
            AddRow(LightFields[field].kind, LightFields[field].label, "1/m");
}

bool CPackageRows::LacksSalinity() const {
    return !Scattering.empty() && !MeasuresSalinity() && !LastSalinity;
}

CPackageRows::Reading CPackageRows::Read(Instruments instruments, SensorPlace place) {
    const CSensor* sensor = SensorAt(instruments, place);
    const CQorViewIns* instrument = InstrumentAt(instruments, place.instrument);
    if (!sensor || !instrument->CurrentFrame())
        return {};
    double value = 0.0;
    const ConversionStatus status = instrument->Value(*sensor, value);
    return status == ConversionStatus::Good ? Reading{value, status} : Reading{{}, status};
}

CPackageRows::Reading CPackageRows::ReadPar(Instruments instruments, int place) {
    const CQorViewIns* instrument = InstrumentAt(instruments, place);
    if (!instrument || !instrument->CurrentFrame())
        return {};
    double value = 0.0;
    const ConversionStatus status = instrument->Par(value);
    return status == ConversionStatus::Good ? Reading{value, status} : Reading{{}, status};
}

CPackageRows::Reading CPackageRows::ReadTilt(Instruments instruments) const {
    const Reading x = Read(instruments, TiltX);
    const Reading y = Read(instruments, TiltY);
    if (!x.value || !y.value)
        return {{}, x.status != ConversionStatus::Good ? x.status : y.status};
    return {TiltDegrees(*x.value, *y.value)};
}

CPackageRows::Reading CPackageRows::ReadVelocity(Instruments instruments, const Reading& pressure,
                                                 VelocityState& velocity) {
    if (!pressure.value)
        return pressure;
    if (PressureMoved(History, *pressure.value)) {
        const Reading timer = Read(instruments, Timer);
        if (Timer.Found() && !timer.value)
            return timer;
        const CQorViewIns& instrument = *InstrumentAt(instruments, Pressure.instrument);
        ComputeVelocity(History, velocity, *pressure.value, timer.value, instrument.FrameNumber(),
                        instrument.FrameRate);
    }
    return {velocity.velocity};
}

CPackageRows::Reading CPackageRows::ReadSalinity(Instruments instruments, const Reading& pressure,
                                                 const PackageSettings& settings) {
    // Without the sensors the last value stands, and a change of the settings shows at once.
    if (!MeasuresSalinity()) {
        LastSalinity =
            settings.UseDefSalinity ? std::optional(settings.DefaultSalinity) : std::nullopt;
        return {LastSalinity};
    }
    const Reading conductivity = Read(instruments, Conductivity);
    const Reading temperature = Read(instruments, Temperature);
    for (const Reading& reading : {conductivity, temperature, pressure})
        if (reading.status != ConversionStatus::Good)
            return reading;
    if (conductivity.value && temperature.value && pressure.value) {
        LastSalinity = PracticalSalinity(*conductivity.value, *temperature.value, *pressure.value);
        SalinityMeasured = true;
    }
    return {LastSalinity};
}

CPackageRows::Reading CPackageRows::ReadAttenuation(Instruments instruments, LightField& field,
                                                    const Reading& depth, double window) {
    const CQorViewIns* instrument = InstrumentAt(instruments, field.place.instrument);
    const Reading light = Read(instruments, field.place);
    if (light.status != ConversionStatus::Good || depth.status != ConversionStatus::Good)
        return light.status != ConversionStatus::Good ? light : depth;
    // Each frame of the radiometer is one sample, at the depth that is known when it comes.
    if (light.value && depth.value && instrument->FrameNumber() != field.lastFrame) {
        field.lastFrame = instrument->FrameNumber();
        field.attenuation.Add(*depth.value, *light.value, window);
    }
    return {field.attenuation.Coefficient()};
}

void CPackageRows::Set(ANCDATATYPE kind, const Reading& reading) {
    for (DerivedRow& row : List)
        if (row.kind == kind)
            SetRow(row, reading.value, reading.status);
}

void CPackageRows::SetScattering(DerivedRow* rows, Instruments instruments,
                                 const ScatteringChannel& channel, const Reading& salinity) {
    Reading total = Read(instruments, channel.place);
    if (total.value && !salinity.value)
        total = {{}, salinity.status};
    std::optional<double> particulate, backscattering, whole;
    if (total.value) {
        particulate = ParticulateScattering(*total.value, channel.wavelength, *salinity.value);
        backscattering = ParticulateBackscattering(*particulate);
        whole = *backscattering + channel.waterBackscattering;
    }
    SetRow(rows[0], particulate, total.status);
    SetRow(rows[1], backscattering, total.status);
    SetRow(rows[2], whole, total.status);
}

const std::vector<DerivedRow>& CPackageRows::Compute(Instruments instruments,
                                                     const PackageSettings& settings,
                                                     double pressureOffset,
                                                     VelocityState& velocity) {
    const Reading pressure = Read(instruments, Pressure);
    Reading depth = pressure;
    if (depth.value)
        depth.value = DepthOf(*pressure.value, pressureOffset);
    const Reading salinity = ReadSalinity(instruments, pressure, settings);
    const Reading par = ReadPar(instruments, InWater);
    Reading saturation = par;
    if (par.value)
        saturation.value =
            settings.SaturationIrradiance > 0.0
                ? std::optional(LightSaturation(*par.value, settings.SaturationIrradiance))
                : std::nullopt;

    Set(ANCDATATYPE::Tilt, ReadTilt(instruments));
    Set(ANCDATATYPE::Depth, depth);
    Set(ANCDATATYPE::Velocity, ReadVelocity(instruments, pressure, velocity));
    Set(ANCDATATYPE::WaterTemperature, Read(instruments, Temperature));
    // The row waits for the sensors; scattering may begin with the default salinity.
    const bool showsSalinity = SalinityMeasured || salinity.status != ConversionStatus::Good;
    Set(ANCDATATYPE::Salinity, showsSalinity ? salinity : Reading{});
    Set(ANCDATATYPE::Cdom, Read(instruments, Cdom));
    Set(ANCDATATYPE::Nitrate, Read(instruments, Nitrate));
    Set(ANCDATATYPE::ParZ, par);
    Set(ANCDATATYPE::Par0, ReadPar(instruments, Surface));
    Set(ANCDATATYPE::LightSaturation, saturation);
    for (std::size_t i = 0; i < Scattering.size(); ++i)
        SetScattering(&List[FirstScatteringRow + 3 * i], instruments, Scattering[i], salinity);
    for (std::size_t field = 0; field < std::size(LightFields); ++field)
        Set(LightFields[field].kind,
            ReadAttenuation(instruments, Fields[field], depth, settings.AttenuationWindow));
    return List;
}

} // namespace qor
