// SPDX-License-Identifier: GPL-3.0-or-later
//
// One instrument's frames as a netCDF file: its variables over time, and over wavelength for its
// optical series, with what the checks and conversions found beside them. Frames are gathered and
// written in blocks, a variable at a time. Used by FrameNetCdf, on its thread.
#pragma once

#include "export/LogSource.h"
#include "export/NetCdfFile.h"
#include "export/StandardNames.h"

#include <map>
#include <set>

namespace qor {

class CNetCdfTable {
  public:
    /// `beside` is where the file is written, `path` where it will be.
    CNetCdfTable(std::string path, const std::string& beside, const FrameStyle& style);

    /// All of these are false once something failed, see FaultText.
    bool BeginLog(const LogSource& source, const ExportedInstrument& instrument);
    bool Write(const ExportedFrame& frame);
    bool Close();

    const std::string& Path() const { return Place; }
    /// A sentence that says what failed and what to do.
    std::string FaultText() const;

  private:
    /// Where the values of a variable come from.
    enum class Origin : std::uint8_t { Sensors, Product, Degrees };
    /// A variable of numbers with its status, a column for every channel.
    struct Numbers {
        Origin origin = Origin::Sensors;
        std::vector<int> indexes; ///< of sensors, or of the product
        bool series = false;
        int variable = -1, status = -1;
        std::vector<double> values = {}; ///< of the frames that wait, channel by channel
        std::vector<signed char> statuses = {};
    };
    struct Texts {
        int sensor = -1;
        std::size_t width = 0; ///< bytes of the longest; 0: they may be as long as they like
        int variable = -1, status = -1;
        std::string bytes = {}; ///< one after another, each filled up with NULs
        std::vector<std::string> values = {};
        std::vector<signed char> statuses = {};
    };
    /// What a variable's attributes say.
    struct Description {
        std::string name, title, units;
        QuantityName quantity = {};
        const CSensor* sensor = nullptr;
    };

    // In NetCdfLayout.cpp.
    void Define(const LogSource& source, const ExportedInstrument& instrument);
    void DefineFrames(bool utc);
    void DefineSeries(const CLiveInstrument& live, std::vector<bool>& taken);
    void DefineSensor(const CLiveInstrument& live, const CSensor& sensor);
    void DefineProducts(std::span<const DerivedRow> rows);
    int DefineWavelengths(std::span<const double> wavelengths);
    void AddNumbers(Numbers numbers, const Description& description, int wavelengths);
    void AddTexts(const CSensor& sensor, const Description& description);
    int DefineTexts(const std::string& name, std::size_t width);
    int AddStatus(const Description& description, int variable, int wavelengths,
                  std::size_t channels);
    Description Describe(const CLiveInstrument& live, const CSensor& sensor,
                         const std::string& name) const;
    void SetDescription(int variable, const Description& description);
    void DescribeFile(const LogSource& source, const CLiveInstrument& live);
    void SetGlobal(const char* name, const std::string& text) {
        File.SetText(CNetCdfFile::Global, name, text);
    }
    std::string NameFor(std::string_view text);

    void Take(Numbers& numbers, std::size_t channel, double value, signed char status);
    void TakeSensors(const CLiveInstrument& live, Numbers& numbers);
    void TakeProduct(std::span<const DerivedRow> rows, Numbers& numbers);
    void TakeDegrees(const CLiveInstrument& live, Numbers& numbers);
    void TakeText(const CLiveInstrument& live, Texts& texts);
    void TakeTime(const FrameTime& time);
    void WriteBlock();
    void WriteNumbers(const Numbers& numbers, std::size_t frames);
    void DescribeTimes();

    const std::string Place;
    const FrameStyle Style;
    CNetCdfFile File;
    std::string Fault; ///< of what was asked for, not of the file
    bool Defined = false;
    std::size_t BlockFrames = 0;     ///< written at once
    std::vector<std::string> Layout; ///< what the columns are, which further logs must have too
    std::optional<int> UtcOffset;
    int LogNumber = 0;

    int TimeDimension = -1, Time = -1, Frame = -1, Log = -1;
    int Flags[3] = {-1, -1, -1};
    std::vector<std::vector<double>> Grids; ///< of wavelengths, and their dimensions
    std::vector<int> GridDimensions;
    std::map<std::size_t, int> WidthDimensions; ///< of texts
    std::set<std::string> Names;                ///< of variables and dimensions, in lower case
    std::vector<Numbers> NumberList;
    std::vector<Texts> TextList;

    std::size_t Written = 0; ///< frames in the file
    std::vector<double> Times;
    std::vector<int> FrameNumbers;
    std::vector<int> LogNumbers;
    std::vector<signed char> FlagValues[3];
    double FirstTime = 0.0, LastTime = 0.0;
    bool AnyTime = false;
    std::string Cell;
};

} // namespace qor
