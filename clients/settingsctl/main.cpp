#include <csignal>
#include <cstdio>
#include <exception>

#include "CommandLine.h"
#include "Failure.h"
#include "connection/StandardStreams.h"

int main(int argumentCount, char** arguments) {
    SettingsClient::openClosedStandardStreams();
    // A closed pipe is reported like any other failure to write.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return SettingsCtl::runCommandLine(argumentCount, arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "settingsctl: %s\n", error.what());
        return SettingsCtl::UNREACHABLE;
    }
}
