// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/PortSetup.h"

#include "base/Text.h"
#include "session/SessionSetup.h"

#include <algorithm>

namespace qor {

namespace {

std::size_t PortCount(const CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    return static_cast<std::size_t>(
        std::ranges::count_if(doc.Resources, [](const auto& one) { return !one->IsFile(); }));
}

} // namespace

AddedPort AddPort(CQorViewDoc& doc, const PortWish& wish) {
    CSessionSetup setup(doc);
    CommResult result = CommResult::Success;
    AddedPort added;
    added.id = doc.AddSerialResource(RunPort(wish.settings, PortCount(doc) + 1), &result);
    if (added.id == ResourceId::None) {
        setup.Refuse(Refusal::Kind::Resource, wish.settings.portName,
                     "cannot be used. " + OneLine(CommDetail(result)));
    } else {
        doc.SetReconnect(added.id, wish.reconnect);
        InstrumentSelection files;
        for (const std::string& path : wish.files) // a file of either kind may stand here
            files.definitions.push_back(path);
        setup.AddAll(files, added.id);
    }
    added.refusals = setup.Refusals();
    return added;
}

std::string SentenceOf(const Refusal& refusal) {
    return OneLine(refusal.subject + ' ' + refusal.reason);
}

} // namespace qor
