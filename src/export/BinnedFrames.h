// SPDX-License-Identifier: GPL-3.0-or-later
//
// What sinks of means have in common: frames are gathered in bins while a log plays and written
// when it ends. A format says how.
#pragma once

#include "export/FrameBins.h"

#include <map>

namespace qor {

class CBinnedFrames : public CFrameSink {
  public:
    explicit CBinnedFrames(const ExportSettings& settings) : Settings(settings) {}

    OutputResult BeginLog(const ExportedLog& log,
                          std::span<const ExportedInstrument> instruments) final;
    void Write(const ExportedFrame& frame) final;
    void EndLog() final;
    bool Good() const final { return !Full && OutputsGood(); }
    OutputResult Finish() final;

  protected:
    /// Opens what is written to.
    virtual OutputResult Open(const ExportedLog& log,
                              std::span<const ExportedInstrument> instruments) = 0;
    /// The means of an instrument of the log that ends, in the order of the log's instruments.
    virtual void WriteBins(const ExportedLog& log, const CFrameBins& bins) = 0;
    /// What the log's times are ahead of UTC, where the format shows them as UTC.
    virtual std::optional<int> UtcOffsetOf(const ExportedLog& log) const {
        return log.StyleOf(Settings.style).utcOffset;
    }
    virtual bool OutputsGood() const = 0;
    virtual OutputResult FinishOutputs() = 0;

    const ExportSettings Settings;

  private:
    void SayLeftOut() const;

    ExportedLog Log;
    std::optional<int> UtcOffset;
    std::vector<std::unique_ptr<CFrameBins>> Instruments; ///< in the log's order
    std::map<const CLiveInstrument*, CFrameBins*> Gathering;
    bool Full = false;
};

/// "pressure [dbar]" of a bin's centre, or its time.
void WriteCentre(COutput& output, const BinSpan& span, double bin, bool utc);

} // namespace qor
