// SPDX-License-Identifier: GPL-3.0-or-later
//
// The instruments attached to one resource, in attachment order: who may join, who is enabled, and
// the search for their sync headers. Guarded by the frame lock of the resource; reports nothing.
#pragma once

#include "telemetry/AttachRequest.h"
#include "telemetry/CommResult.h"
#include "telemetry/FrameData.h"
#include "telemetry/HeaderSearch.h"
#include "telemetry/SpecialSync.h"

#include <optional>

namespace qor {

struct AttachedInstrument {
    CFrameInfo info;
    /// The length of a frame without terminator; never 0.
    std::size_t frameLength = 1;
    bool enabled = false;
    bool foundReported = false; ///< "found on" was reported since synchronisation was last lost
    bool tagged = true;         ///< its frames in a raw log carry a time tag
    bool endless = false;       ///< the ended stream holds no terminator for it any more
    bool tooLong = false;       ///< its frames are longer than any that is cut, and that was said
    /// Where its sync header stands no other enabled instrument's can.
    bool standsAlone = false;
    std::size_t follower = 0; ///< the instrument whose frame came after its own last time
};

class CAttachedInstruments {
  public:
    CommResult Attach(const AttachRequest& request, bool live);
    /// The position that the instrument had, or empty when unknown.
    std::optional<std::size_t> Detach(std::string_view instrumentName);
    std::optional<std::size_t> Find(std::string_view instrumentName) const;
    void SetEnabled(std::size_t position, bool enabled);

    std::size_t Count() const { return List.size(); }
    AttachedInstrument& operator[](std::size_t position) { return List[position]; }
    const AttachedInstrument& operator[](std::size_t position) const { return List[position]; }
    auto begin() { return List.begin(); }
    auto end() { return List.end(); }

    /// The synchronisation of an instrument without sync header, when one is attached.
    CSpecialSync& Special() { return WithoutHeader; }

    /// The sync headers of the enabled instruments, in attachment order.
    const CHeaderSearch& Headers() const { return Search; }
    bool AnyEnabled() const { return !Positions.empty(); }
    /// The instrument of a search's candidate.
    std::size_t PositionOf(std::uint32_t candidate) const { return Positions[candidate]; }
    /// The first candidate attached after the position; the number of candidates when there is
    /// none.
    std::size_t FirstCandidateAfter(std::size_t position) const { return CandidatesUpTo[position]; }

  private:
    CommResult AdmitWithoutSync(const AttachRequest& request);
    void CompileSearch();

    std::vector<AttachedInstrument> List;
    bool NoSyncMode = false;
    CSpecialSync WithoutHeader;
    CHeaderSearch Search;
    std::vector<std::size_t> Positions; ///< of each candidate
    std::vector<std::size_t>
        CandidatesUpTo; ///< each position's enabled instruments, itself included
};

} // namespace qor
