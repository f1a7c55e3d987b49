#include "Options.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <CLI/CLI.hpp>
#include <unistd.h>

#include "Version.h"
#include "server/web/WebAccess.h"

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

std::string refuseNoPath(const std::string& path) {
    if (path.empty()) {
        return "the path is empty";
    }
    return path[0] == '-' ? "'" + path + "' looks like an option; a path of that name is written ./" + path : "";
}

std::string refuseNoOrigin(const std::string& text) {
    return isOrigin(text) ? "" : "'" + text + "' is no origin, such as http://localhost:5173";
}

std::string refuseNoWebAddress(const std::string& text) {
    try {
        parseWebAddress(text);
        return "";
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

/// The pages that were installed with this program. Without any the host still serves clients, health and figures.
std::string defaultPagesFolder() {
    std::error_code failure;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", failure);
    const auto pages = (program.parent_path() / SETTINGS_HANDLER_PAGES).lexically_normal();
    return !failure && ::access((pages / "index.html").c_str(), R_OK) == 0 ? pages.string() : "";
}

bool isSamePlace(const std::string& path, const std::string& otherPath) {
    const auto placeOf = [](const std::string& name) {
        std::error_code failure;
        const auto place = std::filesystem::weakly_canonical(name, failure);
        return failure ? std::filesystem::path(name) : std::filesystem::absolute(place, failure);
    };
    return placeOf(path) == placeOf(otherPath);
}

void refuseUnusablePlaces(const Options& options) {
    if (options.storageFile.empty()) {
        throw CommandLineEnd(2, "--storage is required: neither XDG_STATE_HOME nor HOME names a folder",
                             options.log.format);
    }
    if (isSamePlace(options.socketPath, options.deviceSocketPath)) {
        throw CommandLineEnd(2, "--socket and --device-socket are the same: " + options.socketPath, options.log.format);
    }
}

/// Known as soon as it was read, whatever else is wrong.
LogFormat formatGiven(const CLI::Option& option) {
    return !option.results().empty() && option.results().back() == "json" ? LogFormat::JSON : LogFormat::TEXT;
}

constexpr const char* examples = R"(
Examples:
  settings-host
  settings-host --storage /tmp/try/settings.db --socket /tmp/try/settings.sock --device-socket /tmp/try/device.sock
  settings-host --listen 127.0.0.1:9000 --pages pages/dist
  settings-host --log-level 0 --log-format json
  settings-host --reset

Exit status: 0 stopped by SIGINT or SIGTERM, or done with --reset, 1 could not start or not done, 2 wrong usage.)";

}  // namespace

Options parseOptions(int argumentCount, const char* const* arguments) {
    Options options;
    options.storageFile = defaultStorageFile();
    options.socketPath = defaultRuntimeFolder() + "/settings.sock";
    options.pagesFolder = defaultPagesFolder();
    options.deviceSocketPath = defaultRuntimeFolder() + "/device.sock";

    CLI::App app(
        "Serves the settings of a voice assistant at a Unix socket and to settings pages, with a simulated voice SDK "
        "and "
        "device.");
    app.name("settings-host");
    app.footer(examples);
    app.option_defaults()->always_capture_default();
    app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    app.add_option("--storage", options.storageFile, "Database file, made when missing")
        ->type_name("FILE")
        ->check(refuseNoPath);
    app.add_option("--socket", options.socketPath, "Socket for clients")->type_name("PATH")->check(refuseNoPath);
    app.add_option("--device-socket", options.deviceSocketPath, "Socket that drives the simulated device")
        ->type_name("PATH")
        ->check(refuseNoPath);
    std::string listen = "127.0.0.1:8097";
    CLI::Option* const listenOption =
        app.add_option("--listen", listen, "Loopback address and port for settings pages; port 0 takes a free one")
            ->type_name("ADDRESS:PORT")
            ->check(refuseNoWebAddress);
    bool noWeb = false;
    app.add_flag("--no-web", noWeb, "Open no port for settings pages")->excludes(listenOption);
    app.add_option("--pages", options.pagesFolder, "Folder of the settings pages")
        ->type_name("DIR")
        ->check(refuseNoPath);
    app.add_option("--allow-origin", options.allowedOrigin,
                   "Let pages of one more origin connect, such as a development server's")
        ->type_name("URL")
        ->check(refuseNoOrigin);
    app.add_option("--log-level", options.log.minimumLevel,
                   "Lowest level to log: 0 traces, 1 routine, 2 warnings, 3 errors")
        ->check(CLI::Range(0, 3));
    std::string format = "text";
    CLI::Option* const formatOption = app.add_option("--log-format", format, "How lines on standard error look")
                                          ->check(CLI::IsMember({"text", "json"}));
    app.add_option("--log-file", options.log.file, "Write the log to this file too; at 1 MiB it becomes FILE.1")
        ->type_name("FILE")
        ->check(refuseNoPath);
    bool noSandbox = false;
    app.add_flag("--no-sandbox", noSandbox, "Keep every right of the user, for debuggers and the like");
    CLI::Option* const resetOption = app.add_flag(
        "--reset", options.reset, "Remove database, backups and the file of --log-file after asking, and exit");
    app.add_flag("--yes", options.resetConfirmed, "Do not ask before --reset")->needs(resetOption);
    app.set_version_flag("--version", versionText());
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::CallForHelp&) {
        throw CommandLineEnd(0, app.help());
    } catch (const CLI::CallForVersion& version) {
        throw CommandLineEnd(0, std::string(version.what()) + "\n");
    } catch (const CLI::ParseError& error) {
        throw CommandLineEnd(2, error.what(), formatGiven(*formatOption));
    }
    options.log.format = formatGiven(*formatOption);
    refuseUnusablePlaces(options);
    options.sandbox = !noSandbox;
    if (!noWeb) {
        options.listen = parseWebAddress(listen);
    }
    return options;
}

}  // namespace SettingsHost
