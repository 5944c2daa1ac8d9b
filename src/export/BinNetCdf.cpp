// SPDX-License-Identifier: GPL-3.0-or-later
//
// Files of means. See BinNetCdf.h.
#include "export/BinNetCdf.h"

#include "export/BinnedFrames.h"
#include "export/FrameVariables.h"
#include "export/NetCdfAttributes.h"
#include "export/TableFiles.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace qor {

namespace {

constexpr double NoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t LargestChunk = 4096; ///< bins

/// The variables of one instrument's means, written at once: those of a file of frames, over bins.
class CBinFile {
  public:
    CBinFile(const std::string& path, const BinSpan& span, const FrameStyle& style,
             const CFrameBins& bins)
        : Span(span), Style(style), Bins(bins) {
        File.Create(path);
    }
    /// What went wrong, or nothing.
    std::string Write(const LogSource& source);

  private:
    void WriteAxis();
    FrameAttributes AttributesOfAxis() const;
    void DescribeFile();
    void WriteVariable(const FrameVariable& variable);
    std::vector<std::size_t> ColumnsOf(const FrameVariable& variable) const;
    int GridDimension(int number);
    int AddVariable(const std::string& name, NetCdfType type, int wavelengths,
                    const FrameAttributes& attributes);
    void WriteMatrix(int variable, std::span<const std::size_t> columns, auto figure);
    void WriteCounts(int variable, std::span<const std::size_t> columns);
    std::size_t BinCount() const { return Bins.Bins().size(); }
    std::size_t Chunk() const { return std::clamp<std::size_t>(BinCount(), 1, LargestChunk); }

    const BinSpan Span;
    const FrameStyle Style;
    const CFrameBins& Bins;
    CNetCdfFile File;
    FrameLayout Layout;
    std::string Name, Bounds; ///< of the axis
    int Axis = -1;
    std::vector<int> GridDimensions;
};

std::string CBinFile::Write(const LogSource& source) {
    Name = Span.Name();
    Bounds = Name + "_bounds";
    Layout = LayoutOfFrames(source, {&Bins.Instrument(), Bins.Products()}, Style,
                            {Name, Bounds, "nv", "frames"});
    GridDimensions.assign(Layout.grids.size(), -1);
    WriteAxis();
    for (const FrameVariable& variable : Layout.variables)
        WriteVariable(variable);
    DescribeFile();
    File.Close();
    return File.FaultText();
}

FrameAttributes CBinFile::AttributesOfAxis() const {
    FrameAttributes attributes;
    if (Span.IsTime()) {
        attributes = Layout.time.attributes;
        SetText(attributes, "long_name", "middle of the bin");
    } else {
        const bool depth = Span.axis == BinSpan::Axis::Depth;
        attributes = {{"standard_name", depth ? "depth" : "sea_water_pressure_due_to_sea_water"},
                      {"long_name", "middle of the bin, from the pressure less its tare"},
                      {"units", std::string(Span.Units())},
                      {"positive", "down"},
                      {"axis", "Z"}};
    }
    SetText(attributes, "bounds", Bounds);
    return attributes;
}

/// The coordinate, from where to where each bin goes, and how many frames it has.
void CBinFile::WriteAxis() {
    std::vector<double> centres, edges;
    std::vector<int> frames;
    for (const auto& [number, bin] : Bins.Bins()) {
        centres.push_back(Span.Centre(number));
        edges.insert(edges.end(), {Span.Begin(number), Span.Begin(number + 1.0)});
        frames.push_back(static_cast<int>(bin.frames));
    }
    Axis = File.AddDimension(Name, BinCount());
    const int both[] = {Axis, File.AddDimension("nv", 2)};
    const std::size_t chunks[] = {Chunk(), 2};
    const int centre = File.AddVariable(Name, NetCdfType::Double, std::span(both).first(1),
                                        std::span(chunks).first(1));
    SetAttributes(File, centre, AttributesOfAxis());
    const int edge = File.AddVariable(Bounds, NetCdfType::Double, both, chunks);
    const int count = AddVariable("frames", NetCdfType::Int, -1,
                                  {{"long_name", "frames in the bin"}, {"units", "1"}});
    File.Write(centre, {{0}, {BinCount()}}, centres.data());
    File.Write(edge, {{0, 0}, {BinCount(), 2}}, edges.data());
    File.Write(count, {{0}, {BinCount()}}, frames.data());
}

void CBinFile::DescribeFile() {
    SetText(Layout.global, "summary",
            "Means of the frames of the instrument in its raw log over " + Name +
                ", decoded and calibrated by its definition.");
    SetAttributes(File, CNetCdfFile::Global, Layout.global);
}

/// The columns of means that a variable of frames has; none of a text.
std::vector<std::size_t> CBinFile::ColumnsOf(const FrameVariable& variable) const {
    std::vector<std::size_t> columns;
    const std::vector<BinColumn>& all = Bins.Columns();
    for (const int index : variable.indexes) {
        const auto found = std::ranges::find_if(all, [&](const BinColumn& one) {
            return one.of == variable.origin && one.place == static_cast<std::size_t>(index);
        });
        if (found != all.end())
            columns.push_back(static_cast<std::size_t>(found - all.begin()));
    }
    return columns;
}

int CBinFile::GridDimension(int number) {
    int& dimension = GridDimensions[static_cast<std::size_t>(number)];
    if (dimension < 0)
        dimension = AddGrid(File, Layout, number);
    return dimension;
}

int CBinFile::AddVariable(const std::string& name, NetCdfType type, int wavelengths,
                          const FrameAttributes& attributes) {
    const int over[] = {Axis, wavelengths};
    const std::size_t chunks[] = {Chunk(), 1}, dimensions = wavelengths >= 0 ? 2 : 1;
    const int variable = File.AddVariable(name, type, std::span(over).first(dimensions),
                                          std::span(chunks).first(dimensions));
    if (type == NetCdfType::Double)
        File.FillWithNaN(variable);
    SetAttributes(File, variable, attributes);
    return variable;
}

/// The mean, and the deviation and the count beside it.
void CBinFile::WriteVariable(const FrameVariable& variable) {
    const std::vector<std::size_t> columns = ColumnsOf(variable);
    if (columns.empty())
        return;
    const std::string title = TextOf(variable.attributes, "long_name");
    const std::string sdName = Layout.NameFor(variable.name + "_sd");
    const std::string countName = Layout.NameFor(variable.name + "_n");
    const int wavelengths = variable.grid >= 0 ? GridDimension(variable.grid) : -1;
    FrameAttributes ofMean = variable.attributes;
    SetText(ofMean, "cell_methods", Name + ": mean");
    SetText(ofMean, "ancillary_variables", sdName + " " + countName);
    FrameAttributes ofDeviation = variable.attributes;
    std::erase_if(ofDeviation, [](const auto& one) { return one.name == "ancillary_variables"; });
    SetText(ofDeviation, "cell_methods", Name + ": standard_deviation");
    SetText(ofDeviation, "long_name", "standard deviation of " + title);
    const int mean = AddVariable(variable.name, NetCdfType::Double, wavelengths, ofMean);
    const int deviation = AddVariable(sdName, NetCdfType::Double, wavelengths, ofDeviation);
    const int count = AddVariable(countName, NetCdfType::Int, wavelengths,
                                  {{"standard_name", "number_of_observations"},
                                   {"long_name", "values in the mean of " + title},
                                   {"units", "1"}});
    WriteMatrix(mean, columns, [](const CBinNumbers& numbers) { return numbers.Mean(); });
    WriteMatrix(deviation, columns, [](const CBinNumbers& numbers) { return numbers.Deviation(); });
    WriteCounts(count, columns);
}

void CBinFile::WriteMatrix(int variable, std::span<const std::size_t> columns, auto figure) {
    std::vector<double> values;
    for (const auto& [number, bin] : Bins.Bins())
        for (const std::size_t column : columns) {
            const std::optional<double> value = figure(bin.columns[column]);
            values.push_back(value ? Rounded(*value, Style.digits) : NoNumber);
        }
    File.Write(variable, {{0, 0}, {BinCount(), columns.size()}}, values.data());
}

void CBinFile::WriteCounts(int variable, std::span<const std::size_t> columns) {
    std::vector<int> counts;
    for (const auto& [number, bin] : Bins.Bins())
        for (const std::size_t column : columns)
            counts.push_back(static_cast<int>(bin.columns[column].Count()));
    File.Write(variable, {{0, 0}, {BinCount(), columns.size()}}, counts.data());
}

class CBinNetCdf final : public CBinnedFrames {
  public:
    explicit CBinNetCdf(const ExportSettings& settings)
        : CBinnedFrames(settings), Files(settings, ".nc") {}

