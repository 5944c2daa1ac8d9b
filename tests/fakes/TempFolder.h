// SPDX-License-Identifier: GPL-3.0-or-later
//
// A folder of the test's own for its files, gone with the object. One thread.
#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace qor {

class CTempFolder {
  public:
    CTempFolder() {
        std::filesystem::create_directories(Native);
        const std::u8string text = (Native / "").u8string();
        Path.assign(text.begin(), text.end());
    }
    ~CTempFolder() {
        using namespace std::filesystem;
        std::error_code ignored;
        // Stepped by hand: the loop's own step would throw where a path is too long for Windows.
        for (recursive_directory_iterator at(Native, ignored), end; at != end;
             at.increment(ignored))
            permissions(at->path(), perms::owner_write, perm_options::add, ignored);
        remove_all(Native, ignored);
    }
    CTempFolder(const CTempFolder&) = delete;
    CTempFolder& operator=(const CTempFolder&) = delete;

    /// Writes a file of the folder; returns its path.
    std::string Put(const std::string& name, const std::string& content) const {
        std::ofstream(Native / name, std::ios::binary) << content;
        return Path + name;
    }
    std::string Content(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(Native / name, std::ios::binary).rdbuf();
        return text.str();
    }

    std::string Path; ///< in UTF-8, with the separator at its end

  private:
    static std::filesystem::path Unique() {
        static const auto run = std::chrono::system_clock::now().time_since_epoch().count();
        static int made = 0;
        return std::filesystem::temp_directory_path() /
               ("qortest-" + std::to_string(run) + "-" + std::to_string(made++));
    }

    const std::filesystem::path Native = Unique();
};

} // namespace qor
