// SPDX-License-Identifier: GPL-3.0-or-later
//
// The layout of frames as the dimensions, variables and attributes of a file, and how these are
// chunked.
#include "export/NetCdfTable.h"

namespace qor {

namespace {

constexpr std::size_t BlockBytes = 8 << 20; ///< of frames that wait to be written
constexpr std::size_t FewestFrames = 64, MostFrames = 4096;

} // namespace

void CNetCdfTable::Define(const FrameLayout& layout, std::size_t sensors) {
    BlockFrames = MostFrames;
    while (BlockFrames > FewestFrames && BlockFrames * (sensors + 1) * 9 > BlockBytes)
        BlockFrames /= 2;
    TimeDimension = File.AddDimension(layout.time.name, CNetCdfFile::Unlimited);
    DefineFrames(layout);
    GridDimensions.assign(layout.grids.size(), -1);
    for (const FrameVariable& variable : layout.variables)
        if (variable.origin == FrameOrigin::Text)
            AddTexts(variable);
        else
            AddNumbers(variable, layout);
    SetAttributes(File, CNetCdfFile::Global, layout.global);
}

void CNetCdfTable::DefineFrames(const FrameLayout& layout) {
    const int over[] = {TimeDimension};
    const std::size_t chunks[] = {BlockFrames};
    const auto add = [&](const FramePlain& plain, NetCdfType type, bool shuffle) {
        const int variable = File.AddVariable(plain.name, type, over, chunks, shuffle);
        if (type == NetCdfType::Double)
            File.FillWithNaN(variable);
        SetAttributes(File, variable, plain.attributes);
        return variable;
    };
    Time = add(layout.time, NetCdfType::Double, true);
    if (Style.qc)
        TimeQc = add(layout.timeQc, NetCdfType::Byte, false);
    Frame = add(layout.frame, NetCdfType::Int, true);
    if (Style.files)
        Log = add(layout.log, NetCdfType::Int, false);
    for (std::size_t i = 0; i < std::size(Flags); ++i)
        Flags[i] = add(layout.flags[i], NetCdfType::Byte, false);
}

int CNetCdfTable::DefineWavelengths(const FrameLayout& layout, int number) {
    int& dimension = GridDimensions[static_cast<std::size_t>(number)];
    if (dimension < 0)
        dimension = AddGrid(File, layout, number);
    return dimension;
}

/// Decided: a chunk is one channel's course over a block of frames. A channel has few counts, so
/// the same doubles come again and again, which is found faster when they stand together, and as
/// they are: a simulated radiometer takes 0.43 of its bytes so, two thirds when they are shuffled.
/// A reader of spectra, one after another, has the chunks of all channels in its cache.
void CNetCdfTable::AddNumbers(const FrameVariable& variable, const FrameLayout& layout) {
    const bool series = variable.grid >= 0;
    const int over[] = {TimeDimension, series ? DefineWavelengths(layout, variable.grid) : -1};
    const std::size_t channels = variable.indexes.size();
    const std::size_t chunks[] = {BlockFrames, 1}, statusChunks[] = {BlockFrames, channels};
    const std::size_t dimensions = series ? 2 : 1;
    Numbers numbers{.origin = variable.origin, .indexes = variable.indexes};
    numbers.values.resize(BlockFrames * channels);
    numbers.statuses.resize(BlockFrames * channels);
    numbers.variable =
        File.AddVariable(variable.name, NetCdfType::Double, std::span(over).first(dimensions),
                         std::span(chunks).first(dimensions));
    File.FillWithNaN(numbers.variable);
    SetAttributes(File, numbers.variable, variable.attributes);
    numbers.status =
        File.AddVariable(variable.statusName, NetCdfType::Byte, std::span(over).first(dimensions),
                         std::span(statusChunks).first(dimensions));
    SetAttributes(File, numbers.status, variable.statusAttributes);
    if (!variable.qcName.empty()) {
        numbers.qc =
            File.AddVariable(variable.qcName, NetCdfType::Byte, std::span(over).first(dimensions),
                             std::span(statusChunks).first(dimensions));
        SetAttributes(File, numbers.qc, variable.qcAttributes);
        numbers.flags.resize(BlockFrames * channels);
    }
    NumberList.push_back(std::move(numbers));
}

/// Strings of any length are kept one by one and not compressed, which costs much.
int CNetCdfTable::DefineTexts(const FrameVariable& variable) {
    int over[] = {TimeDimension, -1};
    if (variable.width == 0)
        return File.AddVariable(variable.name, NetCdfType::String, std::span(over).first(1),
                                std::span(&BlockFrames, 1));
    const auto [dimension, isNew] = WidthDimensions.try_emplace(variable.width, -1);
    if (isNew)
        dimension->second = File.AddDimension(variable.widthDimension, variable.width);
    over[1] = dimension->second;
    const std::size_t chunks[] = {BlockFrames, variable.width};
    return File.AddVariable(variable.name, NetCdfType::Char, over, chunks);
}

void CNetCdfTable::AddTexts(const FrameVariable& variable) {
    const int over[] = {TimeDimension};
    Texts texts{.sensor = variable.indexes[0], .width = variable.width};
    texts.variable = DefineTexts(variable);
    SetAttributes(File, texts.variable, variable.attributes);
    texts.status =
        File.AddVariable(variable.statusName, NetCdfType::Byte, over, std::span(&BlockFrames, 1));
    SetAttributes(File, texts.status, variable.statusAttributes);
    TextList.push_back(std::move(texts));
}

} // namespace qor
