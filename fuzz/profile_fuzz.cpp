// SPDX-License-Identifier: GPL-3.0-or-later
//
// The door of stored settings: any text under the keys of the displays. What was read and written
// again reads the same.
#include "Require.h"

#include "session/ProfileStore.h"
#include "views/PkgAncView.h"
#include "views/RealityCheck.h"

using namespace qor;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    CMemoryProfileStore store;
    for (const char* key : {"XPosition", "PageIndex", "TiltWarnings", "SalWarnings"})
        store.WriteText("V\\Ancillary", key, text);
    store.WriteText("OSRC", "MaxValues", text);
    CAncViewSettings view;
    CPkgAncViewSettings package;
    COSRCViewSettings check;
    Require(view.Load(store, "V") && package.Load(store, "V"));
    check.Load(store);
    Require(view.TiltWarnings == package.TiltWarnings);
    Require(view.Save(store, "V"));
    CAncViewSettings again;
    Require(again.Load(store, "V") && (again.XPosition == view.XPosition));
    check.Save(store);
    COSRCViewSettings checkAgain;
    checkAgain.Load(store);
    check = checkAgain;
    check.Save(store);
    checkAgain.Load(store);
    Require(check.MaxValues == checkAgain.MaxValues);
    static_cast<void>(Classify(view.TiltWarnings, 45.0));
    return 0;
}
