// SPDX-License-Identifier: GPL-3.0-or-later
//
// The GPS station, apart from its window: what the receiver says in all its sentences, how far this
// computer's clock is from its, and the track of the log. It sees every frame through its watch.
#pragma once

#include "products/GpsSentence.h"
#include "products/Track.h"
#include "session/FrameWatch.h"
#include "views/View.h"
#include "views/WindowPlace.h"

#include <string>
#include <vector>

namespace qor {

/// Kept for each GPS view under the caller's section prefix.
struct CGpsViewSettings : WindowPlace {
    int DecimalDegrees = 0;
    int Sentences = 0;  ///< the sentences themselves are shown
    int TrackUnits = 0; ///< 0 metres from where it began, 1 degrees

    /// False, and nothing done, without a prefix. Absent keys leave their fields alone.
    bool Save(CProfileStore& store, const std::string& prefix) const;
    bool Load(const CProfileStore& store, const std::string& prefix);
};

/// The instruments whose sentences make up one receiver: the one named, else the one of the GPS
/// role, else the first that brings positions; and those beside it on its resource that speak as
/// receivers do. The one that was asked for comes first.
std::vector<const CQorViewIns*> SentencesOfReceiver(const CQorViewDoc& doc, const std::string& name)
    REQUIRES(doc.DocLock);

/// All that these say now, the first one's word first; old frames and, without them, nothing.
GpsSentence ReadReceiver(const std::vector<const CQorViewIns*>& sentences, std::int64_t now);

class CGpsView : public CView {
  public:
    explicit CGpsView(CQorViewDoc& doc);

    CGpsViewSettings Settings;

    void Show(const std::string& instrument) override;
    bool Refresh(CQorViewDoc& doc) override;
    ViewPages Pages() const override { return {&Grid, {&Plot}}; }
    Menu ContextMenu(CQorViewDoc& doc) override;
    void LoadSettings(const CProfileStore& store, const std::string& prefix) override;
    void SaveSettings(CProfileStore& store, const std::string& prefix) const override;

  private:
    void Take(const CQorViewIns& instrument) REQUIRES(Doc.DocLock);
    void FillGrid(const std::vector<const CQorViewIns*>& sentences, std::int64_t now)
        REQUIRES(Doc.DocLock);
    void AddSentences(const std::vector<const CQorViewIns*>& sentences, std::int64_t now);
    void FillTrack() REQUIRES(Doc.DocLock);
    void Toggle(int CGpsViewSettings::*setting);

    CQorViewDoc& Doc;
    std::string Name;
    bool WasThere = false;
    std::vector<InstrumentId> Receiver GUARDED_BY(Doc.DocLock);
    CTrack Track GUARDED_BY(Doc.DocLock);
    std::uint64_t Taken GUARDED_BY(Doc.DocLock) = 0;
    std::uint64_t Drawn GUARDED_BY(Doc.DocLock) = 0; ///< Taken when it was drawn
    std::string LogPath;                             ///< of the log whose track it is
    GridPage Grid;
    PlotPage Plot;
    CFrameWatch Watch; ///< the last member: sees what is above
};

} // namespace qor
