// SPDX-License-Identifier: GPL-3.0-or-later
//
// libnetcdf, loaded when the first file is written: with the some thirty libraries that it brings
// along it would cost every start of a program several milliseconds. Only for
// export/NetCdfFile.cpp.
#pragma once

#include <netcdf.h>

#include <string>

namespace qor {

/// The functions of the library that are used, by their own names.
struct NetCdfLibrary {
#define QORVIEW_NETCDF_FUNCTIONS(ONE)                                                              \
    ONE(nc_close)                                                                                  \
    ONE(nc_create)                                                                                 \
    ONE(nc_def_dim)                                                                                \
    ONE(nc_def_var)                                                                                \
    ONE(nc_def_var_chunking)                                                                       \
    ONE(nc_def_var_deflate)                                                                        \
    ONE(nc_def_var_fill)                                                                           \
    ONE(nc_put_att_double)                                                                         \
    ONE(nc_put_att_schar)                                                                          \
    ONE(nc_put_att_string)                                                                         \
    ONE(nc_put_att_text)                                                                           \
    ONE(nc_put_vara_double)                                                                        \
    ONE(nc_put_vara_int)                                                                           \
    ONE(nc_put_vara_schar)                                                                         \
    ONE(nc_put_vara_string)                                                                        \
    ONE(nc_put_vara_text)                                                                          \
    ONE(nc_set_var_chunk_cache)                                                                    \
    ONE(nc_strerror)
#define QORVIEW_NETCDF_MEMBER(name) decltype(&::name) name = nullptr;
    QORVIEW_NETCDF_FUNCTIONS(QORVIEW_NETCDF_MEMBER)
#undef QORVIEW_NETCDF_MEMBER

    std::string fault; ///< why the library could not be had; the functions are null then
};

/// Loads the library at the first call; any thread.
const NetCdfLibrary& TheNetCdfLibrary();

} // namespace qor
