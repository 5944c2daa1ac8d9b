// SPDX-License-Identifier: GPL-3.0-or-later
//
// Rows and lines of means. See BinText.h.
#include "export/BinText.h"

#include "export/BinnedFrames.h"
#include "export/TableFiles.h"

namespace qor {

namespace {

ColumnHead HeadOf(const CFrameBins& bins, const BinColumn& column, std::string_view suffix) {
    if (!column.sensor) {
        const DerivedRow& row = bins.Products()[column.place];
        return HeadOfProduct(row.label, row.units, suffix);
    }
    const bool degrees = column.of == FrameOrigin::Degrees;
    ColumnHead head = HeadOfSensor(*column.sensor, degrees ? "deg" : "");
    if (degrees)
        head.units = "deg";
    if (!suffix.empty())
        head.name.append("_").append(suffix), head.title.append(" ").append(suffix);
    return head;
}

std::vector<ColumnHead> HeadsOf(const CFrameBins& bins, const BinSpan& span,
                                const FrameStyle& style) {
    std::vector<ColumnHead> heads;
    const std::string axis(span.Name());
    if (style.files)
        heads.push_back({"file", "file", "", "string"});
    if (span.IsTime())
        heads.push_back({axis, axis, "", "datetime"});
    else
        heads.push_back({axis, axis, std::string(span.Units()), "number", true});
    heads.push_back({"frames", "frames", "", "integer"});
    for (const BinColumn& column : bins.Columns())
        for (const char* suffix : {"", "sd", "n"}) {
            heads.push_back(HeadOf(bins, column, suffix));
            if (suffix[0] == 'n') // a count has no units
                heads.back().units.clear(), heads.back().dataType = "integer",
                                            heads.back().quantity = false;
        }
    NameColumns(heads, style.simpleNames);
    return heads;
}

class CBinTables final : public CBinnedFrames {
  public:
    explicit CBinTables(const ExportSettings& settings)
        : CBinnedFrames(settings), Files(settings, ".csv") {}

    void Flush() override { Files.Flush(); }

  private:
    OutputResult Open(const ExportedLog&, std::span<const ExportedInstrument>) override;
    void WriteBins(const ExportedLog& log, const CFrameBins& bins) override;
    void WriteRow(COutput& output, double number, const FrameBin& bin, bool utc) const;
    bool OutputsGood() const override { return Files.Good(); }
    OutputResult FinishOutputs() override { return Files.Finish(); }

    CTableFiles Files;
    std::map<std::string, TableFile> Tables; ///< by instrument name, of the log that plays
};

OutputResult CBinTables::Open(const ExportedLog&, std::span<const ExportedInstrument> instruments) {
    Tables.clear();
    if (OutputResult result = Files.Prepare(instruments.size()); !result.Good())
        return result;
    for (const ExportedInstrument& instrument : instruments) {
        const std::string& name = instrument.live->Name();
        if (OutputResult result = Files.Open(name, Settings.style.described, Tables[name]);
            !result.Good())
            return result;
    }
    return {};
}

void CBinTables::WriteBins(const ExportedLog& log, const CFrameBins& bins) {
    const TableFile& table = Tables.at(bins.Instrument().Name());
    const auto heads = [&] { return HeadsOf(bins, *Settings.bins, Settings.style); };
    if (table.isNew)
        WriteHeads(*table.output, heads(), Settings.style.safeTexts);
    if (table.description)
        WriteColumnsJson(*table.description, heads(), FileNameIn(table.path));
    const bool utc = log.StyleOf(Settings.style).utcOffset.has_value();
    for (const auto& [number, bin] : bins.Bins()) {
        if (Settings.style.files)
            WriteCsvField(*table.output, log.path, Settings.style.safeTexts),
                table.output->Char(',');
        WriteRow(*table.output, number, bin, utc);
    }
}

void CBinTables::WriteRow(COutput& output, double number, const FrameBin& bin, bool utc) const {
    const auto write = [&](std::optional<double> value) {
        output.Char(',');
        if (value)
            output.Number(Rounded(*value, Settings.style.digits));
    };
    WriteCentre(output, *Settings.bins, number, utc);
    output.Char(',');
    output.Integer(static_cast<std::int64_t>(bin.frames));
    for (const CBinNumbers& numbers : bin.columns) {
        write(numbers.Mean());
        write(numbers.Deviation());
        output.Char(',');
        output.Integer(static_cast<std::int64_t>(numbers.Count()));
    }
    output.Text("\r\n");
}

class CBinLines final : public CBinnedFrames {
  public:
    explicit CBinLines(const ExportSettings& settings)
        : CBinnedFrames(settings), Out(settings.report), Json(Out) {}

    void Flush() override { Out.Flush(); }

