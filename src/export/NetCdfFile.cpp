// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/NetCdfFile.h"

#include "platform/FileErrorText.h"

#ifdef QORVIEW_NETCDF
#include "base/Lock.h"
#include "export/NetCdfLibrary.h"

#include <cerrno>
#include <limits>
#include <memory>
#endif

namespace qor {

#ifdef QORVIEW_NETCDF

namespace {

const auto LibraryLock = std::make_unique<CMutex>(); ///< held in every call of the library

constexpr int Compression = 1; ///< more costs much time and saves little of measured values
/// Attributes beyond this do not fit the file's object headers; a text is stored beside them then.
constexpr std::size_t LongestPlainText = 16 * 1024;

const NetCdfLibrary& Library() {
    return TheNetCdfLibrary();
}

constexpr nc_type TypeOf(NetCdfType type) {
    switch (type) {
    case NetCdfType::Byte:
        return NC_BYTE;
    case NetCdfType::Char:
        return NC_CHAR;
    case NetCdfType::Int:
        return NC_INT;
    case NetCdfType::Double:
        return NC_DOUBLE;
    case NetCdfType::String:
        return NC_STRING;
    }
    return NC_NAT;
}

constexpr std::size_t SizeOf(NetCdfType type) {
    switch (type) {
    case NetCdfType::Byte:
    case NetCdfType::Char:
        return 1;
    case NetCdfType::Int:
        return sizeof(int);
    case NetCdfType::Double:
    case NetCdfType::String:
        return sizeof(double);
    }
    return 1;
}

} // namespace

bool CNetCdfFile::IsThere() {
    return true;
}

CNetCdfFile::~CNetCdfFile() {
    const CLock lock(*LibraryLock);
    if (Handle >= 0)
        Library().nc_close(Handle);
}

/// The library says of every fault of the disk the same; what the system said last says more.
bool CNetCdfFile::Check(int result) {
    if (result == NC_NOERR)
        return true;
    if (!Fault.empty())
        return false;
    Fault = errno == ENOSPC ? std::string(GetFileErrorText(FileCause::DiskFull))
            : errno == EFBIG
                ? "The file is larger than the system allows."
                : "libnetcdf says: " + std::string(Library().nc_strerror(result)) + ".";
    return false;
}

void CNetCdfFile::Create(const std::string& path) {
    const CLock lock(*LibraryLock);
    if (Fault = Library().fault; !Good())
        return;
    errno = 0;
    int handle = -1;
    if (Check(Library().nc_create(path.c_str(), NC_NETCDF4 | NC_CLOBBER, &handle)))
        Handle = handle;
}

int CNetCdfFile::AddDimension(const std::string& name, std::size_t size) {
    const CLock lock(*LibraryLock);
    static_assert(Unlimited == NC_UNLIMITED);
    int dimension = -1;
    if (Good())
        Check(Library().nc_def_dim(Handle, name.c_str(), size, &dimension));
    return dimension;
}

/// Blocks that are written are whole chunks, so there is nothing to keep in memory for a variable:
/// of an instrument with a thousand of them that would be more than a computer has.
int CNetCdfFile::AddVariable(const std::string& name, NetCdfType type,
                             std::span<const int> dimensions, std::span<const std::size_t> chunks,
                             bool shuffle) {
    const CLock lock(*LibraryLock);
    int variable = -1;
    if (!Good() || !Check(Library().nc_def_var(Handle, name.c_str(), TypeOf(type),
                                               static_cast<int>(dimensions.size()),
                                               dimensions.data(), &variable)))
        return -1;
    if (chunks.empty())
        return variable;
    std::size_t bytes = SizeOf(type);
    for (std::size_t chunk : chunks)
        bytes *= chunk;
    Check(Library().nc_def_var_chunking(Handle, variable, NC_CHUNKED, chunks.data()));
    Check(Library().nc_set_var_chunk_cache(Handle, variable, bytes, 11, 1.0F));
    if (type != NetCdfType::String)
        Check(Library().nc_def_var_deflate(Handle, variable, shuffle ? NC_SHUFFLE : NC_NOSHUFFLE, 1,
                                           Compression));
    return variable;
}

void CNetCdfFile::FillWithNaN(int variable) {
    const CLock lock(*LibraryLock);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    if (Good())
        Check(Library().nc_def_var_fill(Handle, variable, NC_FILL, &nan));
}

void CNetCdfFile::SetText(int variable, const char* name, const std::string& text) {
    const CLock lock(*LibraryLock);
    if (!Good())
        return;
    const char* start = text.c_str();
    Check(text.size() > LongestPlainText
              ? Library().nc_put_att_string(Handle, variable, name, 1, &start)
              : Library().nc_put_att_text(Handle, variable, name, text.size(), start));
}

void CNetCdfFile::SetNumber(int variable, const char* name, double value) {
    const CLock lock(*LibraryLock);
    if (Good())
        Check(Library().nc_put_att_double(Handle, variable, name, NC_DOUBLE, 1, &value));
}

void CNetCdfFile::SetBytes(int variable, const char* name, std::span<const signed char> values) {
    const CLock lock(*LibraryLock);
    if (Good())
        Check(Library().nc_put_att_schar(Handle, variable, name, NC_BYTE, values.size(),
                                         values.data()));
}

void CNetCdfFile::Write(int variable, const NetCdfRange& range, const double* values) {
    const CLock lock(*LibraryLock);
    errno = 0;
    if (Good())
        Check(Library().nc_put_vara_double(Handle, variable, range.start.data(), range.count.data(),
                                           values));
}

void CNetCdfFile::Write(int variable, const NetCdfRange& range, const int* values) {
    const CLock lock(*LibraryLock);
    errno = 0;
    if (Good())
        Check(Library().nc_put_vara_int(Handle, variable, range.start.data(), range.count.data(),
                                        values));
}

void CNetCdfFile::Write(int variable, const NetCdfRange& range, const signed char* values) {
    const CLock lock(*LibraryLock);
    errno = 0;
    if (Good())
        Check(Library().nc_put_vara_schar(Handle, variable, range.start.data(), range.count.data(),
                                          values));
}

void CNetCdfFile::Write(int variable, const NetCdfRange& range, const char* values) {
    const CLock lock(*LibraryLock);
    errno = 0;
    if (Good())
        Check(Library().nc_put_vara_text(Handle, variable, range.start.data(), range.count.data(),
                                         values));
}

void CNetCdfFile::Write(int variable, const NetCdfRange& range,
                        const std::vector<std::string>& values) {
    const CLock lock(*LibraryLock);
    std::vector<const char*> starts;
    starts.reserve(values.size());
    for (const std::string& value : values)
        starts.push_back(value.c_str());
    errno = 0;
    if (Good())
        Check(Library().nc_put_vara_string(Handle, variable, range.start.data(), range.count.data(),
                                           starts.data()));
}

void CNetCdfFile::Close() {
    const CLock lock(*LibraryLock);
    if (Handle < 0)
        return;
    errno = 0;
    Check(Library().nc_close(Handle));
    Handle = -1;
}

#else

bool CNetCdfFile::IsThere() {
    return false;
}
CNetCdfFile::~CNetCdfFile() = default;
bool CNetCdfFile::Check(int) {
    return Good();
}
void CNetCdfFile::Create(const std::string&) {
    Fault = "This program was built without libnetcdf.";
}
int CNetCdfFile::AddDimension(const std::string&, std::size_t) {
    return -1;
}
int CNetCdfFile::AddVariable(const std::string&, NetCdfType, std::span<const int>,
                             std::span<const std::size_t>, bool) {
    return -1;
}
void CNetCdfFile::FillWithNaN(int) {}
void CNetCdfFile::SetText(int, const char*, const std::string&) {}
void CNetCdfFile::SetNumber(int, const char*, double) {}
void CNetCdfFile::SetBytes(int, const char*, std::span<const signed char>) {}
void CNetCdfFile::Write(int, const NetCdfRange&, const double*) {}
void CNetCdfFile::Write(int, const NetCdfRange&, const int*) {}
void CNetCdfFile::Write(int, const NetCdfRange&, const signed char*) {}
void CNetCdfFile::Write(int, const NetCdfRange&, const char*) {}
void CNetCdfFile::Write(int, const NetCdfRange&, const std::vector<std::string>&) {}
void CNetCdfFile::Close() {}

#endif

} // namespace qor
