#include <chrono>
#include <memory>

#include <unistd.h>

#include "SettingsHandlerKit/Logging.h"
#include "VessaLogger/Log.h"
#include "Wire/ControlCharacters.h"
#include "service/logging/Journal.h"
#include "service/logging/LineFormat.h"
#include "service/logging/StandardErrorOutput.h"

namespace SettingsHandlerKit {

void reportFatalError(LogFormat format, LogFile* file, const std::string& reason) {
    const LogLine line{VessaLogger::ERROR, std::chrono::system_clock::now(), VessaLogger::Log::instance().getThreadId(),
                       programName() + ":" + reason};
    const std::string logLine = LineFormat(format, std::make_shared<RequestContext>()).textOf(line);
    if (isStandardErrorTheJournal()) {
        Journal().send(journalEntry(line, std::nullopt));
    } else {
        StandardErrorOutput(STDERR_FILENO)
            .write(format == LogFormat::JSON ? logLine
                                             : programName() + ": " + Wire::escapeControlCharacters(reason) + "\n");
    }
    if (file != nullptr) {
        file->write(logLine);
    }
}

}  // namespace SettingsHandlerKit
