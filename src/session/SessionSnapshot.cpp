// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/SessionSnapshot.h"

#include <algorithm>

namespace qor {

const ResourceStatus* SessionSnapshot::Find(ResourceId id) const {
    const auto found = std::ranges::find(resources, id, &ResourceStatus::id);
    return found == resources.end() ? nullptr : &*found;
}

const InstrumentFigures* SessionSnapshot::Find(InstrumentId id) const {
    for (const ResourceStatus& resource : resources)
        for (const InstrumentFigures& instrument : resource.instruments)
            if (instrument.id == id)
                return &instrument;
    return nullptr;
}

std::string CheckedCount(bool checked, std::uint64_t count, std::string_view what) {
    return checked ? std::to_string(count) + ' ' + std::string(what)
                   : std::string(what) + " not checked";
}

} // namespace qor
