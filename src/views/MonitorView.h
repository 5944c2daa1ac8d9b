// SPDX-License-Identifier: GPL-3.0-or-later
//
// The telemetry monitor, apart from its window: the latest frames of one instrument, as bytes, as
// text, or field by field, newest last. Its watch keeps them as they come; the page is made when it
// is looked at.
#pragma once

#include "session/FrameWatch.h"
#include "views/View.h"
#include "views/WindowPlace.h"

#include <deque>
#include <string>
#include <vector>

namespace qor {

/// Kept for each monitor under the caller's section prefix.
struct CMonitorViewSettings : WindowPlace {
    int Form = 0; ///< 0 hexadecimal, 1 text, 2 fields
    int OnlyBad = 0;

    /// False, and nothing done, without a prefix. Absent keys leave their fields alone.
    bool Save(CProfileStore& store, const std::string& prefix) const;
    bool Load(const CProfileStore& store, const std::string& prefix);
};

class CMonitorView : public CView {
  public:
    static constexpr std::size_t FramesKept = 200; ///< and as many bad ones
    static constexpr std::size_t BytesKept = 4096; ///< of a frame; the rest is only counted

    explicit CMonitorView(CQorViewDoc& doc);

    CMonitorViewSettings Settings;

    void Show(const std::string& instrument) override;
    bool Refresh(CQorViewDoc& doc) override;
    ViewPages Pages() const override { return {&Grid}; }
    Menu ContextMenu(CQorViewDoc& doc) override;
    void LoadSettings(const CProfileStore& store, const std::string& prefix) override;
    void SaveSettings(CProfileStore& store, const std::string& prefix) const override;

    /// What is shown stays; frames are taken on meanwhile.
    void Freeze(bool on);

  private:
    struct KeptFrame {
        std::uint64_t number = 0;
        FrameTime time;
        std::vector<std::uint8_t> bytes; ///< the first ones
        std::size_t length = 0;
        bool dropped = false, checksumError = false, valueError = false, unusable = false;
        bool immersed = false;

        bool Bad() const { return dropped || checksumError || valueError || unusable; }
    };

    static void Keep(std::deque<KeptFrame>& frames, const KeptFrame& frame);
    void Take(const CQorViewIns& instrument, const FrameCheckResult& found) REQUIRES(Doc.DocLock);
    GridRow RowOf(const KeptFrame& frame, const CInstrument& definition) const;
    std::string FieldsOf(const KeptFrame& frame, const CInstrument& definition) const;
    const std::deque<KeptFrame>& ShownFrames() const REQUIRES(Doc.DocLock);
    void Redraw();

    CQorViewDoc& Doc;
    std::string Name;
    bool WasThere = false;
    bool Frozen = false;
    InstrumentId Attachment GUARDED_BY(Doc.DocLock) = InstrumentId::None;
    std::deque<KeptFrame> Frames GUARDED_BY(Doc.DocLock), BadFrames GUARDED_BY(Doc.DocLock);
    std::deque<KeptFrame> Held GUARDED_BY(Doc.DocLock); ///< what is shown while it is frozen
    std::uint64_t Drawn = 0; ///< the number of the last frame on the page
    GridPage Grid;
    CFrameWatch Watch; ///< the last member: sees what is above
};

} // namespace qor
