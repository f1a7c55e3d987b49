#pragma once

#include <memory>
#include <string>

#include "service/logging/LineFormat.h"
#include "service/logging/LogFile.h"
#include "service/logging/LogLine.h"
#include "service/logging/RequestContext.h"

namespace SettingsHandlerKit {

/// The options of the log.
struct LogOptions {
    int minimumLevel = 1;
    LogFormat format = LogFormat::TEXT;
    /// A log file besides standard error, see `LogFile`; empty for none.
    std::string file;
};

/// A sink that writes each line of at least the minimum level immediately: to standard error, see
/// `StandardErrorOutput`, or to the journal if standard error is connected to it; and to `file`, unless null. Errors: a
/// line that cannot be written is dropped. The number of dropped lines is logged at level 2 before the next line that
/// can be written to the same destination.
LogSink makeHostLogSink(const LogOptions& options, const std::shared_ptr<const RequestContext>& context,
                        const std::shared_ptr<LogFile>& file);

}  // namespace SettingsHandlerKit
