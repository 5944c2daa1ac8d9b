// SPDX-License-Identifier: GPL-3.0-or-later
//
// The state of the raw log, apart from its window: file, elapsed time, frames, size, what the disk
// still takes and for how long, as of the latest look by the document's room for it.
#pragma once

#include "views/SessionPages.h"
#include "views/View.h"

#include <functional>
#include <string>

namespace qor {

class CLogView : public CView {
  public:
    /// Must not wait for the disk.
    using DiskSpace = std::function<std::optional<std::uint64_t>(const std::string& folder)>;
    explicit CLogView(CQorViewDoc& doc);
    CLogView(CQorViewDoc& doc, DiskSpace space);

    /// It is of the whole session, whatever the name.
    void Show(const std::string&) override {}
    bool Refresh(CQorViewDoc& doc) override;
    ViewPages Pages() const override { return {&Grid}; }
    Menu ContextMenu(CQorViewDoc&) override { return {}; }

    /// The same for the banner, as of the latest refresh.
    const LogPage& Page() const { return Banner; }
    /// What the banner is to say of the run; before a refresh.
    void SetRun(RunKind run, std::string speed);

  private:
    void FillGrid();
    void Add(const char* label, std::string text, const char* units, std::optional<double> number,
             Sign sign = Sign::None);

    CQorViewDoc& Doc;
    DiskSpace Space;
    LogFacts Facts;
    LogPage Banner;
    CFrameFlow Flow;
    GridPage Grid;
};

} // namespace qor
