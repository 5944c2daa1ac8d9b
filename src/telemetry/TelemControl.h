// SPDX-License-Identifier: GPL-3.0-or-later
//
// The one registry through which the program reaches telemetry: it owns every resource and every
// instrument definition, finds them by name, attaches instruments to resources and forwards. Every
// failing operation reports one line naming the operation and the detail line of its code.
// Called under the document's lock; the workers never call it.
#pragma once

#include "instrument/Instrument.h"
#include "telemetry/TelemComm.h"

#include <memory>
#include <string>
#include <vector>

namespace qor {

class CTelemControl {
  public:
    CTelemControl(CClock& clock, SerialPortFactory makePort);
    ~CTelemControl();

    /// The command queue that messages and notices travel through.
    CProcessCommand& Commands() { return Queue; }

    CommResult AddResource(const SerialResourceSettings& settings);
    CommResult AddResource(const FileResourceSettings& settings, CInputFile file);
    CommResult RemoveResource(const std::string& name);
    /// New settings for the port of that name.
    CommResult ModifyResource(const SerialResourceSettings& settings);
    /// New settings and an open file for the file resource of this name, which takes the new file's
    /// name and keeps its instruments. Refused while the resource's own file is being read.
    CommResult ModifyResource(const std::string& name, const FileResourceSettings& settings,
                              CInputFile file);
    CommResult CheckResource(const std::string& name, bool& exists);
    // A resource of this controller that the caller keeps from being removed: what waits for a port
    // looks nothing up here, where others may add and remove meanwhile.
    CommResult ConnectResource(CTelemComm& resource);
    /// `left`: see CTelemComm::Disconnect.
    CommResult DisconnectResource(CTelemComm& resource, CFrameQueue* left = nullptr);
    CommResult ResourceSettings(const std::string& name, SerialResourceSettings& settings);
    CommResult ResourceSettings(const std::string& name, FileResourceSettings& settings);
    CommResult ResourceIdentification(std::size_t position, std::string& name);
    CommResult BytesDiscarded(const std::string& name, std::uint64_t& bytes);
    CommResult ResetBytesDiscarded(const std::string& name);
    /// Returns the abort code and resets it, so that the resource may connect again.
    CommResult AbortCode(const std::string& name, std::uint32_t& abortCode);

    CommResult AddInstrument(std::unique_ptr<CInstrument> instrument);
    CommResult RemoveInstrument(const std::string& name);
    CommResult AttachInstrument(const std::string& instrument, const std::string& resource);
    CommResult DetachInstrument(const std::string& instrument);
    CommResult StartAcquisition(const std::string& instrument);
    CommResult StopAcquisition(const std::string& instrument);
    CommResult InstrumentResource(const std::string& instrument, std::string& resource);
    CommResult InstrumentFileType(const std::string& instrument, std::string& kind);
    CommResult InstrumentFileName(const std::string& instrument, std::string& path);
    CommResult InstrumentSerialNumber(const std::string& instrument, std::string& serial);
    CommResult InstrumentSyncHeader(const std::string& instrument, std::string& header);
    CommResult InstrumentLinesRead(const std::string& instrument, std::int32_t& lines);
    CommResult InstrumentFrameSize(const std::string& instrument, std::int32_t& size);
    CommResult InstrumentSensorCount(const std::string& instrument, std::int32_t& count);
    CommResult FindSensor(const std::string& instrument, std::string_view type, std::int32_t after,
                          const CSensor*& sensor);
    CommResult AccessSensor(const std::string& instrument, std::int32_t index,
                            const CSensor*& sensor);

    /// One frame of the resource (found tells), or of the file resource at a position of the table.
    CommResult RetrieveFrame(const std::string& resource, CFrameData& frame, bool& found);
    CommResult RetrieveFileFrame(std::size_t position, CFrameData& frame, bool& found);
    /// All frames that wait on the resource; see CTelemComm::RetrieveFrames.
    CommResult RetrieveFrames(const std::string& resource, CFrameQueue& frames);

    std::size_t ResourceCount() const { return Resources.size(); }
    /// The resource or instrument by name, or null; nothing is reported.
    CTelemComm* Resource(std::string_view name) const;
    const CInstrument* Instrument(std::string_view name) const;

  private:
    struct InstrumentRow {
        std::unique_ptr<CInstrument> instrument;
        CTelemComm* resource = nullptr; ///< where it is attached
    };

    CommResult Fail(std::string line, CommResult code);
    CommResult Checked(CommResult result, std::string line);
    CommResult CheckedFrames(CommResult result, const std::string& resource);
    std::unique_ptr<CTelemComm> MakeResource();
    InstrumentRow* FindInstrument(std::string_view name);
    CommResult Detach(InstrumentRow& row);
    template <class Operation>
    CommResult OnResource(const std::string& name, const char* line, Operation operation);
    template <class Operation>
    CommResult OnInstrument(const std::string& name, const char* line, Operation operation);
    template <class Operation>
    CommResult OnAttached(const std::string& name, std::string line, Operation operation);

    CClock& Clock;
    const SerialPortFactory MakePort;
    CProcessCommand Queue; ///< outlives the resources, whose workers report here
    std::vector<std::unique_ptr<CTelemComm>> Resources;
    std::vector<InstrumentRow> Instruments;
};

} // namespace qor
