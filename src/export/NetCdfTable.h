// SPDX-License-Identifier: GPL-3.0-or-later
//
// One instrument's frames as a netCDF file: its variables over time, and over wavelength for its
// optical series, with what the checks and conversions found beside them. Frames are gathered and
// written in blocks, a variable at a time. Used by FrameNetCdf, on its thread.
#pragma once

#include "export/NetCdfAttributes.h"

#include <map>

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
    /// A variable of numbers with its status, a column for every channel.
    struct Numbers {
        FrameOrigin origin = FrameOrigin::Sensors;
        std::vector<int> indexes; ///< of sensors, or of the product
        int variable = -1, status = -1;
        std::vector<double> values = {}; ///< of the frames that wait, channel by channel
        std::vector<signed char> statuses = {};
        int qc = -1; ///< none of those that are not checked
        std::vector<signed char> flags = {};
    };
    struct Texts {
        int sensor = -1;
        std::size_t width = 0; ///< bytes of the longest; 0: they may be as long as they like
        int variable = -1, status = -1;
        std::string bytes = {}; ///< one after another, each filled up with NULs
        std::vector<std::string> values = {};
        std::vector<signed char> statuses = {};
    };
    // In NetCdfLayout.cpp.
    void Define(const FrameLayout& layout, std::size_t sensors);
    void DefineFrames(const FrameLayout& layout);
    int DefineWavelengths(const FrameLayout& layout, int number);
    int DefineTexts(const FrameVariable& variable);
    void AddNumbers(const FrameVariable& variable, const FrameLayout& layout);
    void AddTexts(const FrameVariable& variable);

    void Take(Numbers& numbers, const ExportedFrame& frame);
    void TakeQc(const FrameQc& qc);
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

    int TimeDimension = -1, Time = -1, TimeQc = -1, Frame = -1, Log = -1;
    int Flags[3] = {-1, -1, -1};
    std::vector<int> GridDimensions;            ///< of wavelengths
    std::map<std::size_t, int> WidthDimensions; ///< of texts
    std::vector<Numbers> NumberList;
    std::vector<Texts> TextList;

    std::size_t Written = 0; ///< frames in the file
    std::vector<double> Times;
    std::vector<int> FrameNumbers;
    std::vector<int> LogNumbers;
    std::vector<signed char> FlagValues[3], TimeFlags;
    double FirstTime = 0.0, LastTime = 0.0;
    bool AnyTime = false;
    std::string Cell;
};

} // namespace qor
