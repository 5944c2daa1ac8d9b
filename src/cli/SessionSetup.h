// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the commands that work with instruments share: the options that name definitions, packages,
// roles and immersion, and how a document is set up from them. Also the operator's seat of the
// command line: messages go to standard error, nothing is ever asked.
#pragma once

#include "session/PackageList.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace qor {

/// Shows messages as one-line errors, answers no question, and hears a request to close.
class CTerminalUser : public CUserService {
  public:
    void ShowMessage(const std::string& text) override;
    bool AskYesNo(const std::string& text) override;
    void Beep(BeepKind kind) override;
    bool ConfirmLog(const std::string& displayName) override;
    void RequestClose() override { CloseRequested.Set(); }

    CEvent CloseRequested;
    bool Quiet = false; ///< messages are not shown, only kept
    std::vector<std::string> Messages;
};

/// What main makes of a --wet without a name.
inline constexpr const char* EveryInstrument = "*";

/// The instruments of a call and what is said of them.
struct InstrumentOptions {
    std::vector<std::string> definitions; ///< -d
    std::vector<std::string> packages;    ///< -p
    std::vector<std::string> wet;         ///< --wet[=NAME], or EveryInstrument
    std::vector<std::string> roles;       ///< --role NAME=ROLE
    PackageSettings packageSettings;      ///< of every package
};

/// Adds -d, -p, --wet and --role to a command.
void AddInstrumentOptions(CLI::App& command, InstrumentOptions& options);

/// Adds the settings of packages that derived products need.
void AddPackageOptions(CLI::App& command, PackageSettings& settings);

/// What a --role says.
struct RoleAssignment {
    std::string name; ///< of the instrument
    InstrumentRole role;
};
/// Reads NAME=ROLE; empty when it is none.
std::optional<RoleAssignment> ParseRole(std::string_view text);
/// The same for the parser of the call: what is wrong with the text, or nothing.
std::string CheckRole(const std::string& text);

/// Adds definition files, or a package that has been read, to a resource of the document. Every
/// fault is reported as an error; false when there was one.
bool AddDefinitions(CQorViewDoc& doc, int resource, const std::vector<std::string>& paths);
bool AddPackage(CPackageList& packages, int resource, LoadedPackage loaded,
                const PackageSettings& settings);

/// Applies immersion and roles over all resources.
bool ApplyWetAndRoles(CQorViewDoc& doc, const InstrumentOptions& options);

/// A message of several lines as one line.
std::string OneLine(std::string_view message);

/// Opens a file only to learn why it cannot be read; reports that and returns false.
bool IsReadable(const std::string& path);

} // namespace qor
