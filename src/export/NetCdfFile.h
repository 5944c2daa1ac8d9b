// SPDX-License-Identifier: GPL-3.0-or-later
//
// A netCDF-4 file that is being written, by libnetcdf: the one room that knows its interface. A
// program that is built without the library has the same class, which can do nothing. The first
// fault stays; after it every call does nothing. One thread at a time; files of several threads
// wait for each other (LibraryLock, a leaf), for the library keeps no lock.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace qor {

enum class NetCdfType : std::uint8_t { Byte, Char, Int, Double, String };

/// A part of a variable: where it begins and how much of each dimension.
struct NetCdfRange {
    std::vector<std::size_t> start, count;
};

class CNetCdfFile {
  public:
    static constexpr int Global = -1; ///< the variable whose attributes are the file's
    static constexpr std::size_t Unlimited = 0;

    /// Whether this program has the library.
    static bool IsThere();

    CNetCdfFile() = default;
    CNetCdfFile(const CNetCdfFile&) = delete;
    CNetCdfFile& operator=(const CNetCdfFile&) = delete;
    /// A file that Close has not ended is left as it is.
    ~CNetCdfFile();

    /// Makes the file; what has the name is replaced.
    void Create(const std::string& path);
    int AddDimension(const std::string& name, std::size_t size);
    /// `chunks`: what is stored and compressed together; empty for a variable that is not over
    /// time. `shuffle`: byte by byte, which is for numbers that grow steadily.
    int AddVariable(const std::string& name, NetCdfType type, std::span<const int> dimensions,
                    std::span<const std::size_t> chunks, bool shuffle = false);
    /// Numbers that are missing are NaN from now on.
    void FillWithNaN(int variable);
    void SetText(int variable, const char* name, const std::string& text);
    void SetNumber(int variable, const char* name, double value);
    void SetBytes(int variable, const char* name, std::span<const signed char> values);

    void Write(int variable, const NetCdfRange& range, const double* values);
    void Write(int variable, const NetCdfRange& range, const int* values);
    void Write(int variable, const NetCdfRange& range, const signed char* values);
    void Write(int variable, const NetCdfRange& range, const char* values);
    void Write(int variable, const NetCdfRange& range, const std::vector<std::string>& values);

    /// Ends the file.
    void Close();

    bool Good() const { return Fault.empty(); }
    /// What went wrong, for the operator; empty while nothing did.
    const std::string& FaultText() const { return Fault; }

  private:
    bool Check(int result);

    [[maybe_unused]] int Handle = -1; ///< not without the library
    std::string Fault;
};

} // namespace qor
