// SPDX-License-Identifier: GPL-3.0-or-later
//
// The instruments attached to one resource, in attachment order: who may join, who is enabled, by
// which rule their frames are told apart, and the search for their sync headers. Guarded by the
// frame lock of the resource; reports nothing.
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
    FrameRule ownRule = FrameRule::Header; ///< of the telemetry of its own port
    FrameRule rule = FrameRule::Header;    ///< the one that counts in this stream
    /// The length of a frame that ends by its size; never 0.
    std::size_t frameLength = 1;
    std::size_t declaredLength = 1; ///< the same while its sync header counts
    bool byTerminator = false;      ///< its frames end by their terminator
    CSpecialSync special;           ///< where its frames stand when its sync header does not count
    bool enabled = false;
    bool foundReported = false; ///< "found on" was reported since synchronisation was last lost
    bool tagged = true;         ///< its frames in a raw log carry a time tag
    bool hadTag = false;        ///< one of them had one
    bool endless = false;       ///< the ended stream holds no terminator for it any more
    bool endlessTold = false;   ///< no terminator came for its last frame, and that was said
    bool tooLong = false;       ///< its frames are longer than any that is cut, and that was said
    /// Where its sync header stands no other enabled instrument's can.
    bool standsAlone = false;
    std::size_t follower = 0; ///< the instrument whose frame came after its own last time

    bool HasHeader() const { return rule == FrameRule::Header || rule == FrameRule::HeaderAndSize; }
};

class CAttachedInstruments {
  public:
    /// `live`: the no-sync flag counts, and refuses company.
    CommResult Attach(const AttachRequest& request, bool live);
    /// False when unknown.
    bool Detach(std::string_view instrumentName);
    std::optional<std::size_t> Find(std::string_view instrumentName) const;
    void SetEnabled(std::size_t position, bool enabled);
    /// The stream is a raw log: each instrument's own rule counts; or it is something else.
    void SetRawLog(bool rawLog);

    AttachedInstrument& operator[](std::size_t position) { return List[position]; }
    const AttachedInstrument& operator[](std::size_t position) const { return List[position]; }
    auto begin() { return List.begin(); }
    auto end() { return List.end(); }

    /// The sync headers of the enabled instruments that have one, in attachment order.
    const CHeaderSearch& Headers() const { return Search; }
    bool AnyEnabled() const { return !Positions.empty() || !WithoutHeader.empty(); }
    /// The instrument of a search's candidate.
    std::size_t PositionOf(std::uint32_t candidate) const { return Positions[candidate]; }
    /// The first candidate attached after the position; the number of candidates when there is
    /// none.
    std::size_t FirstCandidateAfter(std::size_t position) const { return CandidatesUpTo[position]; }

    /// The enabled instruments without sync header: of a raw log any number, of a port one alone.
    const std::vector<std::size_t>& Headerless() const { return WithoutHeader; }
    bool IsAlone() const { return NoSyncMode; }
    /// The longest frame of packets among them.
    std::size_t LongestPackets() const;
    /// Of the one that has a port for itself: the rest of a line passes unused, or the next byte
    /// begins one.
    void LoseLine();
    void BeginLine();

  private:
    void CountRule(AttachedInstrument& instrument, FrameRule rule);
    void CompileSearch();

    std::vector<AttachedInstrument> List;
    bool NoSyncMode = false; ///< one that carries no sync header has the port for itself
    bool RawLog = false;
    CHeaderSearch Search;
    std::vector<std::size_t> Positions; ///< of each candidate
    std::vector<std::size_t>
        CandidatesUpTo; ///< each position's enabled instruments, itself included
    std::vector<std::size_t> WithoutHeader;
};

} // namespace qor
