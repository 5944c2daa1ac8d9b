// SPDX-License-Identifier: GPL-3.0-or-later
//
// The depth that each frame of a document is from, for what is made of frames one by one. Made when
// its instruments are set up and used in the watch of frames, under the document's lock.
#pragma once

#include "session/PressureSource.h"

#include <map>
#include <set>

namespace qor {

class CDepths {
  public:
    /// `wanted`: else every instrument is welcome and no depth is looked for.
    CDepths(const SessionState& session, bool wanted);

    /// Whether frames of the instrument are: all, or those that something says the depth of.
    bool Wanted(const CQorViewIns& instrument) const {
        return !IsWanted || Sources.contains(&instrument);
    }
    /// What says the depth of the instrument's frames; null: nothing, or no depth is looked for.
    const PressureSource* SourceOf(const CQorViewIns& instrument) const;
    /// Whether the instrument's current frame is damaged: then it says no depth, its own or
    /// others'.
    void Distrust(const CQorViewIns& instrument, bool damaged);
    /// The depth of the instrument's current frame, dbar: what its own frame says, or the latest
    /// one of the instrument that measures it unless that is old by the time tags of both.
    std::optional<double> Of(const CQorViewIns& instrument) const;

  private:
    const SessionState& Session;
    const bool IsWanted;
    std::map<const CQorViewIns*, PressureSource> Sources;
    std::set<const CQorViewIns*> Damaged; ///< whose current frame is
};

} // namespace qor
