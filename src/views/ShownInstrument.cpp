// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/ShownInstrument.h"

#include "base/Text.h"

namespace qor {

const CQorViewIns* FindShown(const CQorViewDoc& doc, const std::string& name,
                             const Serves& serves) {
    if (!name.empty())
        return doc.Find(doc.FindInstrument(name));
    for (const auto& resource : doc.Resources)
        for (const auto& instrument : resource->Instruments)
            if (!serves || serves(*instrument))
                return instrument.get();
    return nullptr;
}

PageHead EmptyHead(std::string sentence, std::string remedy) {
    PageHead head;
    head.state = PageState::Empty;
    head.sentence = std::move(sentence);
    head.remedy = std::move(remedy);
    return head;
}

PageHead HeadOf(const CQorViewIns* instrument, const std::string& name, bool wasThere,
                std::int64_t now) {
    PageHead head;
    if (!instrument) {
        head = EmptyHead(name.empty() ? "There is no instrument."
                                      : "There is no instrument " + Utf8Of(name) + ".",
                         "Add instrument");
        if (wasThere && !name.empty()) { // without a name it waits for the next one
            head.state = PageState::Gone;
            head.sign = Sign::Off;
            head.sentence = Utf8Of(name) + " was removed.";
            head.remedy = "Close";
        }
        return head;
    }
    if (!instrument->Live.CurrentFrame()) {
        head.state = PageState::Waiting;
        head.sign = Sign::Waiting;
        head.sentence = "Waiting for " + Utf8Of(instrument->ShownName()) + ".";
        return head;
    }
    head.sign = instrument->Live.Stale(now) ? Sign::Stale : Sign::Ok;
    return head;
}

} // namespace qor
