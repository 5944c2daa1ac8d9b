// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/DefinitionText.h"

#include "platform/Console.h"

namespace qor {

void WriteParseLog(COutput& output, std::string_view log) {
    for (std::size_t start = 0; start < log.size();) {
        std::size_t end = log.find("\r\n", start);
        output.Text(log.substr(start, end - start));
        if (end == std::string_view::npos)
            return;
        output.Text(NativeLineEnd());
        start = end + 2;
    }
}

void WritePackageText(COutput& output, const LoadedPackage& package) {
    WriteParseLog(output, "Instrument Package File: \"" + package.path + "\"\r\n\tName: " +
                              package.name + "\r\n\tBaud rate: " + package.baudRate + "\r\n");
    for (const std::string& message : package.messages) {
        WriteParseLog(output, message);
        output.Text(NativeLineEnd());
    }
    for (const PackageMember& member : package.members)
        WriteParseLog(output, "\r\n" + member.name + "\r\n" + member.instrument->ParseLog());
    for (const FailedMember& member : package.failed)
        if (member.instrument)
            WriteParseLog(output, "\r\n" + member.name + "\r\n" + member.instrument->ParseLog());
}

} // namespace qor
