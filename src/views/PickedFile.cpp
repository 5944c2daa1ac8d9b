// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/PickedFile.h"

#include "base/Text.h"
#include "session/FileDescription.h"
#include "session/FileKind.h"
#include "session/SessionFields.h"
#include "views/FormNumbers.h"
#include "views/SourceForms.h"

namespace qor {

namespace {

/// What is wrong with the file by itself, whatever it is to stand on.
std::string FaultOf(const std::string& path) {
    InstrumentForm form;
    form.path = path;
    return CheckForm(form).Of("path");
}

} // namespace

PickedFile PickFile(const std::string& path) {
    PickedFile picked;
    picked.path = path;
    picked.name = std::string(LastPartOf(path));
    picked.text = picked.name;
    picked.fault = FaultOf(path);
    if (!picked.fault.empty())
        return picked;
    const FileDescription description = DescribeFile(path);
    const std::string first = description.faults.empty() ? "" : OneLine(description.faults.front());
    if (description.instruments.empty())
        picked.fault = first.empty() ? "There is no instrument in it." : first;
    else
        picked.note = first;
    std::string names;
    for (const std::string& name : description.instruments)
        names += (names.empty() ? "" : ", ") + Utf8Of(name);
    if (!names.empty())
        picked.text += ": " + names;
    const std::string speed(Trim(description.baudRate));
    if (description.kind == FileKind::Package &&
        NumberFault(speed, BaudRange.least, BaudRange.greatest, true).empty())
        picked.speed = speed;
    return picked;
}

} // namespace qor
