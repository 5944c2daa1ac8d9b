// SPDX-License-Identifier: GPL-3.0-or-later
//
// The bytes of a file that may be compressed: read in small pieces and from the middle they are
// what they are when read at once, and they end the same way.
#include "Require.h"

#include "platform/InputFile.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>

namespace {

using namespace qor;

constexpr std::size_t MostBytes = 4U << 20; // what unpacks to more is read so far

std::string MakePlace() {
    const auto name = "qorview-unpack-" + std::to_string(std::random_device()());
    return (std::filesystem::temp_directory_path() / name).string();
}

struct Content {
    std::vector<std::uint8_t> bytes;
    FileCause end = FileCause::None;

    bool operator==(const Content&) const = default;
};

Content ReadFrom(const std::string& path, std::uint64_t from, std::size_t piece, std::size_t most) {
    Content content;
    CInputFile file;
    Require(file.OpenForReading(path) == FileCause::None);
    if (from > 0)
        content.end = file.SeekTo(from);
    std::vector<std::uint8_t> room(piece);
    for (std::size_t got = 1; content.end == FileCause::None && got > 0;) {
        const std::size_t left = most - content.bytes.size();
        if (left == 0)
            break;
        content.end = file.Read(std::span(room).first(std::min(piece, left)), got);
        content.bytes.insert(content.bytes.end(), room.begin(),
                             room.begin() + static_cast<std::ptrdiff_t>(got));
    }
    return content;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path = MakePlace();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    const Content whole = ReadFrom(path, 0, MostBytes, MostBytes);
    const std::size_t few = std::min<std::size_t>(whole.bytes.size(), 20'000);
    const Content start = ReadFrom(path, 0, 7, few);
    Require(std::equal(start.bytes.begin(), start.bytes.end(), whole.bytes.begin()));
    Require(start.bytes.size() == few);
    const std::size_t middle = whole.bytes.size() / 2;
    const Content rest = ReadFrom(path, middle, MostBytes, MostBytes - middle);
    Require(rest.end == whole.end);
    Require(std::equal(rest.bytes.begin(), rest.bytes.end(),
                       whole.bytes.begin() + static_cast<std::ptrdiff_t>(middle),
                       whole.bytes.end()));
    std::filesystem::remove(path);
    return 0;
}
