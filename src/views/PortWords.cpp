// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/PortWords.h"

namespace qor {

PortWord WordOf(const ResourceStatus& resource) {
    if (!resource.isFile)
        return WordOfPort(resource);
    return resource.playing      ? PortWord{"playing", Sign::Ok}
           : resource.frames > 0 ? PortWord{"played", Sign::Ok}
                                 : PortWord{"not playing", Sign::Off};
}

PortWord WordOfPort(const ResourceStatus& resource) {
    const ResourceFigures& figures = resource.figures;
    if (resource.reconnects && !figures.connected)
        return {"lost, trying", Sign::Error};
    if (figures.abortCode != 0)
        return {"aborted", Sign::Error};
    if (!figures.connected)
        return {"not connected", Sign::Off};
    return figures.waiting ? PortWord{"waiting", Sign::Waiting} : PortWord{"reading", Sign::Ok};
}

} // namespace qor
