// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a form or a drop shows of a file before it is added. Reads the file as adding does, tells
// nobody and keeps nothing. Any thread, no lock.
#pragma once

#include "session/FileKind.h"

#include <string>
#include <vector>

namespace qor {

struct FileDescription {
    FileKind kind = FileKind::Other;
    std::string title; ///< name of the package or instrument; the file's where there is none
    std::vector<std::string> instruments; ///< names, in their order; the file's for one without
    std::string baudRate; ///< a package's with instruments, as its properties have it
    /// What adding it would tell the operator, then the parse logs of definitions that were
    /// repaired or, of a single one, did not load.
    std::vector<std::string> faults;
};

/// Takes as long as adding the file.
FileDescription DescribeFile(const std::string& path);

} // namespace qor
