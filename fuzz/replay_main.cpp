// SPDX-License-Identifier: GPL-3.0-or-later
//
// Replays files and folders of files through a fuzz door, so that every door is also a plain test
// and a crash found elsewhere can be looked at without a fuzzer.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

int Replay(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open())
        return 0;
    std::printf("%s\n", path.string().c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return 1;
}

} // namespace

int main(int count, char** arguments) {
    int replayed = 0;
    for (int i = 1; i < count; ++i) {
        std::error_code error;
        if (!std::filesystem::is_directory(arguments[i], error))
            replayed += Replay(arguments[i]);
        else
            for (const auto& entry : std::filesystem::directory_iterator(arguments[i], error))
                replayed += Replay(entry.path());
    }
    std::printf("%d inputs replayed\n", replayed);
    return replayed > 0 ? 0 : 1;
}
