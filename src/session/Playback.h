// SPDX-License-Identifier: GPL-3.0-or-later
//
// One raw log played through a document: what decoding, comparing, checking and looking at a log
// have in common. Plays on the calling thread, batch by batch; a face with a loop of its own adds a
// file resource instead.
#pragma once

#include "session/AcquisitionLoop.h"
#include "session/SessionSetup.h"

#include <string>
#include <vector>

namespace qor {

/// Brings the instruments of a selection, and of its session, onto a file that is to be played, and
/// takes the tare with which the file was logged.
void AddPlayed(CQorViewDoc& doc, CSessionSetup& setup, ResourceId file, const std::string& path,
               const InstrumentSelection& selection);

class CPlayback {
  public:
    /// `chunk` is the read size in bytes, 0 for the one that plays fastest; a batch has no more
    /// frames than `framesAtOnce`.
    CPlayback(CQorViewDoc& doc, std::uint32_t chunk,
              std::uint32_t framesAtOnce = FileResourceSettings().framesAtOnce);

    /// Opens the file and adds the instruments. False when the file cannot be played (see
    /// OpenFault); what could not be used of the selection is in Refusals, and the rest plays.
    bool Open(const std::string& path, const InstrumentSelection& selection);
    const std::string& OpenFault() const { return Fault; }
    const CSessionSetup& Set() const { return Setup; }

    /// The instruments, in the order in which they were named. They live as long as the document.
    const std::vector<CQorViewIns*>& Instruments() const { return Named; }
    ResourceFigures Figures() const { return Comm->Figures(); }
    /// Bytes of the file; 0 when it has no size.
    std::uint64_t Size() const { return FileSize; }

    /// Plays one batch. False at the end of the file or when it could not be read on.
    bool PlayBatch();
    /// After the last batch: how reading ended.
    CommResult Result();
    /// False when the next batch would wait for input.
    bool HasInput() const { return Comm->HasInput(); }
    /// Before the first batch: keeps what belongs to no frame. It lives as long as the document.
    void KeepDiscarded(CDiscardedBytes& kept) { Comm->KeepDiscarded(&kept); }
    bool AtEnd() const { return Doc.Acquisition.AtEnd(Resource); }

  private:
    CQorViewDoc& Doc;
    CAcquisitionLoop Loop;
    CSessionSetup Setup;
    FileResourceSettings Settings;
    std::uint64_t FileSize = 0;
    std::string Fault;
    ResourceId Resource = ResourceId::None;
    std::vector<CQorViewIns*> Named;
    CTelemComm* Comm = nullptr; ///< of the file, the document's
};

} // namespace qor
