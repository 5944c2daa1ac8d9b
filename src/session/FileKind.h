// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a file is to the program: the one place that says so, for adding, opening, dropping and for
// the command line. No state.
#pragma once

#include "base/Bytes.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace qor {

enum class FileKind : std::uint8_t { Package, Definition, Session, RawLog, Other };

/// The text behind the last dot of the last part of a path, lowered; empty when there is none.
std::string ExtensionOf(std::string_view path);

/// The last part of a path: the file's own name.
std::string_view LastPartOf(std::string_view path);
/// What stands before it, with its separator; empty for a name alone.
std::string FolderPartOf(std::string_view path);

/// The last part of a path without its extension.
std::string StemOf(std::string_view path);

/// By the extension alone: "sip"; "cal", "tdf"; "qor"; "raw" (also compressed: "raw.gz",
/// "raw.zst").
FileKind KindByName(std::string_view path);

/// By how the content begins; Definition when a line of it is an instrument's header line.
FileKind KindByContent(ByteSpan begin);

/// By the name or, when that tells nothing, by the content. Other when the file cannot be read.
FileKind KindOfFile(const std::string& path);

/// Whether a file may be a definition or a package, by its name: one without an extension
/// is taken for a definition, as it always was.
bool MayBeInstrumentFile(std::string_view path);

/// What the operator reads when a file is neither a package nor a definition.
std::string NotInstrumentFile(const std::string& path);

} // namespace qor
