#include <functional>
#include <utility>
#include <vector>

#include <unistd.h>

#include "SettingsHandlerKit/Logging.h"
#include "service/logging/Journal.h"
#include "service/logging/LineFormat.h"
#include "service/logging/StandardErrorOutput.h"

namespace SettingsHandlerKit {

namespace {

/// A destination of lines, and the number of lines that it lost.
class Destination {
public:
    /// Returns: false when the line was lost.
    using Write = std::function<bool(const LogLine&)>;

    explicit Destination(Write writer) : write(std::move(writer)) {}

    void take(const LogLine& line) {
        if (lost > 0 && reportLoss(line)) {
            lost = 0;
        }
        if (lost > 0 || !write(line)) {
            ++lost;
        }
    }

private:
    bool reportLoss(const LogLine& next) const {
        const std::string text =
            programName() + ":" + (lost == 1 ? "1 log line was" : std::to_string(lost) + " log lines were") + " lost";
        return write({VessaLogger::WARNING, next.time, next.threadId, text});
    }

    Write write;
    unsigned long lost = 0;
};

Destination textDestination(std::shared_ptr<LogOutput> output, std::shared_ptr<LineFormat> format) {
    return Destination([output = std::move(output), format = std::move(format)](const LogLine& line) {
        return output->write(format->textOf(line));
    });
}

Destination journalDestination(std::shared_ptr<const RequestContext> context) {
    return Destination([journal = std::make_shared<Journal>(), context = std::move(context)](const LogLine& line) {
        return journal->send(journalEntry(line, context->current()));
    });
}

void reportUnwritable(const LogFile& file, Destination& destination) {
    const std::string text =
        programName() + ":the log file " + file.name() + " cannot be written to, its lines are lost: " + file.failure();
    const std::string threadId = VessaLogger::Log::instance().getThreadId();
    destination.take({VessaLogger::WARNING, std::chrono::system_clock::now(), threadId, text});
}

}  // namespace

LogSink makeLogSink(const LogOptions& options, const std::shared_ptr<const RequestContext>& context,
                    const std::shared_ptr<LogFile>& file) {
    const auto format = std::make_shared<LineFormat>(options.format, context);
    const auto destinations = std::make_shared<std::vector<Destination>>();
    destinations->push_back(isStandardErrorTheJournal()
                                ? journalDestination(context)
                                : textDestination(std::make_shared<StandardErrorOutput>(STDERR_FILENO), format));
    if (file) {
        if (!file->open() && options.minimumLevel <= VessaLogger::WARNING) {
            reportUnwritable(*file, destinations->front());
        }
        destinations->push_back(textDestination(file, format));
    }
    return [destinations, minimumLevel = options.minimumLevel](const LogLine& line) {
        if (line.level < minimumLevel) {
            return;
        }
        for (auto& destination : *destinations) {
            destination.take(line);
        }
    };
}

}  // namespace SettingsHandlerKit
