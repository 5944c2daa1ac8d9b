// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Registration.h"

#include "platform/FileErrorText.h"
#include "platform/FileTypes.h"

namespace qor {

#if defined(_WIN32)

namespace {

constexpr FileType Types[] = {
    {".qor", "QorView.Session", "QorView session", true},
    {".sip", "QorView.Package", "Instrument package", true},
    {".tdf", "QorView.Definition", "Instrument definition", true},
    {".cal", "QorView.Definition", "Instrument definition", false},
    {".raw", "QorView.RawLog", "Raw log of telemetry", false},
};

} // namespace

RegistrationOutcome RegisterProgram(bool on) {
    const FileCause cause = on ? RegisterFileTypes(Types) : UnregisterFileTypes(Types);
    if (cause != FileCause::None)
        return {false, "The file types could not be changed in the registry: " +
                           std::string(GetFileErrorText(cause))};
    if (!on)
        return {true, "Files are not opened with this program any more."};
    return {true, "Sessions (.qor), packages (.sip) and definitions (.tdf) are opened with this "
                  "program, unless another one had them; raw logs (.raw) and .cal files offer it."};
}

#else

RegistrationOutcome RegisterProgram(bool) {
    return {false, "Here the installation registers file types: cmake --install build/release."};
}

#endif

} // namespace qor
