// SPDX-License-Identifier: GPL-3.0-or-later
//
// The instrument status, apart from its window: a row a resource and an instrument with everything
// that can go wrong, the worst first. Its watch keeps the times of the latest frames, for rates.
#pragma once

#include "views/FrameRates.h"
#include "views/View.h"
#include "views/WindowPlace.h"

#include <map>
#include <string>
#include <vector>

namespace qor {

/// Kept for each status view under the caller's section prefix.
struct CStatusViewSettings : WindowPlace {
    int SinceLog = 0; ///< counts are of the latest log; else of the connection

    /// False, and nothing done, without a prefix. Absent keys leave their fields alone.
    bool Save(CProfileStore& store, const std::string& prefix) const;
    bool Load(const CProfileStore& store, const std::string& prefix);
};

class CStatusView : public CView {
  public:
    explicit CStatusView(CQorViewDoc& doc);

    CStatusViewSettings Settings;

    /// It is of the whole session, whatever the name.
    void Show(const std::string&) override {}
    bool Refresh(CQorViewDoc& doc) override;
    ViewPages Pages() const override { return {&Grid}; }
    Menu ContextMenu(CQorViewDoc& doc) override;
    void LoadSettings(const CProfileStore& store, const std::string& prefix) override;
    void SaveSettings(CProfileStore& store, const std::string& prefix) const override;

    /// Counts begin at nothing again.
    void Reset();

  private:
    /// What is counted of an instrument or a resource.
    struct Counts {
        std::uint64_t frames = 0, dropped = 0, checksum = 0, values = 0;
        std::uint64_t discarded = 0, lost = 0, line = 0;

        Counts Since(const Counts& before) const;
        bool Faulty() const { return dropped + checksum + values + discarded + lost + line > 0; }
    };
    struct Known {
        Counts base;
        bool connected = false;
    };
    using RowId = std::uint64_t;

    void BeginCounts(const ResourceStatus& resource);
    void FollowBeginnings(const SessionSnapshot& snapshot);
    Counts SinceBase(RowId id, const Counts& now) { return now.Since(Bases[id].base); }
    GridRow ResourceRow(const ResourceStatus& resource, std::int64_t now) REQUIRES(Doc.DocLock);
    GridRow InstrumentRow(const InstrumentFigures& figures, const ResourceStatus& resource,
                          std::int64_t now) REQUIRES(Doc.DocLock);
    static Counts CountsOf(const InstrumentFigures& figures);
    static Counts CountsOf(const ResourceStatus& resource);

    CQorViewDoc& Doc;
    const CFrameRates Rates;
    std::map<RowId, Known> Bases;
    std::string LogPath;
    GridPage Grid;
};

} // namespace qor
