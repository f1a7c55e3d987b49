#include <csignal>
#include <cstdio>
#include <exception>

#include <fcntl.h>
#include <unistd.h>

#include "CommandLine.h"
#include "Failure.h"

namespace {

/// Opens standard streams that are closed. Otherwise the connection would get the number of one, and the host would
/// receive what is printed. O_PATH: reading and writing fail, so lost output is noticed, and "/" always exists.
void openClosedStandardStreams() {
    int opened = 0;
    do {
        opened = ::open("/", O_PATH);
    } while (opened >= 0 && opened <= STDERR_FILENO);
    if (opened >= 0) {
        ::close(opened);
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    openClosedStandardStreams();
    // A closed pipe is reported like any other failure to write.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return SettingsCtl::runCommandLine(argumentCount, arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "settingsctl: %s\n", error.what());
        return SettingsCtl::UNREACHABLE;
    }
}
