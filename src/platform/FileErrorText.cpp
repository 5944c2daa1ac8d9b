// SPDX-License-Identifier: GPL-3.0-or-later
//
// The texts for causes of file errors. Log writers, the definition reader and the communications
// resources print them; each has its own table because the wordings differ and all are fixed.
#include "platform/FileErrorText.h"

#include <array>

namespace qor {

namespace {

/// Fifteen texts in the order of FileCause, and the one for every other cause.
struct CauseTexts {
    std::array<std::string_view, 15> texts;
    std::string_view unknown;

    constexpr std::string_view Of(FileCause cause) const {
        const auto number = static_cast<std::uint32_t>(cause);
        return number < texts.size() ? texts[number] : unknown;
    }
};

// Kept: "occured" and "orrured" are spelled so; operators search logs for these very texts.
constexpr CauseTexts LogTexts = {
    {
        "No error occurred.",
        "An unspecified error occurred.",
        "The file could not be found.",
        "All or part of the path is invalid.",
        "The permitted number of open files was exceeded.",
        "The file could not be accessed.",
        "There was an attempt to use an invalid file handle.",
        "The current working directory cannot be removed.",
        "There are no more directory entries.",
        "There was an error trying to set the file pointer.",
        "There was a hardware error.",
        "A sharing violation occured, or a shared region was locked.",
        "There was an attempt to lock a region that was already locked.",
        "The disk is full.",
        "The end of file was reached.",
    },
    "An unknown file error orrured.",
};

constexpr CauseTexts DefinitionTexts = {
    {
        "No error occurred.\r\n",
        "An unspecified error occurred.\r\n",
        "The file could not be found.\r\n",
        "All or part of the path is invalid.\r\n",
        "The permitted number of open files was exceeded.\r\n",
        "The file could not be accessed.\r\n",
        "There was an attempt to use an invalid file handle.\r\n",
        "The current working directory cannot be removed.\r\n",
        "There are no more directory entries.\r\n",
        "There was an error trying to set the file pointer.\r\n",
        "There was a hardware error.\r\n",
        "SHARE.EXE was not loaded, or a shared region was locked.\r\n",
        "There was an attempt to lock a region that was already locked.\r\n",
        "The disk is full.\r\n",
        "The end of file was reached.\r\n",
    },
    "An unknown file error orrured.\r\n",
};

} // namespace

std::string_view GetFileErrorText(FileCause cause) {
    return LogTexts.Of(cause);
}

std::string_view DefinitionFileErrorText(FileCause cause) {
    return DefinitionTexts.Of(cause);
}

std::string_view ResourceFileErrorText(FileCause cause) {
    // The resources' table differs from the definitions' in the spelling of its last text only.
    const std::string_view text = DefinitionTexts.Of(cause);
    return text == DefinitionTexts.unknown ? "An unknown file error occured.\r\n" : text;
}

} // namespace qor
