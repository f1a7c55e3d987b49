#include <csignal>
#include <cstdio>
#include <exception>
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
#include "logging/HostLogSink.h"
#include "logging/RequestContext.h"
#include "service/PassedSockets.h"
#include "service/ServiceManager.h"

namespace {

/// A standard stream that is closed would leave its number to a socket or a database file, which would then receive
/// what is printed.
void fillStandardStreams() {
    int filled = 0;
    do {
        filled = ::open("/dev/null", O_RDWR);
    } while (filled >= 0 && filled <= STDERR_FILENO);
    if (filled >= 0) {
        ::close(filled);
    }
}

int serve(const SettingsHost::Options& options) {
    // A reader of our output or a client that goes away must not end the host.
    std::signal(SIGPIPE, SIG_IGN);
    // A write past a limit on file sizes fails, and is answered like one on a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    std::set<std::string> doors{"settings", "device"};
    if (options.listen) {
        doors.insert("web");
    }
    // First of all: what is opened before could be taken for a socket that was passed.
    SettingsHost::PassedSockets sockets(doors);
    const auto context = std::make_shared<SettingsHost::RequestContext>();
    VessaLogger::setLogSink(SettingsHost::makeHostLogSink(options.log, context));
    SettingsHost::tellStarting("Opening the database");
    SettingsHost::Composition host(options, std::move(sockets), context);
    std::printf("%s\n", host.readyLine().c_str());
    std::fflush(stdout);
    host.run();
    return 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    fillStandardStreams();
    try {
        const SettingsHost::Options options = SettingsHost::parseOptions(argumentCount, arguments);
        return options.reset ? SettingsHost::reset(options) : serve(options);
    } catch (const SettingsHost::CommandLineEnd& end) {
        std::fputs(end.what(), end.exitStatus() == 0 ? stdout : stderr);
        return end.exitStatus();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "settings-host: %s\n", error.what());
        return 1;
    }
}
