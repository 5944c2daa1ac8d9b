// SPDX-License-Identifier: GPL-3.0-or-later
#ifdef QORVIEW_NETCDF
#include "export/NetCdfLibrary.h"

#include <dlfcn.h>

namespace qor {

namespace {

template <class Function> bool Find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

bool FindAll(void* library, NetCdfLibrary& found) {
    bool all = true;
#define QORVIEW_NETCDF_FIND(name) all = Find(library, #name, found.name) && all;
    QORVIEW_NETCDF_FUNCTIONS(QORVIEW_NETCDF_FIND)
#undef QORVIEW_NETCDF_FIND
    // HDF5 keeps a file that it could not write to its end, and would try again when the program
    // ends, upon memory that is gone: it may not. Files that are well are closed by then.
    int (*leaveAlone)() = nullptr;
    if (Find(library, "H5dont_atexit", leaveAlone)) // before anything else of it
        leaveAlone();
    return all;
}

NetCdfLibrary Load() {
    NetCdfLibrary found;
    void* library =
        dlopen(QORVIEW_NETCDF, RTLD_NOW | RTLD_LOCAL); // for as long as the program runs
    if (!library || !FindAll(library, found)) {
        const char* reason = dlerror();
        found.fault = "libnetcdf, which writes netCDF, could not be loaded: " +
                      std::string(reason ? reason : QORVIEW_NETCDF) + '.';
    }
    return found;
}

} // namespace

const NetCdfLibrary& TheNetCdfLibrary() {
    static const NetCdfLibrary library = Load();
    return library;
}

} // namespace qor
#endif
