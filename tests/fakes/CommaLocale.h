// SPDX-License-Identifier: GPL-3.0-or-later
//
// The process under a locale with a decimal comma, as a desktop starts it in much of the world, for
// the object's lifetime. Takes what the system has, or has one compiled into a folder of its own.
#pragma once

#include "fakes/TempFolder.h"

#include <clocale>
#include <cstdlib>
#include <string>

namespace qor {

class CCommaLocale {
  public:
    CCommaLocale() {
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "German_Germany.1252"})
            if (Set(name))
                return;
#ifndef _WIN32
        const std::string make =
            "localedef -i de_DE -f ISO-8859-1 '" + Folder.Path + "de_DE' >/dev/null 2>&1";
        setenv("LOCPATH", Folder.Path.c_str(), 1);
        if (std::system(make.c_str()) == 0)
            Set("de_DE");
#endif
    }
    ~CCommaLocale() {
        std::setlocale(LC_ALL, "C");
#ifndef _WIN32
        unsetenv("LOCPATH");
#endif
    }
    CCommaLocale(const CCommaLocale&) = delete;
    CCommaLocale& operator=(const CCommaLocale&) = delete;

    /// False where no such locale can be had.
    bool Active() const {
        return std::localeconv()->decimal_point[0] == ',';
    }

  private:
    static bool Set(const char* name) {
        return std::setlocale(LC_ALL, name) != nullptr;
    }

    CTempFolder Folder;
};

} // namespace qor
