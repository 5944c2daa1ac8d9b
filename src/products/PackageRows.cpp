// SPDX-License-Identifier: GPL-3.0-or-later
//
// Which sensors of a package its derived products come from, and what they are worth.
#include "products/PackageRows.h"

#include "base/Text.h"
#include "instrument/FitTypes.h"

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

const CLiveInstrument* InstrumentAt(CPackageRows::Instruments instruments, int place) {
    return place >= 0 && static_cast<std::size_t>(place) < instruments.size()
               ? instruments[static_cast<std::size_t>(place)]
               : nullptr;
}

const CSensor* SensorAt(CPackageRows::Instruments instruments, SensorPlace place) {
    const CLiveInstrument* instrument = InstrumentAt(instruments, place.instrument);
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

CPackageRows::Reading CPackageRows::ReadSensor(Instruments instruments, SensorPlace place) {
    const CSensor* sensor = SensorAt(instruments, place);
    const CLiveInstrument* instrument = InstrumentAt(instruments, place.instrument);
    if (!sensor || !instrument->CurrentFrame())
        return {};
    double value = 0.0;
    const ConversionStatus status = instrument->Value(*sensor, value);
    return status == ConversionStatus::Good ? Reading{value, status} : Reading{{}, status};
}

CPackageRows::Reading CPackageRows::ReadPar(Instruments instruments, int place) {
    const CLiveInstrument* instrument = InstrumentAt(instruments, place);
    if (!instrument || !instrument->CurrentFrame())
        return {};
    double value = 0.0;
    const ConversionStatus status = instrument->Par(value);
    return status == ConversionStatus::Good ? Reading{value, status} : Reading{{}, status};
}

CPackageRows::Reading CPackageRows::ReadTilt(Instruments instruments) const {
    const Reading x = ReadSensor(instruments, TiltX);
    const Reading y = ReadSensor(instruments, TiltY);
    if (!x.value || !y.value)
        return {{}, x.status != ConversionStatus::Good ? x.status : y.status};
    return {TiltDegrees(*x.value, *y.value)};
}

CPackageRows::Reading CPackageRows::ReadDepth(const Inputs& inputs) const {
    Reading depth = ReadSensor(inputs.instruments, Pressure);
    if (depth.value)
        depth.value = DepthOf(*depth.value, inputs.pressureOffset);
    return depth;
}

void CPackageRows::AdvanceVelocity(const Inputs& inputs, const Reading& pressure,
                                   VelocityState& velocity) {
    LastVelocity = pressure;
    if (!pressure.value)
        return;
    if (PressureMoved(History, *pressure.value)) {
        const Reading timer = ReadSensor(inputs.instruments, Timer);
        if (Timer.Found() && !timer.value) {
            LastVelocity = timer;
            return;
        }
        const CLiveInstrument& instrument = *InstrumentAt(inputs.instruments, Pressure.instrument);
        ComputeVelocity(History, velocity, *pressure.value, timer.value, instrument.FrameNumber(),
                        instrument.FrameRate);
    }
    LastVelocity = {velocity.velocity};
}

void CPackageRows::AdvanceSalinity(const Inputs& inputs, const Reading& pressure) {
    if (!MeasuresSalinity())
        return;
    const Reading conductivity = ReadSensor(inputs.instruments, Conductivity);
    const Reading temperature = ReadSensor(inputs.instruments, Temperature);
    if (!conductivity.value || !temperature.value || !pressure.value)
        return;
    LastSalinity = PracticalSalinity(*conductivity.value, *temperature.value, *pressure.value);
    SalinityMeasured = true;
}

CPackageRows::Reading CPackageRows::ReadSalinity(const Inputs& inputs) const {
    // Without the sensors a change of the settings shows at once.
    if (!MeasuresSalinity())
        return {inputs.settings.UseDefSalinity ? std::optional(inputs.settings.DefaultSalinity)
                                               : std::nullopt};
    for (const SensorPlace place : {Conductivity, Temperature, Pressure})
        if (Reading reading = ReadSensor(inputs.instruments, place);
            reading.status != ConversionStatus::Good)
            return reading;
    return {LastSalinity};
}

void CPackageRows::AdvanceAttenuation(const Inputs& inputs, LightField& field,
                                      const Reading& depth) {
    const CLiveInstrument* instrument = InstrumentAt(inputs.instruments, field.place.instrument);
    const Reading light = ReadSensor(inputs.instruments, field.place);
    // Each frame of the radiometer is one sample, at the depth that is known when it comes.
    if (!light.value || !depth.value || instrument->FrameNumber() == field.lastFrame)
        return;
    field.lastFrame = instrument->FrameNumber();
    field.attenuation.Add(*depth.value, *light.value, inputs.settings.AttenuationWindow);
}

CPackageRows::Reading CPackageRows::ReadAttenuation(const Inputs& inputs, const LightField& field,
                                                    const Reading& depth) {
    const Reading light = ReadSensor(inputs.instruments, field.place);
    if (light.status != ConversionStatus::Good || depth.status != ConversionStatus::Good)
        return light.status != ConversionStatus::Good ? light : depth;
    return {field.attenuation.Coefficient()};
}

void CPackageRows::SetScattering(DerivedRow* rows, Instruments instruments,
                                 const ScatteringChannel& channel, const Reading& salinity) {
    Reading total = ReadSensor(instruments, channel.place);
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

void CPackageRows::Advance(const Inputs& inputs, VelocityState& velocity) {
    const Reading pressure = ReadSensor(inputs.instruments, Pressure);
    AdvanceSalinity(inputs, pressure);
    AdvanceVelocity(inputs, pressure, velocity);
    const Reading depth = ReadDepth(inputs);
    for (LightField& field : Fields)
        AdvanceAttenuation(inputs, field, depth);
}

void CPackageRows::Read(const Inputs& inputs, std::vector<DerivedRow>& rows) const {
    const Instruments instruments = inputs.instruments;
    rows = List;
    const auto set = [&rows](ANCDATATYPE kind, const Reading& reading) {
        for (DerivedRow& row : rows)
            if (row.kind == kind)
                SetRow(row, reading.value, reading.status);
    };
    const Reading depth = ReadDepth(inputs);
    const Reading salinity = ReadSalinity(inputs);
    const Reading par = ReadPar(instruments, InWater);
    Reading saturation = par;
    if (par.value)
        saturation.value =
            inputs.settings.SaturationIrradiance > 0.0
                ? std::optional(LightSaturation(*par.value, inputs.settings.SaturationIrradiance))
                : std::nullopt;

    set(ANCDATATYPE::Tilt, ReadTilt(instruments));
    set(ANCDATATYPE::Depth, depth);
    set(ANCDATATYPE::Velocity, LastVelocity);
    set(ANCDATATYPE::WaterTemperature, ReadSensor(instruments, Temperature));
    // The row waits for the sensors; scattering may begin with the default salinity.
    const bool showsSalinity = SalinityMeasured || salinity.status != ConversionStatus::Good;
    set(ANCDATATYPE::Salinity, showsSalinity ? salinity : Reading{});
    set(ANCDATATYPE::Cdom, ReadSensor(instruments, Cdom));
    set(ANCDATATYPE::Nitrate, ReadSensor(instruments, Nitrate));
    set(ANCDATATYPE::ParZ, par);
    set(ANCDATATYPE::Par0, ReadPar(instruments, Surface));
    set(ANCDATATYPE::LightSaturation, saturation);
    for (std::size_t i = 0; i < Scattering.size(); ++i)
        SetScattering(&rows[FirstScatteringRow + 3 * i], instruments, Scattering[i], salinity);
    for (std::size_t field = 0; field < std::size(LightFields); ++field)
        set(LightFields[field].kind, ReadAttenuation(inputs, Fields[field], depth));
}

} // namespace qor
