// SPDX-License-Identifier: GPL-3.0-or-later
//
// The derived products that `decode --derived` adds to each frame: those of the ancillary display
// for a lone instrument, those of the package display for a package's frame.
#pragma once

#include "cli/Playback.h"
#include "export/FrameText.h"
#include "products/PackageRows.h"
#include "products/VelocityState.h"

#include <map>
#include <memory>

namespace qor {

class CDerivedColumns {
  public:
    explicit CDerivedColumns(const CPlayback& playback);

    /// The rows of the instrument, or of its package, without values yet.
    const std::vector<DerivedRow>& Rows(const CQorViewIns& instrument) const;
    /// The rows for the frame that the instrument holds now; once a frame.
    const std::vector<DerivedRow>& Compute(const CQorViewIns& instrument);

    void WriteCsvHeader(COutput& output, const CQorViewIns& instrument) const;
    void WriteCsv(COutput& output, const CQorViewIns& instrument);
    void WriteJson(CJsonWriter& json, const CQorViewIns& instrument);

  private:
    struct Package {
        std::vector<const CLiveInstrument*> instruments;
        PackageSettings settings;
        CPackageRows rows;
    };
    std::vector<std::unique_ptr<Package>> Packages;
    std::map<const CLiveInstrument*, Package*> PackageOf;
    std::map<const CQorViewIns*, CInstrumentRows> LoneRows;
    VelocityState Velocity;
    std::vector<DerivedRow> Current;
    double PressureTare;
};

} // namespace qor
