// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulation/PlayedInstruments.h"

#include "simulation/FrameMaker.h"

namespace qor {

std::optional<PlayRefusal> LoadDefinitions(std::span<const std::string> paths,
                                           PlayedInstruments& instruments) {
    for (const std::string& path : paths) {
        auto instrument = std::make_unique<CInstrument>();
        if (instrument->Load(path) != DefinitionStatus::Success)
            return PlayRefusal{path, "could not be loaded. " + instrument->ParseLog()};
        instruments.push_back(std::move(instrument));
    }
    return std::nullopt;
}

std::optional<PlayRefusal> FindUnplayable(const PlayedInstruments& instruments) {
    for (const std::unique_ptr<CInstrument>& instrument : instruments) {
        if (instrument->FrameSize() <= 0)
            return PlayRefusal{instrument->FilePath(),
                               "its frames have no bytes; there is nothing to simulate."};
        if (instrument->FrameSize() > CFrameMaker::LargestFrame)
            return PlayRefusal{instrument->FilePath(), "its frames are too long to simulate."};
    }
    return std::nullopt;
}

} // namespace qor
