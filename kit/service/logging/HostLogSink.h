#pragma once

#include <memory>
#include <string>

#include "service/logging/LineFormat.h"
#include "service/logging/LogFile.h"
#include "service/logging/LogLine.h"
#include "service/logging/RequestContext.h"

namespace SettingsHost {

/// What the person who starts the host chose for its log.
struct LogChoices {
    int minimumLevel = 1;
    LogFormat format = LogFormat::TEXT;
    /// A file for the lines besides standard error, unless empty; see `LogFile`.
    std::string file;
};

/// A sink that writes each line of at least the minimum level at once: to standard error (see `StandardErrorOutput`),
/// or entry by entry to the journal where standard error leads there; and to `file`, unless that is null.
/// Errors: lines that cannot be written are lost and nothing else. How many is said, at level 2, before the next line
/// that can be written to the same place.
LogSink makeHostLogSink(const LogChoices& choices, const std::shared_ptr<const RequestContext>& context,
                        const std::shared_ptr<LogFile>& file);

}  // namespace SettingsHost
