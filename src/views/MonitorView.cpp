// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/MonitorView.h"

#include "base/Text.h"
#include "instrument/FieldText.h"
#include "products/DerivedRows.h"
#include "views/ShownInstrument.h"

#include <algorithm>

namespace qor {

namespace {

constexpr const char* MonitorSection = "\\Monitor";
constexpr int Hexadecimal = 0, AsText8 = 1, Fields = 2;
constexpr int FieldDecimals = 4;

std::string HexOf(std::span<const std::uint8_t> bytes) {
    constexpr const char* Digits = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += text.empty() ? "" : " ";
        text += Digits[byte >> 4];
        text += Digits[byte & 15];
    }
    return text;
}

std::string TimeOf(const FrameTime& time) {
    return time.known ? FormatTime("%H:%M:%S", CalendarFromSeconds(time.seconds)) +
                            Format(".%03d", time.milliseconds)
                      : "--";
}

} // namespace

bool CMonitorViewSettings::Save(CProfileStore& store, const std::string& prefix) const {
    if (prefix.empty())
        return false;
    SavePlace(store, prefix + MonitorSection);
    store.WriteInteger(prefix + MonitorSection, "Form", Form);
    store.WriteInteger(prefix + MonitorSection, "OnlyBad", OnlyBad);
    return true;
}

bool CMonitorViewSettings::Load(const CProfileStore& store, const std::string& prefix) {
    if (prefix.empty())
        return false;
    LoadPlace(store, prefix + MonitorSection);
    LoadInteger(store, prefix + MonitorSection, "Form", Form);
    LoadInteger(store, prefix + MonitorSection, "OnlyBad", OnlyBad);
    return true;
}

CMonitorView::CMonitorView(CQorViewDoc& doc)
    : Doc(doc), Watch(doc, [this](CQorViewIns& instrument, const FrameCheckResult& found) {
          CRecursiveLock lock(Doc.DocLock);
          if (instrument.Id == Attachment)
              Take(instrument, found);
      }) {
    Grid.ownColours = false;
    Grid.newestLast = true;
    Grid.columns = {{"Frame", true}, {"Time UTC"}, {"Faults"}, {"Bytes", true}, {"Content"}};
}

void CMonitorView::Show(const std::string& instrument) {
    CRecursiveLock lock(Doc.DocLock);
    Name = instrument;
    WasThere = Frozen = false;
    Attachment = InstrumentId::None;
    Frames.clear();
    BadFrames.clear();
    Redraw();
}

void CMonitorView::Take(const CQorViewIns& instrument, const FrameCheckResult& found) {
    const CFrameData& frame = *instrument.Live.CurrentFrame();
    KeptFrame kept;
    kept.number = instrument.FramesReceived;
    kept.time = MomentOf(Doc, instrument);
    kept.length = frame.Bytes.size();
    const auto end =
        frame.Bytes.begin() + static_cast<std::ptrdiff_t>(std::min(frame.Bytes.size(), BytesKept));
    kept.bytes.assign(frame.Bytes.begin(), end);
    kept.dropped = found.dropped;
    kept.checksumError = found.checksumError;
    kept.valueError = found.valueError;
    kept.unusable = frame.Error;
    kept.immersed = instrument.Live.Immersed;
    Keep(Frames, kept);
    if (kept.Bad())
        Keep(BadFrames, kept);
}

/// The memory of the oldest is used again.
void CMonitorView::Keep(std::deque<KeptFrame>& frames, const KeptFrame& frame) {
    KeptFrame kept;
    if (frames.size() >= FramesKept) {
        kept = std::move(frames.front());
        frames.pop_front();
    }
    kept = frame;
    frames.push_back(std::move(kept));
}

const std::deque<CMonitorView::KeptFrame>& CMonitorView::ShownFrames() const {
    return Frozen ? Held : Settings.OnlyBad != 0 ? BadFrames : Frames;
}

std::string CMonitorView::FieldsOf(const KeptFrame& frame, const CInstrument& definition) const {
    std::string fields;
    for (const CSensor& sensor : definition.Sensors()) {
        if (sensor.Fit == FitType::DELIMITER)
            continue;
        std::string text;
        // A failure leaves the text of its status.
        static_cast<void>(FormatField(sensor, frame.bytes, frame.immersed, FieldView::Calibrated,
                                      FieldDecimals, text));
        fields += (fields.empty() ? "" : "  ") + SensorName(sensor) + "=" + text;
    }
    return fields;
}

