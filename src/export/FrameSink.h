// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where exported frames go: one implementation a format. Whoever plays logs feeds it: each log's
// instruments, then its frames one at a time, while each is its instrument's current one. One
// thread, under the document's lock where there is one.
#pragma once

#include "export/BinSpan.h"
#include "export/FrameText.h"
#include "export/Output.h"
#include "export/QcLimits.h"

#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace qor {

struct ExportedInstrument;
/// The ranges that an operator watches a product of the instrument by.
using WatchedRanges = std::function<QcRules(const ExportedInstrument&, const DerivedRow&)>;

/// What an export is asked for.
struct ExportSettings {
    std::string path; ///< of the file, or of the folder for several tables; empty: standard output
    /// Where each log has files of its own in a folder: their names begin with it.
    std::string stem = {};
    FrameStyle style;
    OutputRules rules;
    std::string call = {};            ///< what the program was called with, for files that keep it
    FaultReport report;               ///< hears what fails
    FaultReport warn = {};            ///< hears what is to be known and stops nothing
    std::optional<BinSpan> bins = {}; ///< means over these instead of frames
    std::optional<QcLimits> qc = {};  ///< values are checked by these
    WatchedRanges ranges = {};        ///< hold for products beside the limits
    bool rejects = false;             ///< values that fail them count as none
    std::map<std::string, std::string, std::less<>> archive = {}; ///< of a header, by key
};

/// A log whose frames will come.
struct ExportedLog {
    std::string path;
    /// Minutes that its times are ahead of UTC, where UTC is shown by its own zone.
    std::optional<int> utcOffset = {};

    /// The style of its rows.
    FrameStyle StyleOf(FrameStyle style) const {
        if (utcOffset)
            style.utcOffset = utcOffset;
        return style;
    }
};

/// An instrument whose frames will come, and its derived rows without values.
struct ExportedInstrument {
    const CLiveInstrument* live = nullptr;
    std::vector<DerivedRow> derived = {};
    std::string package = {}; ///< the name of the one that it belongs to
    /// Whose frames say the depth, itself or another; null: none, or it is not asked for.
    const CLiveInstrument* depthCarrier = nullptr;
    int depthSensor = -1; ///< index of the pressure among the carrier's sensors
};

/// A frame with what its checks found, its derived rows and what goes with it.
struct ExportedFrame {
    const CLiveInstrument& instrument;
    const FrameCheckResult& checks;
    std::span<const DerivedRow> derived;
    std::optional<double> depth = {}; ///< dbar, where its instrument has one
    const FrameQc* qc = nullptr;      ///< what the checks of its values found; null: not asked for
};

class CFrameSink {
  public:
    virtual ~CFrameSink() = default;

    /// A log begins. Its instruments live until EndLog; several logs go on with the same outputs.
    virtual OutputResult BeginLog(const ExportedLog& log,
                                  std::span<const ExportedInstrument> instruments) = 0;
    virtual void Write(const ExportedFrame& frame) = 0;
    /// The frame is not wanted; whoever counts frames says so.
    virtual void LeaveOut(const ExportedFrame&) {}
    virtual void EndLog() = 0;
    /// Nothing more comes for the moment: what is there is to be seen.
    virtual void Flush() = 0;
    /// False once nothing more can be written: the caller ends early.
    virtual bool Good() const = 0;
    /// Ends every output. Files are not there without it.
    virtual OutputResult Finish() = 0;
};

} // namespace qor
