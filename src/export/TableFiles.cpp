// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/TableFiles.h"

#include "base/Text.h"
#include "session/FileKind.h"

#include <algorithm>

namespace qor {

namespace {

/// An instrument's name as part of a file name: what is not harmless everywhere becomes "_".
std::string FileNameOf(const std::string& instrument) {
    std::string name = instrument.empty() ? "instrument" : instrument;
    for (char& c : name)
        if (!(c >= '0' && c <= '9') &&
            !(ToLower({&c, 1})[0] >= 'a' && ToLower({&c, 1})[0] <= 'z') && c != '-' && c != '.')
            c = '_';
    return name;
}

bool EndsInSeparator(const std::string& path) {
    return path.ends_with('/') || path.ends_with(PathSeparator());
}

/// Decided: a name with an extension that nothing has yet was meant for a file, unless a separator
/// behind it says otherwise.
bool NamesFolder(const std::string& path) {
    return IsDirectory(path) || (!path.empty() && !FileExists(path) &&
                                 (EndsInSeparator(path) || ExtensionOf(path).empty()));
}

} // namespace

std::string_view FileNameIn(std::string_view path) {
    for (std::size_t i = path.size(); i > 0; --i)
        if (path[i - 1] == '/' || path[i - 1] == PathSeparator())
            return path.substr(i);
    return path;
}

CTableFiles::~CTableFiles() {
    Outputs.clear();
    Descriptions.clear();
    if (MadeFolder)
        static_cast<void>(RemoveEmptyDirectory(Settings.path));
}

OutputResult CTableFiles::Prepare(std::size_t instruments) {
    if (instruments > 1 && !NamesFolder(Settings.path))
        return {OutputState::NeedsFolder, Settings.path};
    // What is in the way of the folder shows when the first table is opened.
    if (instruments > 1 && !IsDirectory(Settings.path))
        MadeFolder = MakeDirectory(Settings.path) == FileCause::None;
    InFolder = instruments > 1 || IsDirectory(Settings.path);
    Several = instruments > 1;
    return {};
}

/// Names that differ only in case or in what a file name cannot hold get a number, so that no table
/// overwrites another.
std::string CTableFiles::PathInFolder(const std::string& instrument) {
    std::string stem = FileNameOf(instrument);
    if (!Settings.stem.empty()) { // what stands behind the last dot is the instrument
        std::replace(stem.begin(), stem.end(), '.', '_');
        stem = Settings.stem + (Several ? "." + stem : "");
    }
    std::string name = stem;
    for (int number = 2; !FileNames.insert(ToLower(name)).second; ++number)
        name = stem + "_" + std::to_string(number);
    const std::string separator(EndsInSeparator(Settings.path) ? 0 : 1, PathSeparator());
    return Settings.path + separator + name + Extension;
}

OutputResult CTableFiles::Open(const std::string& instrument, bool described, TableFile& file) {
    if (const auto known = Outputs.find(instrument); known != Outputs.end()) {
        file = {known->second.get(), false};
        return {};
    }
    auto output = std::make_unique<COutput>(Settings.report);
    const std::string path = InFolder ? PathInFolder(instrument) : Settings.path;
    if (OutputResult result = output->Open(path, Settings.rules); !result.Good())
        return result;
    file = {output.get(), true, path.empty() || IsDevice(path) ? std::string() : path};
    Outputs[instrument] = std::move(output);
    return described && !file.path.empty() ? OpenDescription(file) : OutputResult{};
}

OutputResult CTableFiles::OpenDescription(TableFile& file) {
    Descriptions.push_back(std::make_unique<COutput>(Settings.report));
    file.description = Descriptions.back().get();
    return file.description->Open(file.path + ".json", Settings.rules);
}

std::vector<COutput*> CTableFiles::All() const {
    std::vector<COutput*> all;
    for (const auto& [name, output] : Outputs)
        all.push_back(output.get());
    for (const auto& output : Descriptions)
        all.push_back(output.get());
    return all;
}

bool CTableFiles::Good() const {
    return std::ranges::all_of(All(), &COutput::Good);
}

void CTableFiles::Flush() {
    for (COutput* output : All())
        output->Flush();
}

/// Tables that one of them has cut short are all incomplete.
OutputResult CTableFiles::Finish() {
    const std::vector<COutput*> all = All();
    for (COutput* output : all)
        if (!output->Flush() && output->Failed())
            return output->Finish();
    for (COutput* output : all)
        if (OutputResult result = output->Finish(); !result.Good())
            return result;
    return {};
}

} // namespace qor
