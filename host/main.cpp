#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "Composition.h"
#include "Options.h"
#include "Reset.h"
#include "SettingsHandlerKit/Logging.h"
#include "SettingsHandlerKit/PassedSockets.h"
#include "SettingsHandlerKit/Process.h"
#include "SettingsHandlerKit/ServiceManager.h"
#include "VessaLogger/LogSink.h"

namespace {

void sendLogTo(const SettingsHandlerKit::LogSink& sink) {
    VessaLogger::setLogSink([sink](const VessaLogger::LogLine& line) {
        sink({line.level, line.time, line.threadId, line.text});
    });
}

void serve(SettingsHost::Options options, const std::shared_ptr<SettingsHandlerKit::LogFile>& logFile) {
    SettingsHandlerKit::ignoreSignalsOfWrites();
    std::set<std::string> listeners{"settings", "device"};
    if (options.listen) {
        listeners.insert("web");
    }
    // Before anything is opened, which could be taken for a socket that was passed.
    std::optional<SettingsHost::NextRun> next(SettingsHost::NextRun{SettingsHandlerKit::PassedSockets(listeners), {}});
    const auto context = std::make_shared<SettingsHandlerKit::RequestContext>();
    sendLogTo(SettingsHandlerKit::makeLogSink(options.log, context, logFile));
    const auto onHangUp =
        logFile ? [logFile] { SettingsHandlerKit::reopenLogFile(*logFile); } : std::function<void()>();
    while (next) {
        SettingsHandlerKit::notifyStarting("Opening the database");
        SettingsHost::Composition host(options, std::move(next->sockets), context, onHangUp);
        next->signals.reset();
        std::printf("%s\n", host.readyLine().c_str());
        std::fflush(stdout);
        next = host.run();
        // The process stays in the sandbox, and the world is stored.
        options.sandbox = false;
        options.worldFile.clear();
    }
}

int serveOrReset(const SettingsHost::Options& options) {
    const bool writesLog = !options.reset && !options.log.file.empty();
    const auto logFile = writesLog ? std::make_shared<SettingsHandlerKit::LogFile>(options.log.file) : nullptr;
    try {
        if (options.reset) {
            return SettingsHost::reset(options);
        }
        serve(options, logFile);
        return 0;
    } catch (const SettingsHost::CommandLineEnd&) {
        throw;
    } catch (const std::exception& error) {
        SettingsHandlerKit::reportFatalError(options.log.format, logFile.get(), error.what());
        return 1;
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    SettingsHandlerKit::openClosedStandardStreams();
    try {
        return serveOrReset(SettingsHost::parseOptions(argumentCount, arguments));
    } catch (const SettingsHost::CommandLineEnd& end) {
        if (end.exitStatus() == 0) {
            std::fputs(end.what(), stdout);
        } else {
            SettingsHandlerKit::reportFatalError(end.logFormat(), nullptr, end.what());
        }
        return end.exitStatus();
    }
}
