// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/SessionText.h"

#include "export/Json.h"
#include "session/PortText.h"

namespace qor {
namespace {

std::vector<std::string> RolesOf(const CQorViewDoc& doc, InstrumentId instrument) {
    std::vector<std::string> roles;
    for (const RoleRow& row : RoleTable)
        if (doc.Role(row.role) == instrument)
            roles.emplace_back(row.name);
    return roles;
}

void WriteInstrument(CJsonWriter& json, const CQorViewDoc& doc, const CQorViewIns& instrument)
    REQUIRES(doc.DocLock) {
    const CPackage* package = doc.OwnerOf(instrument.Id)->package;
    json.BeginObject();
    json.Key("name"), json.Text(instrument.ShownName());
    json.Key("definition"), json.Path(instrument.Definition().FilePath());
    json.Key("package");
    if (package)
        json.Path(package->Name);
    else
        json.Null();
    json.Key("roles"), json.BeginArray();
    for (const std::string& role : RolesOf(doc, instrument.Id))
        json.Text(role);
    json.EndArray();
    json.Key("immersed"), json.Bool(instrument.Live.Immersed);
    json.Key("acquire"), json.Bool(instrument.AcquisitionEnabled);
    json.Key("log"), json.Bool(instrument.LoggingEnabled);
    json.EndObject();
}

void WriteResource(CJsonWriter& json, const CQorViewDoc& doc, const CQorViewRes& resource)
    REQUIRES(doc.DocLock) {
    json.BeginObject();
    json.Key(resource.IsFile() ? "file" : "port"), json.Path(resource.Name());
    if (!resource.IsFile()) {
        const SerialResourceSettings& line = resource.Serial;
        json.Key("baud"), json.Integer(line.baudRate);
        json.Key("format"), json.Text(LineFormatText({line.dataBits, line.parity, line.stopBits}));
        json.Key("reconnect"), json.Bool(resource.Reconnect);
    }
    json.Key("instruments"), json.BeginArray();
    for (const auto& instrument : resource.Instruments)
        WriteInstrument(json, doc, *instrument);
    json.EndArray();
    json.EndObject();
}

} // namespace

void WriteSessionJson(COutput& output, const CCheckedSession& session) {
    CJsonWriter json(output);
    json.BeginObject();
    json.Key("file"), json.Path(session.Path);
    json.Key("ok"), json.Bool(session.Ok());
    json.Key("kind"), json.Text("Session File");
    json.Key("title"), json.Path(session.Doc.Session.Title());
    json.Key("messages"), json.BeginArray();
    for (const std::string& message : session.Messages())
        json.Path(message);
    json.EndArray();
    json.Key("resources"), json.BeginArray();
    const CQorViewDoc& doc = session.Doc;
    CRecursiveLock lock(doc.DocLock);
    for (const auto& resource : doc.Resources)
        WriteResource(json, doc, *resource);
    json.EndArray();
    json.EndObject();
    json.EndLine();
}

void WriteSessionText(COutput& output, const CCheckedSession& session) {
    if (!session.Opened())
        return;
    const CQorViewDoc& doc = session.Doc;
    output.Text("Session File " + session.Path + "\n");
    if (!doc.Session.Title().empty())
        output.Text("Title: " + doc.Session.Title() + "\n");
    CRecursiveLock lock(doc.DocLock);
    for (const auto& resource : doc.Resources) {
        output.Text(resource->Name() +
                    (resource->IsFile() ? "" : " " + LineTextOf(resource->Serial)) + "\n");
        for (const auto& instrument : resource->Instruments) {
            std::string line = "  " + instrument->ShownName();
            for (const std::string& role : RolesOf(doc, instrument->Id))
                line += ", " + role;
            if (instrument->Live.Immersed)
                line += ", immersed";
            output.Text(line + " (" + instrument->Definition().FilePath() + ")\n");
        }
    }
}

} // namespace qor