  private:
    OutputResult Open(const ExportedLog&, std::span<const ExportedInstrument>) override {
        return Out.Open(Settings.path, Settings.rules);
    }
    void WriteBins(const ExportedLog& log, const CFrameBins& bins) override;
    void WriteLine(const CFrameBins& bins, const FrameBin& bin);
    void WriteSensors(const CFrameBins& bins, const FrameBin& bin, const char* key,
                      std::optional<double> (*figure)(const CBinNumbers& numbers));
    void WriteDegrees(const CFrameBins& bins, const FrameBin& bin);
    void WriteProducts(const CFrameBins& bins, const FrameBin& bin);
    void WriteFigure(std::optional<double> value) {
        Json.NumberOrNull(value ? std::optional(Rounded(*value, Settings.style.digits))
                                : std::nullopt);
    }
    void WriteThree(const CBinNumbers& numbers) {
        WriteFigure(numbers.Mean());
        WriteFigure(numbers.Deviation());
        Json.Integer(static_cast<std::int64_t>(numbers.Count()));
    }
    bool OutputsGood() const override { return Out.Good(); }
    OutputResult FinishOutputs() override { return Out.Finish(); }

    COutput Out;
    CJsonWriter Json;
};

void CBinLines::WriteBins(const ExportedLog& log, const CFrameBins& bins) {
    const BinSpan& span = *Settings.bins;
    const bool utc = log.StyleOf(Settings.style).utcOffset.has_value();
    for (const auto& [number, bin] : bins.Bins()) {
        Json.BeginObject();
        Json.Key("file"), Json.Path(log.path);
        Json.Key("instrument"), Json.Text(bins.Instrument().Name());
        Json.Key(span.Name());
        const char* const quote = span.IsTime() ? "\"" : "";
        Out.Text(quote), WriteCentre(Out, span, number, utc), Out.Text(quote);
        Json.ValueWritten();
        WriteLine(bins, bin);
        Json.EndObject();
        Json.EndLine();
    }
}

void CBinLines::WriteLine(const CFrameBins& bins, const FrameBin& bin) {
    Json.Key("frames"), Json.Integer(static_cast<std::int64_t>(bin.frames));
    WriteSensors(bins, bin, "mean", [](const CBinNumbers& numbers) { return numbers.Mean(); });
    WriteSensors(bins, bin, "sd", [](const CBinNumbers& numbers) { return numbers.Deviation(); });
    WriteSensors(bins, bin, "n", [](const CBinNumbers& numbers) {
        return std::optional(static_cast<double>(numbers.Count()));
    });
    if (Settings.style.degrees)
        WriteDegrees(bins, bin);
    if (Settings.style.derived)
        WriteProducts(bins, bin);
}

/// By the sensors' indexes, as the values of frames are; null for texts.
void CBinLines::WriteSensors(const CFrameBins& bins, const FrameBin& bin, const char* key,
                             std::optional<double> (*figure)(const CBinNumbers& numbers)) {
    const auto& columns = bins.Columns();
    std::size_t next = 0;
    Json.Key(key), Json.BeginArray();
    for (const CSensor& sensor : bins.Instrument().Definition().Sensors()) {
        while (next < columns.size() && columns[next].of == FrameOrigin::Degrees)
            ++next;
        if (next < columns.size() && columns[next].sensor == &sensor)
            WriteFigure(figure(bin.columns[next++]));
        else
            Json.Null();
    }
    Json.EndArray();
}

void CBinLines::WriteDegrees(const CFrameBins& bins, const FrameBin& bin) {
    Json.Key("degrees"), Json.BeginObject();
    for (std::size_t i = 0; i < bin.columns.size(); ++i) {
        const BinColumn& column = bins.Columns()[i];
        if (column.of != FrameOrigin::Degrees)
            continue;
        Json.Key(std::to_string(column.place)), Json.BeginArray();
        WriteThree(bin.columns[i]);
        Json.EndArray();
    }
    Json.EndObject();
}

void CBinLines::WriteProducts(const CFrameBins& bins, const FrameBin& bin) {
    Json.Key("derived"), Json.BeginArray();
    for (std::size_t i = 0; i < bin.columns.size(); ++i) {
        const BinColumn& column = bins.Columns()[i];
        if (column.of != FrameOrigin::Product)
            continue;
        const DerivedRow& row = bins.Products()[column.place];
        Json.BeginArray();
        Json.Text(row.label);
        Json.Text(row.units);
        WriteThree(bin.columns[i]);
        Json.EndArray();
    }
    Json.EndArray();
}

} // namespace

std::unique_ptr<CFrameSink> MakeBinTables(const ExportSettings& settings) {
    return std::make_unique<CBinTables>(settings);
}

std::unique_ptr<CFrameSink> MakeBinLines(const ExportSettings& settings) {
    return std::make_unique<CBinLines>(settings);
}

} // namespace qor