GridRow CMonitorView::RowOf(const KeptFrame& frame, const CInstrument& definition) const {
    GridRow row{std::to_string(frame.number), "", {TimeOf(frame.time)}};
    row.id = frame.number;
    row.number = static_cast<double>(frame.number);
    row.sign = frame.unusable || frame.checksumError ? Sign::Error
               : frame.Bad()                         ? Sign::Warning
                                                     : Sign::None;
    std::string faults;
    for (const auto& [is, word] :
         {std::pair{frame.dropped, "dropped"}, std::pair{frame.checksumError, "checksum"},
          std::pair{frame.valueError, "value"}, std::pair{frame.unusable, "unusable"}})
        if (is)
            faults += (faults.empty() ? "" : " ") + std::string(word);
    std::string content = Settings.Form == Hexadecimal ? HexOf(frame.bytes)
                          : Settings.Form == Fields    ? Utf8Of(FieldsOf(frame, definition))
                                                       : Printable(AsText(frame.bytes));
    if (frame.length > frame.bytes.size() && Settings.Form != Fields)
        content += " ...";
    row.more = {{faults}, {std::to_string(frame.length)}, {std::move(content)}};
    return row;
}

bool CMonitorView::Refresh(CQorViewDoc&) {
    CRecursiveLock lock(Doc.DocLock);
    const CQorViewIns* instrument = FindShown(Doc, Name);
    if (instrument && instrument->Id != Attachment) {
        Attachment = instrument->Id;
        Frames.clear();
        BadFrames.clear();
        Frozen = false;
        Redraw();
        WasThere = true;
        Grid.title = "Monitor - " + Utf8Of(instrument->Name());
        if (instrument->Live.CurrentFrame())
            Take(*instrument, {});
    }
    PageHead head = HeadOf(instrument, Name, WasThere, Doc.Clock.MonotonicMilliseconds());
    if (!Frames.empty() && head.state == PageState::Live)
        head.leading = std::to_string(Frames.back().number);
    bool changed = head != Grid.head;
    Grid.head = std::move(head);
    if (!instrument)
        return changed;
    for (const KeptFrame& frame : ShownFrames())
        if (frame.number > Drawn) {
            Drawn = frame.number;
            changed = true;
            if (Settings.OnlyBad == 0 || frame.Bad())
                Grid.rows.push_back(RowOf(frame, instrument->Definition()));
        }
    if (Grid.rows.size() > FramesKept)
        Grid.rows.erase(Grid.rows.begin(),
                        Grid.rows.end() - static_cast<std::ptrdiff_t>(FramesKept));
    return changed;
}

/// All rows are made anew with the next update.
void CMonitorView::Redraw() {
    Grid.rows.clear();
    Drawn = 0;
}

void CMonitorView::Freeze(bool on) {
    CRecursiveLock lock(Doc.DocLock);
    if (on && !Frozen)
        Held = ShownFrames();
    if (!on)
        Held.clear();
    Frozen = on;
    Redraw();
}

Menu CMonitorView::ContextMenu(CQorViewDoc&) {
    Menu menu;
    for (const auto& [form, text] : {std::pair{Hexadecimal, "&Hexadecimal"},
                                     std::pair{AsText8, "&Text"}, std::pair{Fields, "&Fields"}})
        menu.push_back({text,
                        [this, chosen = form] {
                            Settings.Form = chosen;
                            Redraw();
                        },
                        true, Settings.Form == form});
    menu.push_back({});
    menu.push_back({"Only &Bad Frames",
                    [this] {
                        Settings.OnlyBad = Settings.OnlyBad == 0;
                        Redraw();
                    },
                    true, Settings.OnlyBad != 0});
    menu.push_back({"Free&ze", [this] { Freeze(!Frozen); }, true, Frozen});
    return menu;
}

void CMonitorView::LoadSettings(const CProfileStore& store, const std::string& prefix) {
    if (Settings.Load(store, prefix))
        Redraw();
}

void CMonitorView::SaveSettings(CProfileStore& store, const std::string& prefix) const {
    (void)Settings.Save(store, prefix); // without a prefix there is nothing to keep
}

} // namespace qor
