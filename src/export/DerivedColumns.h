// SPDX-License-Identifier: GPL-3.0-or-later
//
// The derived products that go with a frame, as columns of CSV or as a JSON array: those of the
// ancillary display for a lone instrument, those of the package display for a package's frame.
// Reads what the session has computed. Under the document's lock.
#pragma once

#include "export/Json.h"
#include "session/QorViewDoc.h"

namespace qor {

class CDerivedColumns {
  public:
    explicit CDerivedColumns(const CQorViewDoc& doc) : Doc(doc) {}

    void WriteCsvHeader(COutput& output, const CQorViewIns& instrument) REQUIRES(Doc.DocLock);
    void WriteCsv(COutput& output, const CQorViewIns& instrument) REQUIRES(Doc.DocLock);
    void WriteJson(CJsonWriter& json, const CQorViewIns& instrument) REQUIRES(Doc.DocLock);

  private:
    const CQorViewDoc& Doc;
    std::vector<DerivedRow> Rows; ///< its memory is used from frame to frame
};

} // namespace qor
