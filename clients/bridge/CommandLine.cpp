#include "bridge/CommandLine.h"

#include <csignal>
#include <cstdio>
#include <exception>

#include <CLI/CLI.hpp>

#include "Wire/ControlCharacters.h"
#include "connection/DefaultSockets.h"
#include "connection/StandardStreams.h"

namespace SettingsBridge {

namespace {

int report(const std::string& name, int status, const char* reason) {
    std::fprintf(stderr, "%s: %s\n", name.c_str(), Wire::escapeControlCharacters(reason).c_str());
    return status;
}

}  // namespace

void addOptions(CLI::App& app, Options& options) {
    app.option_defaults()->always_capture_default();
    app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    app.add_option("--socket", options.sockets.settings,
                   "Socket of the host; default: " + SettingsClient::defaultSockets())
        ->type_name("PATH");
    app.add_option("--log-level", options.logLevel, "Lowest level to log: 0 traces, 1 routine, 2 warnings, 3 errors")
        ->check(CLI::Range(0, 3));
    app.set_version_flag("--version", versionText(), "Print version and commit, and exit");
}

void parse(CLI::App& app, int argumentCount, const char* const* arguments) {
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::CallForHelp&) {
        throw CommandLineEnd(0, app.help());
    } catch (const CLI::CallForVersion& version) {
        throw CommandLineEnd(0, std::string(version.what()) + "\n");
    } catch (const CLI::ParseError& error) {
        throw CommandLineEnd(2, error.what());
    }
}

std::vector<SettingsClient::SocketCandidate> socketsOf(const Options& options) {
    return SettingsClient::settingsSockets(options.sockets, SettingsClient::runtimeFolder());
}

int runProgram(const std::string& name, const std::function<void()>& program) {
    SettingsClient::openClosedStandardStreams();
    std::signal(SIGPIPE, SIG_IGN);
    try {
        program();
        return 0;
    } catch (const CommandLineEnd& end) {
        if (end.exitStatus() != 0) {
            return report(name, end.exitStatus(), end.what());
        }
        std::fputs(end.what(), stdout);
        return 0;
    } catch (const std::exception& error) {
        return report(name, 1, error.what());
    }
}

}  // namespace SettingsBridge
