#include "Options.h"

#include <cstdlib>
#include <map>

#include <CLI/CLI.hpp>
#include <unistd.h>

namespace SettingsHost {

namespace {

/// The folder that an XDG variable names; empty when it is unset, empty or relative, which counts as unset.
std::string folderFrom(const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && value[0] == '/' ? value : "";
}

/// Empty when the environment names no place for it.
std::string defaultStorageFile() {
    const std::string base = folderFrom("XDG_STATE_HOME");
    const std::string home = folderFrom("HOME");
    if (base.empty() && home.empty()) {
        return "";
    }
    return (base.empty() ? home + "/.local/state" : base) + "/settings-host/settings.db";
}

std::string defaultRuntimeFolder() {
    const std::string base = folderFrom("XDG_RUNTIME_DIR");
    return base.empty() ? "/tmp/settings-host-" + std::to_string(::geteuid()) : base + "/settings-host";
}

std::string refuseEmpty(const std::string& path) {
    return path.empty() ? "the path is empty" : "";
}

constexpr const char* examples = R"(
Examples:
  settings-host
  settings-host --storage /tmp/try/settings.db --socket /tmp/try/settings.sock --device-socket /tmp/try/device.sock
  settings-host --log-level 0 --log-format json

Exit status: 0 stopped by SIGINT or SIGTERM, 1 could not start, 2 wrong usage.)";

}  // namespace

Options parseOptions(int argumentCount, const char* const* arguments) {
    Options options;
    options.storageFile = defaultStorageFile();
    options.socketPath = defaultRuntimeFolder() + "/settings.sock";
    options.deviceSocketPath = defaultRuntimeFolder() + "/device.sock";

    CLI::App app("Serves the settings of a voice assistant at a Unix socket, with a simulated voice SDK and device.");
    app.name("settings-host");
    app.footer(examples);
    app.option_defaults()->always_capture_default();
    app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    app.add_option("--storage", options.storageFile, "Database file, made when missing")
        ->type_name("FILE")
        ->check(refuseEmpty);
    app.add_option("--socket", options.socketPath, "Socket for clients")->type_name("PATH")->check(refuseEmpty);
    app.add_option("--device-socket", options.deviceSocketPath, "Socket that drives the simulated device")
        ->type_name("PATH")
        ->check(refuseEmpty);
    app.add_flag("--no-web", "Open no port for settings pages (this build has none)");
    app.add_option("--log-level", options.logLevel, "Lowest level to log: 0 traces, 1 routine, 2 warnings, 3 errors")
        ->check(CLI::Range(0, 3));
    const std::map<std::string, LogFormat> formats{{"text", LogFormat::TEXT}, {"json", LogFormat::JSON}};
    std::string format = "text";
    app.add_option("--log-format", format, "How lines on standard error look")->check(CLI::IsMember({"text", "json"}));
    app.set_version_flag("--version", "settings-host " SETTINGS_HANDLER_VERSION);
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::CallForHelp&) {
        throw CommandLineEnd(0, app.help());
    } catch (const CLI::CallForVersion& version) {
        throw CommandLineEnd(0, std::string(version.what()) + "\n");
    } catch (const CLI::ParseError& error) {
        throw CommandLineEnd(2, std::string(error.what()) + "\n");
    }
    if (options.storageFile.empty()) {
        throw CommandLineEnd(2, "--storage is required: neither XDG_STATE_HOME nor HOME names a folder\n");
    }
    options.logFormat = formats.at(format);
    return options;
}

}  // namespace SettingsHost
