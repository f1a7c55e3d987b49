#include <csignal>
#include <cstdio>
#include <exception>

#include <fcntl.h>
#include <unistd.h>

#include "CommandLine.h"
#include "Failure.h"

namespace {

/// A standard stream that is closed would leave its number to the connection, and the host would then receive what is
/// printed. What takes its place can be neither read nor written, so that lost output is noticed, and is always there.
void fillStandardStreams() {
    int filled = 0;
    do {
        filled = ::open("/", O_PATH);
    } while (filled >= 0 && filled <= STDERR_FILENO);
    if (filled >= 0) {
        ::close(filled);
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    fillStandardStreams();
    // A reader of our output that goes away is told like any other failure to write.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return SettingsCtl::runCommandLine(argumentCount, arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "settingsctl: %s\n", error.what());
        return SettingsCtl::UNREACHABLE;
    }
}
