// SPDX-License-Identifier: GPL-3.0-or-later
//
// Reads one definition file into one instrument: lines into sensors and their coefficients, with a
// diagnostic for everything that was repaired or dropped. CInstrument::Load makes one for the time
// of the load; no lock, because nobody else has the instrument yet. Line cutting, normalisation
// and the texts stand in rooms of their own.
#pragma once

#include "instrument/DefinitionBytes.h"
#include "instrument/DefinitionLines.h"
#include "instrument/DefinitionLog.h"
#include "instrument/Instrument.h"

#include <array>
#include <map>
#include <optional>

namespace qor {

class CDefinitionReader {
  public:
    /// The path as the texts show it.
    CDefinitionReader(CInstrument& instrument, const std::string& path)
        : Target(instrument), Path(path) {}

    /// The whole load, from the file at the path.
    DefinitionStatus LoadFile(const CInstrument::LoadProgress& goOn);

    /// The steps of a load whose text comes in pieces: Begin once, Feed each piece, Finish. Feed
    /// is false once a fatal fault has ended the load; Finish returns that fault's status.
    void Begin(const std::string& fullPath);
    bool Feed(std::string_view piece);
    DefinitionStatus Finish();

  private:
    using Tokens = std::array<std::string_view, 7>;

    bool TakeText(std::string_view text);
    bool TakeLine(std::string_view text);
    DefinitionStatus ReadDefinition(std::string_view text);
    bool ReadTokens(const Tokens& tokens, CSensor& sensor);
    bool AcceptSensor(CSensor& sensor);
    void ReadCoefficients(std::string_view text);
    void Append(CSensor&& sensor);
    bool Drop(DefinitionStatus fault);
    bool DropKeepingSpace(DefinitionStatus fault, std::uint32_t fieldLength);
    bool Grow(std::uint32_t fieldLength);

    // The rules that relate a line to the lines before it; in DefinitionRules.cpp.
    DefinitionStatus CheckHeader(const CSensor& line);
    DefinitionStatus TakeHeader(const CSensor& line, const char* name, bool serial);
    bool FindIntegrationTime(CSensor& sensor) const;
    void NoteIntegrationTime(const CSensor& sensor);
    bool ApplyDelimiterRules(CSensor& sensor);
    DefinitionStatus DelimiterFault(const CSensor& sensor) const;
    void TakeFieldDelimiter(CSensor& line);
    void TakeTerminator(const CSensor& line);

    std::string FaultMessage(const std::string& firstLine) const;
    std::string ReadingMessage(const char* verb) const;
    DefinitionStatus Fail(std::string message, DefinitionStatus status,
                          std::string_view detail = {});
    DefinitionStatus Succeed();

    CInstrument& Target;
    const std::string Path;
    CDefinitionBytes Bytes;
    CDefinitionLines Lines;
    CDefinitionLog Log;
    std::optional<CSensor> Waiting; ///< for its coefficient lines
    std::uint32_t LinesToSkip = 0;  ///< coefficient lines of a sensor that was dropped
    std::vector<double> Numbers;    ///< of the coefficient line being read
    /// The first usable INTTIME sensor of each id in lower case.
    std::map<std::string, const CSensor*, std::less<>> IntegrationTimes;
    DefinitionStatus Fatal = DefinitionStatus::NoError;
    bool HeaderFound = false;
    bool HeaderClosed = false;
    bool FieldPending = false;
    bool TerminatorSeen = false;
};

} // namespace qor
