// SPDX-License-Identifier: GPL-3.0-or-later
//
// An instrument as its definition file describes it: the frame (sync header, fixed size or
// delimiters) and the list of sensors in frame order. After a load it is const and shared between
// threads without a lock. What a session adds (checks, counts, immersion) is CQorViewIns's.
#pragma once

#include "instrument/DefinitionBytes.h"
#include "instrument/DefinitionStatus.h"
#include "instrument/Sensor.h"

#include <deque>
#include <functional>
#include <string>
#include <string_view>

namespace qor {

class CMessageSink;

enum class FrameType { Fixed, Variable };

class CInstrument {
  public:
    CInstrument() = default;
    CInstrument(const CInstrument&) = delete; // sensors point to their instrument
    CInstrument& operator=(const CInstrument&) = delete;

    /// Reads a definition file (.cal, .tdf) once: builds the sensor list and the parse log.
    /// DefinitionStatus::Success, or the fatal status that the parse log explains; after a failed
    /// load the instrument is to be discarded. `goOn` is asked with the bytes read so far; when it
    /// says no, the load ends as one whose file could not be read.
    using LoadProgress = std::function<bool(std::uint64_t bytesRead)>;
    DefinitionStatus Load(const std::string& path, const LoadProgress& goOn = {});

    const std::string& Name() const { return InstrumentName; }
    /// The name as messages show it: of an instrument without one its definition file's name.
    std::string ShownName() const;
    const std::string& SerialNumber() const { return Serial; }
    const std::string& SyncHeader() const { return Header; }
    /// "Calibration File", "Telemetry Definition File" or "Instrument File".
    const std::string& FileKind() const { return Kind; }
    /// Full path of the opened file; empty until a load opened one.
    const std::string& FilePath() const { return Path; }
    const std::string& ParseLog() const { return Log; }
    std::int32_t FrameSize() const { return Size; }
    FrameType Type() const { return Frame; }
    const std::string& Terminator() const { return FrameTerminator; }
    /// One byte for each FIELD line, in file order.
    const std::string& FieldDelimiter() const { return Delimiters; }
    std::int32_t LinesRead() const { return Lines; }
    std::int32_t BadFormatLines() const { return BadLines; }
    std::int32_t DiagnosticCount() const { return Diagnostics; }
    /// The first diagnostic as one line without line end; empty when there is none.
    const std::string& FirstDiagnostic() const { return FirstFault; }
    TextEncoding Encoding() const { return FileEncoding; }
    bool ReadError() const { return ReadFailed; }

    const std::deque<CSensor>& Sensors() const { return SensorList; }
    std::int32_t SensorCount() const { return static_cast<std::int32_t>(SensorList.size()); }
    /// The sensor at an index, or null, which is reported where somebody wants to hear of it.
    const CSensor* Sensor(std::int32_t index, CMessageSink* messages = nullptr) const;
    /// The next sensor of the type (compared without case) behind an index (-1: from the start), or
    /// null.
    const CSensor* NextSensor(std::string_view type, std::int32_t after = -1) const;

  private:
    friend class CDefinitionReader;

    std::string InstrumentName, Serial, Header, Kind, Path, Log, FrameTerminator, Delimiters;
    std::string FirstFault;
    std::deque<CSensor> SensorList;
    std::int32_t Size = 0, Lines = 0, BadLines = 0, Diagnostics = 0;
    FrameType Frame = FrameType::Fixed;
    TextEncoding FileEncoding = TextEncoding::Bytes;
    bool ReadFailed = false;
};

} // namespace qor
