// SPDX-License-Identifier: GPL-3.0-or-later
//
// The door of session files and of manifests: any bytes. They are refused with one line or taken;
// what was taken is written, and written the same again after it was read again.
#include "Require.h"

#include "session/LogManifest.h"
#include "session/SessionFile.h"

using namespace qor;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = "/nowhere/cast.qor";
    const ManifestReading manifest =
        ReadManifest({reinterpret_cast<const char*>(data), size}, "/nowhere/");
    Require(manifest.fault.find('\n') == std::string::npos);
    if (manifest.fault.empty()) {
        const std::string text = ManifestText(manifest.manifest, "/nowhere/");
        Require(ReadManifest(text, "/nowhere/").fault.empty());
    }
    const SessionReading reading = ReadSession({reinterpret_cast<const char*>(data), size}, path);
    Require(reading.session.has_value() == reading.refusal.empty());
    Require(reading.refusal.find('\n') == std::string::npos);
    if (!reading.session)
        return 0;
    const SessionWriting first = WriteSession(*reading.session, path);
    // An absolute path can be longer than what the file said.
    Require(first.refusal.empty() || first.refusal.find("at most") != std::string::npos);
    if (!first.refusal.empty())
        return 0;
    const SessionReading again = ReadSession(first.bytes, path);
    Require(again.session.has_value() && again.warnings == reading.warnings);
    Require(WriteSession(*again.session, path).bytes == first.bytes);
    return 0;
}
