// SPDX-License-Identifier: GPL-3.0-or-later
//
// The files of an export that makes a table an instrument: one on standard output or in the named
// file, or one file an instrument in the named folder, under names that are safe and distinct.
#pragma once

#include "export/FrameSink.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace qor {

/// A table's output, and whether its header is still to be written.
struct TableFile {
    COutput* output = nullptr; ///< of the CTableFiles
    bool isNew = false;
    std::string path = {};          ///< empty: standard output, or a device
    COutput* description = nullptr; ///< a file beside it, where one was asked for and can be
};

/// The last part of a path, which separators of any system end.
std::string_view FileNameIn(std::string_view path);

class CTableFiles {
  public:
    /// The extension has its dot.
    CTableFiles(const ExportSettings& settings, std::string extension)
        : Settings(settings), Extension(std::move(extension)) {}

    CTableFiles(const CTableFiles&) = delete;
    CTableFiles& operator=(const CTableFiles&) = delete;
    /// A folder that it has made and that holds nothing is gone.
    ~CTableFiles();

    /// Before the tables of a log with so many instruments: makes the folder.
    OutputResult Prepare(std::size_t instruments);
    /// The table of the instrument's name; the one of an earlier log goes on.
    /// `described`: with a file beside a table that is a file, its name with ".json" behind it.
    OutputResult Open(const std::string& instrument, bool described, TableFile& file);
    bool Good() const;
    void Flush();
    OutputResult Finish();

  private:
    OutputResult OpenDescription(TableFile& file);
    std::vector<COutput*> All() const;
    std::string PathInFolder(const std::string& instrument);

    const ExportSettings Settings;
    const std::string Extension;
    bool InFolder = false, Several = false;
    bool MadeFolder = false;
    std::map<std::string, std::unique_ptr<COutput>> Outputs; ///< by instrument name
    std::vector<std::unique_ptr<COutput>> Descriptions;
    std::set<std::string> FileNames; ///< taken, in lower case
};

} // namespace qor
