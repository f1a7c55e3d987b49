#include <cstdio>
#include <exception>

#include "CommandLine.h"
#include "Failure.h"

int main(int argumentCount, char** arguments) {
    try {
        return SettingsCtl::runCommandLine(argumentCount, arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "settingsctl: %s\n", error.what());
        return SettingsCtl::UNREACHABLE;
    }
}
