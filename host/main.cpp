#include <csignal>
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "Composition.h"
#include "Options.h"
#include "Reset.h"
#include "VessaLogger/LogSink.h"
#include "server/sockets/PassedSockets.h"
#include "service/logging/FatalError.h"
#include "service/logging/HostLog.h"
#include "service/logging/HostLogSink.h"
#include "service/logging/LogFile.h"
#include "service/logging/RequestContext.h"
#include "service/manager/ServiceManager.h"

namespace {

/// Opens /dev/null for each standard stream that is closed. Otherwise a socket or the database would get its number and
/// receive what is printed.
void openClosedStandardStreams() {
    int opened = 0;
    do {
        opened = ::open("/dev/null", O_RDWR);
    } while (opened >= 0 && opened <= STDERR_FILENO);
    if (opened >= 0) {
        ::close(opened);
    }
}

/// What SIGHUP does with a log file: programs that rotate log files ask for a new one. Null without a log file.
std::function<void()> reopenAction(const std::shared_ptr<SettingsHandlerKit::LogFile>& file) {
    if (!file) {
        return nullptr;
    }
    return [file] {
        if (file->reopen()) {
            SettingsHandlerKit::logHost(VessaLogger::INFORMATION, "reopened the log file");
        } else {
            SettingsHandlerKit::logHost(VessaLogger::WARNING, "cannot reopen the log file " + file->name() +
                                                                  ", its lines are lost: " + file->failure());
        }
    };
}

void sendLogTo(const SettingsHandlerKit::LogSink& sink) {
    VessaLogger::setLogSink([sink](const VessaLogger::LogLine& line) {
        sink({line.level, line.time, line.threadId, line.text});
    });
}

void serve(const SettingsHost::Options& options, const std::shared_ptr<SettingsHandlerKit::LogFile>& logFile) {
    // A reader of our output or a client that disconnects must not end the host.
    std::signal(SIGPIPE, SIG_IGN);
    // A write beyond the limit on file sizes fails like one on a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    std::set<std::string> listeners{"settings", "device"};
    if (options.listen) {
        listeners.insert("web");
    }
    // Before anything is opened, which could be taken for a socket that was passed.
    SettingsHandlerKit::PassedSockets sockets(listeners);
    const auto context = std::make_shared<SettingsHandlerKit::RequestContext>();
    sendLogTo(SettingsHandlerKit::makeHostLogSink(options.log, context, logFile));
    SettingsHandlerKit::notifyStarting("Opening the database");
    SettingsHost::Composition host(options, std::move(sockets), context, reopenAction(logFile));
    std::printf("%s\n", host.readyLine().c_str());
    std::fflush(stdout);
    host.run();
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
    openClosedStandardStreams();
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
