// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/HistoryItems.h"

#include "base/Text.h"
#include "instrument/Calibration.h"
#include "instrument/FrameChecks.h"
#include "products/PackageSensors.h"

#include <algorithm>
#include <span>

namespace qor {

namespace {

constexpr int SensorDecimals = 4;
constexpr std::size_t FirstChoice = 3; ///< so many are shown unasked
/// Types that identify an instrument or its frame, or tell when it was, and measure nothing.
constexpr std::string_view Housekeeping[] = {"INSTRUMENT", "SN",    "RATE",    "FRAME",  "CHECK",
                                             "CRC",        "TIMER", "DATETAG", "TIMETAG"};

struct Quantity {
    std::optional<ANCDATATYPE> row;
    std::span<const std::string_view> types; ///< of sensors that measure it
    bool inWater;                            ///< of these only those that do not say otherwise
};
constexpr std::string_view Temperatures[] = {"TEMP", "TEMPERATURE"};
constexpr std::string_view Salinities[] = {"SAL", "SALINITY"};
constexpr std::string_view Pigments[] = {"CHL",   "CHLA", "CHLOROPHYLL",  "FL",         "FLU",
                                         "FLUOR", "FLUO", "FLUORESCENCE", "FLUOROMETER"};
constexpr std::string_view Pressures[] = {"PRES", "PRESSURE"};
constexpr Quantity ProfileQuantities[] = {
    {ANCDATATYPE::WaterTemperature, Temperatures, true},
    {ANCDATATYPE::Salinity, Salinities, false},
    {std::nullopt, Pigments, false},
};

bool IsOneOf(std::string_view type, std::span<const std::string_view> types) {
    return std::ranges::any_of(types,
                               [type](std::string_view one) { return EqualsNoCase(type, one); });
}

std::string_view TypeOf(const PlotItem& item) {
    return std::string_view(item.item.label).substr(0, item.item.label.find('('));
}

bool IsInWater(const PlotItem& item) {
    const std::string_view id = std::string_view(item.item.label)
                                    .substr(std::min(TypeOf(item).size(), item.item.label.size()));
    constexpr std::string_view Ids[] = {"", "(NONE)", "(W)", "(WATER)", "(SEA)"};
    return IsOneOf(id, Ids);
}

std::string ShortName(const std::string& label) {
    return std::string(Trim(std::string_view(label).substr(0, label.find('('))));
}

PlotItem ItemOf(const CQorViewIns& instrument, const DerivedRow& row) {
    return {{instrument.Name(), row.label, true},
            Utf8Of(row.label),
            Utf8Of(ShortName(row.label)),
            Utf8Of(row.units),
            row.decimals,
            row.kind};
}

PlotItem ItemOf(const CQorViewIns& instrument, const CSensor& sensor) {
    const std::string label = SensorName(sensor);
    return {{instrument.Name(), label, false},
            Utf8Of(label),
            Utf8Of(ShortName(label)),
            Utf8Of(sensor.Units),
            SensorDecimals,
            std::nullopt};
}

/// What an instrument and its fellows have, each item once.
std::vector<PlotItem> ItemsAround(const CQorViewDoc& doc, const CQorViewIns& instrument)
    REQUIRES(doc.DocLock) {
    std::vector<PlotItem> items;
    for (const CQorViewIns* fellow : FellowsOf(doc, instrument))
        for (PlotItem& item : ItemsOf(doc, *fellow))
            if (!item.item.derived || fellow == &instrument)
                items.push_back(std::move(item));
    return items;
}

const PlotItem* FindQuantity(const std::vector<PlotItem>& items, const Quantity& quantity) {
    for (const PlotItem& item : items)
        if (quantity.row && item.kind == quantity.row)
            return &item;
    for (const PlotItem& item : items)
        if (!item.item.derived && IsOneOf(TypeOf(item), quantity.types) &&
            (!quantity.inWater || IsInWater(item)))
            return &item;
    return nullptr;
}

template <class Test> std::vector<PlotItem> FirstOf(const std::vector<PlotItem>& items, Test test) {
    std::vector<PlotItem> first;
    for (const PlotItem& item : items)
        if (first.size() < FirstChoice && test(item))
            first.push_back(item);
    return first;
}

} // namespace

std::string PlotItem::FullName() const {
    return Utf8Of(item.instrument) + ": " + label;
}

std::vector<PlotItem> ItemsOf(const CQorViewDoc& doc, const CQorViewIns& instrument) {
    std::vector<PlotItem> items;
    const SessionState::FrameOwner* owner = doc.OwnerOf(instrument.Id);
    const bool packed = owner && owner->package;
    for (const DerivedRow& row :
         packed ? owner->package->Products.Rows() : instrument.Products.Rows())
        items.push_back(ItemOf(instrument, row));
    const CInstrument& definition = instrument.Definition();
    const std::int32_t counter = FrameCounterIndex(definition);
    const std::int32_t checksum = ChecksumIndexOf(definition);
    for (const CSensor& sensor : definition.Sensors()) {
        if (KindOfValue(sensor) != ValueKind::Number)
            continue;
        items.push_back(ItemOf(instrument, sensor));
        items.back().countsFrames = sensor.Index == counter || sensor.Index == checksum ||
                                    IsOneOf(sensor.Type, Housekeeping);
    }
    return items;
}

std::vector<const CQorViewIns*> FellowsOf(const CQorViewDoc& doc, const CQorViewIns& instrument) {
    std::vector<const CQorViewIns*> fellows{&instrument};
    const SessionState::FrameOwner* owner = doc.OwnerOf(instrument.Id);
    if (owner && owner->package)
        for (const InstrumentId id : owner->package->Attached)
            if (const CQorViewIns* fellow = doc.Find(id); fellow && fellow != &instrument)
                fellows.push_back(fellow);
    return fellows;
}

std::optional<PlotItem> FindItem(const CQorViewDoc& doc, const CQorViewIns* shown,
                                 std::string_view text) {
    const auto among = [text](const std::vector<PlotItem>& items, std::size_t from) {
        const auto found = std::ranges::find_if(items, [text, from](const PlotItem& item) {
            return EqualsNoCase(item.label, text.substr(from));
        });
        return found == items.end() ? std::nullopt : std::optional(*found);
    };
    if (shown)
        if (std::optional<PlotItem> found = among(ItemsAround(doc, *shown), 0))
            return found;
    for (const auto& resource : doc.Resources)
        for (const auto& instrument : resource->Instruments)
            if (const std::string prefix = Utf8Of(instrument->Name()) + ": ";
                text.starts_with(prefix))
                if (std::optional<PlotItem> found = among(ItemsOf(doc, *instrument), prefix.size()))
                    return found;
    return std::nullopt;
}

std::vector<PlotItem> ProfileItems(const CQorViewDoc& doc, const CQorViewIns& instrument) {
    const std::vector<PlotItem> items = ItemsAround(doc, instrument);
    std::vector<PlotItem> chosen;
    for (const Quantity& quantity : ProfileQuantities)
        if (const PlotItem* found = FindQuantity(items, quantity))
            chosen.push_back(*found);
    if (!chosen.empty())
        return chosen;
    return FirstOf(items, [](const PlotItem& item) {
        return !item.countsFrames && item.kind != ANCDATATYPE::Depth &&
               item.kind != ANCDATATYPE::Velocity && !IsOneOf(TypeOf(item), Pressures);
    });
}

std::vector<PlotItem> SeriesItems(const CQorViewDoc& doc, const CQorViewIns& instrument) {
    const std::vector<PlotItem> items = ItemsAround(doc, instrument);
    std::vector<PlotItem> rows =
        FirstOf(items, [](const PlotItem& item) { return item.item.derived; });
    return !rows.empty() ? rows
                         : FirstOf(items, [](const PlotItem& item) { return !item.countsFrames; });
}

ItemState StateOf(const CQorViewDoc& doc, const PlotItem& item) {
    const CQorViewIns* instrument = doc.Find(doc.FindInstrument(item.item.instrument));
    if (!instrument)
        return {};
    ItemState state{true};
    const std::int64_t now = doc.Clock.MonotonicMilliseconds();
    const auto look = [&](const CLiveInstrument* one) {
        if (!one || !one->CurrentFrame())
            return;
        state.age = std::max(state.age, now - one->ArrivalMonotonic);
        state.stale = state.stale || one->Stale(now);
    };
    const SessionState::FrameOwner* owner = doc.OwnerOf(instrument->Id);
    if (!item.item.derived || !owner->package) {
        look(&instrument->Live);
        return state;
    }
    const CPackage& package = *owner->package;
    const auto& rows = package.Products.Rows();
    const auto row = std::ranges::find(rows, item.item.label, &DerivedRow::label);
    if (row != rows.end())
        for (const int place :
             package.Products.CarriersOf(static_cast<std::size_t>(row - rows.begin())))
            look(InstrumentAt(package.Live, place));
    return state;
}

} // namespace qor
