// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/LogSource.h"

#include "telemetry/RawLogReader.h"

namespace qor {

LogSource SourceOf(const ExportedLog& log, const ExportSettings& settings) {
    LogSource source{log.path, {}, log.StyleOf(settings.style).utcOffset, settings.call};
    CRawLogReader reader;
    // A pipe is read only once; a log that cannot be read says so when it is played.
    if (IsDevice(log.path) || reader.Open(log.path) != FileCause::None)
        return source;
    source.header = reader.Header().records;
    if (!source.utcOffset)
        source.utcOffset = reader.Header().ZoneMinutes();
    return source;
}

} // namespace qor
