// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the readings of a package's sensors are worth.
#include "products/PackageRows.h"

namespace qor {

namespace {

struct LightFieldRow {
    const char* label;
    ANCDATATYPE kind;
};

constexpr LightFieldRow LightFieldRows[LightFieldCount] = {
    {"K Ed(490)", ANCDATATYPE::KEd},
    {"K Lu(490)", ANCDATATYPE::KLu},
    {"K Eu(490)", ANCDATATYPE::KEu},
};

/// A reading in other units; without a value when the units are not known.
Reading Converted(Reading reading, const std::optional<UnitScale>& scale) {
    if (reading.value)
        reading.value = scale ? std::optional(scale->Convert(*reading.value)) : std::nullopt;
    return reading;
}

} // namespace

CPackageRows::CPackageRows(Instruments instruments, const PackageSettings& settings,
                           DerivedChoice choice)
    : Sensors(FindPackageSensors(instruments)), Choice(choice) {
    for (const PackageSensors::Scattering& found : Sensors.scattering)
        Scattering.push_back(
            {found.place, found.wavelength, WaterBackscattering(found.wavelength)});
    ReadUnits(instruments);
    BuildRows(instruments);
    if (Choice == DerivedChoice::All)
        AddFurtherRows(instruments);
    if (settings.UseDefSalinity)
        LastSalinity = settings.DefaultSalinity;
}

void CPackageRows::ReadUnits(Instruments instruments) {
    const auto read = [&](SensorPlace place, auto scaleOf, const char* known) {
        const CSensor* sensor = SensorAt(instruments, place);
        if (!sensor)
            return std::optional<UnitScale>();
        const std::optional<UnitScale> scale = scaleOf(sensor->Units);
        if (!scale)
            Faults.push_back(
                UnknownUnits(*InstrumentAt(instruments, place.instrument), *sensor, known));
        return scale;
    };
    ToDbar = read(Sensors.pressure, PressureScale, "dbar, bar, mbar, hPa, kPa, MPa, psi and m");
    ToCelsius = read(Sensors.temperature, TemperatureScale, "C, K and F");
    // Conductivity serves salinity alone.
    if (Sensors.MeasureSalinity())
        ToMilliSiemens =
            read(Sensors.conductivity, ConductivityScale, "mS/cm, mmho/cm, S/m, uS/cm and umho/cm");
}

void CPackageRows::AddRow(ANCDATATYPE kind, std::string label, std::string units,
                          std::initializer_list<SensorPlace> from) {
    const std::uint8_t decimals = kind >= ANCDATATYPE::BetaP ? 6 : 2;
    List.push_back({kind, std::move(label), std::move(units), {}, {}, {}, decimals});
    Carriers.emplace_back();
    for (const SensorPlace place : from)
        if (place.instrument >= 0) // a row may do without some of its sensors
            Carriers.back().push_back(place.instrument);
}

void CPackageRows::BuildRows(Instruments instruments) {
    const auto& [tiltX, tiltY, pressure, timer, temperature, conductivity, cdom, nitrate, inWater,
                 surface, scattering, light] = Sensors;
    if (tiltX.Found() && tiltY.Found())
        AddRow(ANCDATATYPE::Tilt, "TILT", "deg", {tiltX, tiltY});
    if (const CSensor* sensor = SensorAt(instruments, pressure)) {
        // Decided: the depth carries the units of the pressure it is taken from.
        AddRow(ANCDATATYPE::Depth, "DEPTH", sensor->Units, {pressure});
        AddRow(ANCDATATYPE::Velocity, "VELOCITY", "m/s", {pressure, timer});
    }
    if (temperature.Found())
        AddRow(ANCDATATYPE::WaterTemperature, "T (W)",
               "\xB0"
               "C",
               {temperature});
    if (Sensors.MeasureSalinity())
        AddRow(ANCDATATYPE::Salinity, "SALINITY", "psu", {conductivity, temperature, pressure});
    if (const CSensor* sensor = SensorAt(instruments, cdom))
        AddRow(ANCDATATYPE::Cdom, "CDOM(" + sensor->Id + ")", "ppb/l", {cdom});
    if (nitrate.Found())
        AddRow(ANCDATATYPE::Nitrate, "[NO3-]", "uMolar", {nitrate});
    if (inWater >= 0)
        AddRow(ANCDATATYPE::ParZ, "PAR(Z)", ParUnits, {{inWater}});
    if (surface >= 0)
        AddRow(ANCDATATYPE::Par0, "PAR(0+)", ParUnits, {{surface}});
    if (inWater >= 0)
        AddRow(ANCDATATYPE::LightSaturation, "LIGHT SATURATION", "%", {{inWater}});
    FirstScatteringRow = List.size();
    for (const ScatteringChannel& channel : Scattering) {
        const std::string& id = SensorAt(instruments, channel.place)->Id;
        // The instruments behind the salinity age with their own row.
        AddRow(ANCDATATYPE::BetaP, "BETAp(" + id + ")", "1/(m*sr)", {channel.place});
        AddRow(ANCDATATYPE::Bbp, "bbp(" + id + ")", "1/m", {channel.place});
        AddRow(ANCDATATYPE::Bb, "bb(" + id + ")", "1/m", {channel.place});
    }
    for (std::size_t field = 0; field < LightFieldCount; ++field)
        if (light[field].instrument >= 0)
            AddRow(LightFieldRows[field].kind, LightFieldRows[field].label, "1/m",
                   {light[field], pressure});
}

void CPackageRows::AddFurtherRows(Instruments instruments) {
    Further = CFurtherRows(instruments, Sensors);
    FirstFurtherRow = List.size();
    for (const CFurtherRows::Row& further : Further.Rows()) {
        List.push_back(further.row);
        Carriers.push_back(further.carriers);
    }
    Faults.insert(Faults.end(), Further.UnitFaults().begin(), Further.UnitFaults().end());
}

bool CPackageRows::LacksSalinity(const PackageSettings& settings) const {
    return !Scattering.empty() && !Sensors.MeasureSalinity() && !settings.UseDefSalinity;
}

Reading CPackageRows::ReadPressure(const Inputs& inputs) const {
    return Converted(ReadSensor(inputs.instruments, Sensors.pressure), ToDbar);
}

Reading CPackageRows::ReadTemperature(const Inputs& inputs) const {
    return Converted(ReadSensor(inputs.instruments, Sensors.temperature), ToCelsius);
}

Reading CPackageRows::ReadConductivity(const Inputs& inputs) const {
    return Converted(ReadSensor(inputs.instruments, Sensors.conductivity), ToMilliSiemens);
}

Reading CPackageRows::ReadTilt(Instruments instruments) const {
    const Reading x = ReadSensor(instruments, Sensors.tiltX);
    const Reading y = ReadSensor(instruments, Sensors.tiltY);
    if (!x.value || !y.value)
        return {{}, x.status != ConversionStatus::Good ? x.status : y.status};
    return {TiltDegrees(*x.value, *y.value)};
}

Reading CPackageRows::ReadDepth(const Inputs& inputs) const {
    Reading depth = ReadSensor(inputs.instruments, Sensors.pressure);
    if (depth.value)
        depth.value = DepthOf(*depth.value, inputs.pressureOffset);
    return depth;
}

Reading CPackageRows::ReadDbarDepth(const Inputs& inputs) const {
    Reading depth = ReadDepth(inputs);
    if (depth.value)
        depth.value = ToDbar ? std::optional(ToDbar->Difference(*depth.value)) : std::nullopt;
    return depth;
}

void CPackageRows::AdvanceVelocity(const Inputs& inputs, const Reading& pressure,
                                   VelocityState& velocity) {
    LastVelocity = pressure;
    if (!pressure.value)
        return;
    if (PressureMoved(History, *pressure.value)) {
        const Reading timer = ReadSensor(inputs.instruments, Sensors.timer);
        if (Sensors.timer.Found() && !timer.value) {
            LastVelocity = timer;
            return;
        }
        const CLiveInstrument& instrument =
            *InstrumentAt(inputs.instruments, Sensors.pressure.instrument);
        ComputeVelocity(History, velocity, *pressure.value, timer.value, instrument.FrameNumber(),
                        instrument.FrameRate);
    }
    LastVelocity = {velocity.velocity};
}

void CPackageRows::AdvanceSalinity(const Inputs& inputs) {
    if (!Sensors.MeasureSalinity())
        return;
    const Reading conductivity = ReadConductivity(inputs);
    const Reading temperature = ReadTemperature(inputs);
    const Reading pressure = ReadPressure(inputs);
    if (!conductivity.value || !temperature.value || !pressure.value)
        return;
    LastSalinity = PracticalSalinity(*conductivity.value, *temperature.value, *pressure.value);
    SalinityMeasured = true;
}

Reading CPackageRows::ReadSalinity(const Inputs& inputs) const {
    // Without the sensors a change of the settings shows at once.
    if (!Sensors.MeasureSalinity())
        return {inputs.settings.UseDefSalinity ? std::optional(inputs.settings.DefaultSalinity)
                                               : std::nullopt};
    for (const SensorPlace place : {Sensors.conductivity, Sensors.temperature, Sensors.pressure})
        if (Reading reading = ReadSensor(inputs.instruments, place);
            reading.status != ConversionStatus::Good)
            return reading;
    return {LastSalinity};
}

Reading CPackageRows::ReadShownSalinity(const Reading& salinity) const {
    // The row waits for the sensors; scattering may begin with the default salinity.
    const bool shown = SalinityMeasured || salinity.status != ConversionStatus::Good;
    return shown ? salinity : Reading{};
}

CWaterNow CPackageRows::ReadWater(const Inputs& inputs) const {
    CWaterNow water;
    water.position = inputs.position;
    water.attenuationWindow = inputs.settings.AttenuationWindow;
    water[WaterQuantity::Salinity] = ReadShownSalinity(ReadSalinity(inputs));
    water[WaterQuantity::Temperature] = ReadTemperature(inputs);
    // The tare is the air's pressure; without one absolute units lose a standard atmosphere.
    water[WaterQuantity::Pressure] =
        inputs.pressureOffset != 0.0 ? ReadDbarDepth(inputs) : ReadPressure(inputs);
    water[WaterQuantity::Par] = ReadPar(inputs.instruments, Sensors.inWater);
    water[WaterQuantity::SurfacePar] = ReadPar(inputs.instruments, Sensors.surface);
    constexpr WaterQuantity Lights[LightFieldCount] = {WaterQuantity::Ed, WaterQuantity::Lu,
                                                       WaterQuantity::Eu};
    for (std::size_t field = 0; field < LightFieldCount; ++field)
        water[Lights[field]] = ReadSensor(inputs.instruments, Sensors.light[field]);
    water[WaterQuantity::LuAttenuation] =
        ReadAttenuation(inputs, static_cast<std::size_t>(LightField::Lu), ReadDbarDepth(inputs));
    return water;
}

void CPackageRows::AdvanceAttenuation(const Inputs& inputs, std::size_t field,
                                      const Reading& depth) {
    const SensorPlace place = Sensors.light[field];
    const CLiveInstrument* instrument = InstrumentAt(inputs.instruments, place.instrument);
    const Reading light = ReadSensor(inputs.instruments, place);
    FieldFollowed& followed = Fields[field];
    // Each frame of the radiometer is one sample, at the depth that is known when it comes.
    if (!light.value || !depth.value || instrument->FrameNumber() == followed.lastFrame)
        return;
    followed.lastFrame = instrument->FrameNumber();
    followed.attenuation.Add(*depth.value, *light.value, inputs.settings.AttenuationWindow);
}

Reading CPackageRows::ReadAttenuation(const Inputs& inputs, std::size_t field,
                                      const Reading& depth) const {
    const Reading light = ReadSensor(inputs.instruments, Sensors.light[field]);
    if (light.status != ConversionStatus::Good || depth.status != ConversionStatus::Good)
        return light.status != ConversionStatus::Good ? light : depth;
    return {Fields[field].attenuation.Coefficient()};
}

std::array<Reading, 3> CPackageRows::ReadScattering(Instruments instruments,
                                                    const ScatteringChannel& channel,
                                                    const Reading& salinity) {
    const Reading total = ReadSensor(instruments, channel.place);
    if (!total.value || !salinity.value) {
        const Reading none{{}, total.value ? salinity.status : total.status};
        return {none, none, none};
    }
    const double particulate =
        ParticulateScattering(*total.value, channel.wavelength, *salinity.value);
    const double backscattering = ParticulateBackscattering(particulate);
    return {Reading{particulate}, Reading{backscattering},
            Reading{backscattering + channel.waterBackscattering}};
}

Reading CPackageRows::ReadSaturation(const Inputs& inputs, Reading par) const {
    if (par.value)
        par.value =
            inputs.settings.SaturationIrradiance > 0.0
                ? std::optional(LightSaturation(*par.value, inputs.settings.SaturationIrradiance))
                : std::nullopt;
    return par;
}

void CPackageRows::Advance(const Inputs& inputs, VelocityState& velocity) {
    AdvanceSalinity(inputs);
    AdvanceVelocity(inputs, ReadPressure(inputs), velocity);
    const Reading depth = ReadDbarDepth(inputs);
    for (std::size_t field = 0; field < LightFieldCount; ++field)
        AdvanceAttenuation(inputs, field, depth);
    if (Choice == DerivedChoice::All)
        Further.Advance(inputs.instruments, ReadWater(inputs));
}

Reading CPackageRows::ReadUsual(const Inputs& inputs, ANCDATATYPE kind) const {
    const auto attenuation = [&](LightField field) {
        return ReadAttenuation(inputs, static_cast<std::size_t>(field), ReadDbarDepth(inputs));
    };
    switch (kind) {
    case ANCDATATYPE::Tilt:
        return ReadTilt(inputs.instruments);
    case ANCDATATYPE::Depth:
        return ReadDepth(inputs);
    case ANCDATATYPE::Velocity:
        return LastVelocity;
    case ANCDATATYPE::WaterTemperature:
        // Decided: a thermometer in kelvin or Fahrenheit is shown in the row's own degrees C.
        return ReadTemperature(inputs);
    case ANCDATATYPE::Salinity:
        return ReadShownSalinity(ReadSalinity(inputs));
    case ANCDATATYPE::Cdom:
        return ReadSensor(inputs.instruments, Sensors.cdom);
    case ANCDATATYPE::Nitrate:
        return ReadSensor(inputs.instruments, Sensors.nitrate);
    case ANCDATATYPE::ParZ:
        return ReadPar(inputs.instruments, Sensors.inWater);
    case ANCDATATYPE::Par0:
        return ReadPar(inputs.instruments, Sensors.surface);
    case ANCDATATYPE::LightSaturation:
        return ReadSaturation(inputs, ReadPar(inputs.instruments, Sensors.inWater));
    case ANCDATATYPE::KEd:
        return attenuation(LightField::Ed);
    case ANCDATATYPE::KLu:
        return attenuation(LightField::Lu);
    case ANCDATATYPE::KEu:
        return attenuation(LightField::Eu);
    case ANCDATATYPE::BetaP:
    case ANCDATATYPE::Bbp:
    case ANCDATATYPE::Bb:
    case ANCDATATYPE::AbsoluteSalinity:
    case ANCDATATYPE::ConservativeTemperature:
    case ANCDATATYPE::SigmaTheta:
    case ANCDATATYPE::SoundSpeed:
    case ANCDATATYPE::DepthInMetres:
    case ANCDATATYPE::KPar:
    case ANCDATATYPE::OnePercentDepth:
    case ANCDATATYPE::Reflectance:
    case ANCDATATYPE::ParRatio:
    case ANCDATATYPE::KEdByEs:
    case ANCDATATYPE::KLuByEs:
    case ANCDATATYPE::KEuByEs:
    case ANCDATATYPE::OxygenSaturation:
        break;
    }
    return {};
}

void CPackageRows::Read(const Inputs& inputs, std::vector<DerivedRow>& rows) const {
    const Instruments instruments = inputs.instruments;
    rows = List;
    const std::size_t scatteringEnd = FirstScatteringRow + 3 * Scattering.size();
    Reading par; // the saturation's too: the sum over the channels is taken once
    for (std::size_t row = 0; row < rows.size() - Further.Rows().size(); ++row) {
        if (row >= FirstScatteringRow && row < scatteringEnd)
            continue;
        const ANCDATATYPE kind = rows[row].kind;
        const Reading reading = kind == ANCDATATYPE::LightSaturation ? ReadSaturation(inputs, par)
                                                                     : ReadUsual(inputs, kind);
        if (kind == ANCDATATYPE::ParZ)
            par = reading;
        SetRow(rows[row], reading.value, reading.status);
    }
    const Reading salinity = ReadSalinity(inputs);
    for (std::size_t i = 0; i < Scattering.size(); ++i) {
        const auto three = ReadScattering(instruments, Scattering[i], salinity);
        for (std::size_t j = 0; j < three.size(); ++j)
            SetRow(rows[FirstScatteringRow + 3 * i + j], three[j].value, three[j].status);
    }
    if (Choice == DerivedChoice::All)
        Further.Read(instruments, ReadWater(inputs), std::span(rows).subspan(FirstFurtherRow));
    for (std::size_t row = 0; row < rows.size(); ++row)
        for (const int place : Carriers[row])
            if (const CLiveInstrument* instrument = InstrumentAt(instruments, place))
                rows[row].stale = rows[row].stale || instrument->Stale(inputs.now);
}

std::optional<double> CPackageRows::ReadRow(const Inputs& inputs, std::size_t row) const {
    if (row >= List.size())
        return std::nullopt;
    if (row >= List.size() - Further.Rows().size())
        return Further.ReadRow(inputs.instruments, ReadWater(inputs), row - FirstFurtherRow).value;
    const std::size_t scattering = row - FirstScatteringRow;
    if (row >= FirstScatteringRow && scattering < 3 * Scattering.size())
        return ReadScattering(inputs.instruments, Scattering[scattering / 3],
                              ReadSalinity(inputs))[scattering % 3]
            .value;
    return ReadUsual(inputs, List[row].kind).value;
}

} // namespace qor