    /// Nobody reads a file that is not complete.
    void Flush() override {}

  private:
    struct Place {
        std::string path, beside; ///< where the file will be, and where it is written
    };
    OutputResult Open(const ExportedLog& log,
                      std::span<const ExportedInstrument> instruments) override;
    void WriteBins(const ExportedLog& log, const CFrameBins& bins) override;
    std::optional<int> UtcOffsetOf(const ExportedLog& log) const override {
        return SourceOf(log, Settings).utcOffset;
    }
    bool OutputsGood() const override { return Usable && Files.Good(); }
    OutputResult FinishOutputs() override {
        return Usable ? Files.Finish() : OutputResult{OutputState::Failed, Settings.path};
    }

    CTableFiles Files;
    std::map<std::string, Place> Places; ///< by instrument name
    bool Usable = true;
};

OutputResult CBinNetCdf::Open(const ExportedLog&, std::span<const ExportedInstrument> instruments) {
    if (!CNetCdfFile::IsThere())
        return {OutputState::NotBuilt, Settings.path};
    if (Settings.path.empty() || IsDevice(Settings.path))
        return {OutputState::NeedsFile, Settings.path};
    if (OutputResult result = Files.Prepare(instruments.size()); !result.Good())
        return result;
    for (const ExportedInstrument& instrument : instruments) {
        const std::string& name = instrument.live->Name();
        TableFile file;
        if (OutputResult result = Files.Open(name, false, file); !result.Good())
            return result;
        Places[name] = {file.path, file.output->HandOver()};
    }
    return {};
}

void CBinNetCdf::WriteBins(const ExportedLog& log, const CFrameBins& bins) {
    if (!Usable)
        return;
    const Place& place = Places.at(bins.Instrument().Name());
    CBinFile file(place.beside, *Settings.bins, Settings.style, bins);
    const std::string fault = file.Write(SourceOf(log, Settings));
    if (!fault.empty() && std::exchange(Usable, false))
        Settings.report(place.path + ": cannot be written. " + fault);
}

} // namespace

std::unique_ptr<CFrameSink> MakeBinNetCdf(const ExportSettings& settings) {
    return std::make_unique<CBinNetCdf>(settings);
}

} // namespace qor
