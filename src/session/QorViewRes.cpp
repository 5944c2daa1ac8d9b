// SPDX-License-Identifier: GPL-3.0-or-later
//
// Look-ups among a resource's instruments. See QorViewRes.h.
#include "session/QorViewRes.h"

namespace qor {

CQorViewRes::CQorViewRes(CTelemComm& comm, const SerialResourceSettings& settings)
    : Comm(comm), Serial(settings), File(false) {}

CQorViewRes::CQorViewRes(CTelemComm& comm, const FileResourceSettings& settings)
    : Comm(comm), Playback(settings), File(true) {}

CQorViewIns* CQorViewRes::Instrument(int index) const {
    if (index < 0 || static_cast<std::size_t>(index) >= Instruments.size())
        return nullptr;
    return Instruments[static_cast<std::size_t>(index)].get();
}

int CQorViewRes::FindInstrument(std::string_view name) const {
    for (std::size_t i = 0; i < Instruments.size(); ++i)
        if (Instruments[i]->Name() == name)
            return static_cast<int>(i);
    return -1;
}

} // namespace qor
