// SPDX-License-Identifier: GPL-3.0-or-later
//
// The controller's two tables and the operations on them. Every failure passes through Fail, which
// adds the details of the controller's own codes only: a resource has told its own already. Called
// under the document's lock; nothing here waits but for a port's worker to start or to end.
#include "telemetry/TelemControl.h"

#include "base/Text.h"
#include "telemetry/AttachRequest.h"

#include <algorithm>
#include <utility>

namespace qor {

namespace {

constexpr std::uint32_t FirstControllerCode = 0x40000000;

} // namespace

CTelemControl::CTelemControl(CClock& clock, SerialPortFactory makePort)
    : Clock(clock), MakePort(std::move(makePort)), Queue(clock) {}

CTelemControl::~CTelemControl() {
    // All workers end at the same time instead of one after the other.
    for (const auto& resource : Resources)
        resource->RequestStop();
}

CommResult CTelemControl::Fail(std::string line, CommResult code) {
    if (static_cast<std::uint32_t>(code) >= FirstControllerCode)
        line += CommDetail(code);
    Queue.Report(std::move(line));
    return code;
}

/// The result; a failure is reported with the line.
CommResult CTelemControl::Checked(CommResult result, std::string line) {
    return result == CommResult::Success ? result : Fail(std::move(line), result);
}

/// The same for frames, whose way makes no text unless something failed.
CommResult CTelemControl::CheckedFrames(CommResult result, const std::string& resource) {
    if (result == CommResult::Success)
        return result;
    return Fail(
        Format("Unable to retrieve frame from telemetry resource %s.\r\n", resource.c_str()),
        result);
}

std::unique_ptr<CTelemComm> CTelemControl::MakeResource() {
    return std::make_unique<CTelemComm>(Queue, &Queue, Clock, MakePort);
}

CTelemControl::InstrumentRow* CTelemControl::FindInstrument(std::string_view name) {
    for (InstrumentRow& row : Instruments)
        if (row.instrument->Name() == name)
            return &row;
    return nullptr;
}

CommResult CTelemControl::Detach(InstrumentRow& row) {
    CommResult result = row.resource->Detach(row.instrument->Name());
    if (result == CommResult::Success)
        row.resource = nullptr;
    return result;
}

/// Runs the operation on the named resource; every failure is reported with the line.
template <class Operation>
CommResult CTelemControl::OnResource(const std::string& name, const char* line,
                                     Operation operation) {
    CTelemComm* resource = Resource(name);
    return Checked(resource != nullptr ? operation(*resource) : CommResult::ResourceNotFound, line);
}

/// Reads something off the named instrument's definition.
template <class Operation>
CommResult CTelemControl::OnInstrument(const std::string& name, const char* line,
                                       Operation operation) {
    const CInstrument* instrument = Instrument(name);
    if (instrument == nullptr)
        return Fail(line, CommResult::InstrumentNotFound);
    operation(*instrument);
    return CommResult::Success;
}

/// Runs the operation on the named instrument's resource.
template <class Operation>
CommResult CTelemControl::OnAttached(const std::string& name, std::string line,
                                     Operation operation) {
    InstrumentRow* row = FindInstrument(name);
    CommResult result = row == nullptr             ? CommResult::InstrumentNotFound
                        : row->resource == nullptr ? CommResult::ResourceNotFound
                                                   : operation(*row);
    return Checked(result, std::move(line));
}

CommResult CTelemControl::AddResource(const SerialResourceSettings& settings) {
    const std::string line =
        Format("Unable to add communications resource: %s.\r\n", settings.portName.c_str());
    if (Resource(settings.portName) != nullptr)
        return Fail(line, CommResult::ResourceAlreadyDefined);
    auto resource = MakeResource();
    CommResult result = resource->InitialiseSerial(settings);
    if (result == CommResult::Success)
        Resources.push_back(std::move(resource));
    return Checked(result, line);
}

CommResult CTelemControl::AddResource(const FileResourceSettings& settings, CInputFile file) {
    const std::string line =
        Format("Unable to add communications resource: %s.\r\n", file.Path().c_str());
    if (Resource(file.Path()) != nullptr)
        return Fail(line, CommResult::ResourceAlreadyDefined);
    auto resource = MakeResource();
    CommResult result = resource->InitialiseFile(settings, std::move(file));
    if (result == CommResult::Success)
        Resources.push_back(std::move(resource));
    return Checked(result, line);
}

CommResult CTelemControl::RemoveResource(const std::string& name) {
    Queue.Report(Format("Removing communications resource: %s.\r\n", name.c_str()));
    const std::string line =
        Format("Unable to remove communications resource: %s.\r\n", name.c_str());
    CTelemComm* resource = Resource(name);
    if (resource == nullptr)
        return Fail(line, CommResult::ResourceNotFound);
    // Only a worker that does not end keeps the resource; what else went wrong while the port was
    // closed has been reported.
    if (CommResult result = resource->Disconnect(); result == CommResult::StillConnected)
        return Fail(line, result);
    for (InstrumentRow& row : Instruments)
        if (row.resource == resource)
            if (CommResult result = Detach(row); result != CommResult::Success)
                return Fail(line, result);
    std::erase_if(Resources, [&](const auto& entry) { return entry.get() == resource; });
    return CommResult::Success;
}

CommResult CTelemControl::ModifyResource(const SerialResourceSettings& settings) {
    CTelemComm* resource = Resource(settings.portName);
    CommResult result = resource == nullptr  ? CommResult::ResourceNotFound
                        : resource->IsFile() ? CommResult::NotASerialPort
                                             : resource->InitialiseSerial(settings);
    return Checked(result, Format("Unable to modify communications resource: %s.\r\n",
                                  settings.portName.c_str()));
}

CommResult CTelemControl::ModifyResource(const std::string& name,
                                         const FileResourceSettings& settings, CInputFile file) {
    const std::string line =
        Format("Unable to modify communications resource: %s.\r\n", name.c_str());
    CTelemComm* resource = Resource(name);
    if (resource == nullptr)
        return Fail(line, CommResult::ResourceNotFound);
    if (!resource->IsFile())
        return Fail(line, CommResult::NotAFile);
    CTelemComm* namesake = Resource(file.Path());
    if (namesake != nullptr && namesake != resource)
        return Fail(line, CommResult::ResourceAlreadyDefined);
    return Checked(resource->InitialiseFile(settings, std::move(file)), line);
}

CommResult CTelemControl::CheckResource(const std::string& name, bool& exists) {
    exists = Resource(name) != nullptr;
    return Checked(name.empty() ? CommResult::ResourceReference : CommResult::Success,
                   "Unable to check existance of communications resource.\r\n");
}

CommResult CTelemControl::ConnectResource(CTelemComm& resource) {
    const CommResult result = resource.Connect();
    if (result == CommResult::AbortCodeSet)
        Queue.Report(Format("%s has aborted and must be reset before connecting.\r\n",
                            resource.Name().c_str()));
    return Checked(result, "Unable to connect communications resource.\r\n");
}

CommResult CTelemControl::DisconnectResource(CTelemComm& resource, CFrameQueue* left) {
    return Checked(resource.Disconnect(left), "Unable to disconnect communications resource.\r\n");
}

CommResult CTelemControl::ResourceSettings(const std::string& name,
                                           SerialResourceSettings& settings) {
    return OnResource(name, "Unable to retrieve telemetry communications information.\r\n",
                      [&](CTelemComm& resource) {
                          auto found = resource.QuerySerialSettings();
                          if (!found)
                              return CommResult::NotASerialPort;
                          settings = std::move(*found);
                          return CommResult::Success;
                      });
}

CommResult CTelemControl::ResourceSettings(const std::string& name,
                                           FileResourceSettings& settings) {
    return OnResource(name, "Unable to retrieve telemetry communications information.\r\n",
                      [&](CTelemComm& resource) {
                          auto found = resource.QueryFileSettings();
                          if (!found)
                              return CommResult::NotAFile;
                          settings = *found;
                          return CommResult::Success;
                      });
}

CommResult CTelemControl::ResourceIdentification(std::size_t position, std::string& name) {
    if (position >= ResourceCount())
        return Fail("Unable to retieve communications resource identification.\r\n",
                    CommResult::ResourceNotFound);
    name = Resources[position]->Name();
    return CommResult::Success;
}

CommResult CTelemControl::BytesDiscarded(const std::string& name, std::uint64_t& bytes) {
    return OnResource(name, "Unable to retrieve the number of bytes discarded.\r\n",
                      [&](CTelemComm& resource) {
                          bytes = resource.Figures().bytesDiscarded;
                          return CommResult::Success;
                      });
}

CommResult CTelemControl::ResetBytesDiscarded(const std::string& name) {
    return OnResource(name, "Unable to reset the number of bytes discarded.\r\n",
                      [](CTelemComm& resource) {
                          resource.ResetBytesDiscarded();
                          return CommResult::Success;
                      });
}

CommResult CTelemControl::AbortCode(const std::string& name, std::uint32_t& abortCode) {
    return OnResource(name, "Unable to retrieve telemetry aquisition abort code.\r\n",
                      [&](CTelemComm& resource) { return resource.ResetAbortCode(abortCode); });
}

CommResult CTelemControl::AddInstrument(std::unique_ptr<CInstrument> instrument) {
    const std::string name = instrument != nullptr ? instrument->Name() : "";
    CommResult result = instrument == nullptr         ? CommResult::InstrumentReference
                        : Instrument(name) != nullptr ? CommResult::InstrumentAlreadyDefined
                                                      : CommResult::Success;
    if (result == CommResult::Success)
        Instruments.push_back({std::move(instrument), nullptr});
    return Checked(result, Format("Unable to add instrument: %s.\r\n", name.c_str()));
}

CommResult CTelemControl::RemoveInstrument(const std::string& name) {
    Queue.Report(Format("Removing instrument: %s.\r\n", name.c_str()));
    const std::string line = Format("Unable to remove instrument: %s.\r\n", name.c_str());
    InstrumentRow* row = FindInstrument(name);
    if (row == nullptr)
        return Fail(line, CommResult::InstrumentNotFound);
    if (row->resource != nullptr)
        if (CommResult result = Detach(*row); result != CommResult::Success)
            return Fail(line, result);
    Instruments.erase(Instruments.begin() + (row - Instruments.data()));
    return CommResult::Success;
}

CommResult CTelemControl::AttachInstrument(const std::string& instrument,
                                           const std::string& resource) {
    const std::string line =
        Format("Unable to attach instrument %s to %s.\r\n", instrument.c_str(), resource.c_str());
    InstrumentRow* row = FindInstrument(instrument);
    if (row == nullptr)
        return Fail(line, CommResult::InstrumentNotFound);
    CTelemComm* target = Resource(resource);
    if (target == nullptr)
        return Fail(line, CommResult::ResourceNotFound);
    if (row->resource != nullptr)
        if (CommResult result = Detach(*row); result != CommResult::Success)
            return Fail(line, result);
    CommResult result = target->Attach(MakeAttachRequest(*row->instrument));
    if (result == CommResult::Success)
        row->resource = target;
    return Checked(result, line);
}

CommResult CTelemControl::DetachInstrument(const std::string& instrument) {
    return OnAttached(instrument, Format("Unable to remove instrument %s.\r\n", instrument.c_str()),
                      [this](InstrumentRow& row) { return Detach(row); });
}

CommResult CTelemControl::StartAcquisition(const std::string& instrument) {
    return OnAttached(
        instrument, "Unable to start telemetry frame aquisition.\r\n",
        [&](InstrumentRow& row) { return row.resource->EnableAcquisition(instrument); });
}

CommResult CTelemControl::StopAcquisition(const std::string& instrument) {
    return OnAttached(
        instrument, "Unable to stop telemetry frame aquisition.\r\n",
        [&](InstrumentRow& row) { return row.resource->DisableAcquisition(instrument); });
}

CommResult CTelemControl::InstrumentResource(const std::string& instrument, std::string& resource) {
    return OnAttached(instrument, "Unable to access instrument communications resource.\r\n",
                      [&](InstrumentRow& row) {
                          resource = row.resource->Name();
                          return CommResult::Success;
                      });
}

CommResult CTelemControl::InstrumentFileType(const std::string& instrument, std::string& kind) {
    return OnInstrument(instrument, "Unable to retrieve the instrument file type.\r\n",
                        [&](const CInstrument& found) { kind = found.FileKind(); });
}

CommResult CTelemControl::InstrumentFileName(const std::string& instrument, std::string& path) {
    return OnInstrument(instrument, "Unable to retrieve the instrument file name.\r\n",
                        [&](const CInstrument& found) { path = found.FilePath(); });
}

CommResult CTelemControl::InstrumentSerialNumber(const std::string& instrument,
                                                 std::string& serial) {
    return OnInstrument(instrument, "Unable to retrieve the instrument serial number.\r\n",
                        [&](const CInstrument& found) { serial = found.SerialNumber(); });
}

CommResult CTelemControl::InstrumentSyncHeader(const std::string& instrument, std::string& header) {
    return OnInstrument(instrument, "Unable to retieve instrument header.\r\n",
                        [&](const CInstrument& found) { header = found.SyncHeader(); });
}

CommResult CTelemControl::InstrumentLinesRead(const std::string& instrument, std::int32_t& lines) {
    return OnInstrument(instrument,
                        "Unable to retrieve the number of instrument file lines read.\r\n",
                        [&](const CInstrument& found) { lines = found.LinesRead(); });
}

CommResult CTelemControl::InstrumentFrameSize(const std::string& instrument, std::int32_t& size) {
    return OnInstrument(instrument, "Unable to retrive instrument frame size.\r\n",
                        [&](const CInstrument& found) { size = found.FrameSize(); });
}

CommResult CTelemControl::InstrumentSensorCount(const std::string& instrument,
                                                std::int32_t& count) {
    return OnInstrument(instrument, "Unable to retrieve the number of instrument sensors.\r\n",
                        [&](const CInstrument& found) { count = found.SensorCount(); });
}

CommResult CTelemControl::FindSensor(const std::string& instrument, std::string_view type,
                                     std::int32_t after, const CSensor*& sensor) {
    sensor = nullptr;
    return OnInstrument(instrument, "Unable to find instrument sensor.\r\n",
                        [&](const CInstrument& found) { sensor = found.NextSensor(type, after); });
}

CommResult CTelemControl::AccessSensor(const std::string& instrument, std::int32_t index,
                                       const CSensor*& sensor) {
    InstrumentRow* row = FindInstrument(instrument);
    sensor = row != nullptr ? row->instrument->Sensor(index) : nullptr;
    CommResult result = row == nullptr      ? CommResult::InstrumentNotFound
                        : sensor == nullptr ? CommResult::InstrumentReference
                                            : CommResult::Success;
    return Checked(result, "Unable to access instrument sensors.\r\n");
}

CommResult CTelemControl::RetrieveFrame(const std::string& resource, CFrameData& frame,
                                        bool& found) {
    found = false;
    CTelemComm* source = Resource(resource);
    CommResult result =
        source != nullptr ? source->RetrieveFrame(frame, found) : CommResult::ResourceNotFound;
    return CheckedFrames(result, resource);
}

CommResult CTelemControl::RetrieveFileFrame(std::size_t position, CFrameData& frame, bool& found) {
    found = false;
    if (position >= ResourceCount())
        return Fail("Unable to retrieve instrument frame from file resource.\r\n",
                    CommResult::ResourceNotFound);
    CTelemComm& source = *Resources[position];
    CommResult result = source.IsFile() ? source.RetrieveFrame(frame, found) : CommResult::NotAFile;
    return CheckedFrames(result, source.Name());
}

CommResult CTelemControl::RetrieveFrames(const std::string& resource, CFrameQueue& frames) {
    CTelemComm* source = Resource(resource);
    CommResult result =
        source != nullptr ? source->RetrieveFrames(frames) : CommResult::ResourceNotFound;
    return CheckedFrames(result, resource);
}

CTelemComm* CTelemControl::Resource(std::string_view name) const {
    for (const auto& resource : Resources)
        if (resource->Name() == name)
            return resource.get();
    return nullptr;
}

const CInstrument* CTelemControl::Instrument(std::string_view name) const {
    for (const InstrumentRow& row : Instruments)
        if (row.instrument->Name() == name)
            return row.instrument.get();
    return nullptr;
}

} // namespace qor
