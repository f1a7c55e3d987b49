#include "Options.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <CLI/CLI.hpp>
#include <unistd.h>

#include "SettingsHandlerKit/ServerOptions.h"
#include "Version.h"

namespace SettingsHost {

namespace {

/// The folder in an environment variable; empty when the variable is unset, empty or relative.
std::string folderFrom(const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && value[0] == '/' ? value : "";
}

/// Empty when the environment names no folder.
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

std::string refuseInvalidPath(const std::string& path) {
    if (path.empty()) {
        return "the path is empty";
    }
    return path[0] == '-' ? "'" + path + "' looks like an option; for a path of that name use ./" + path : "";
}

/// What `check` says against an argument.
template <void (*check)(const std::string&)>
std::string refuseInvalid(const std::string& text) {
    try {
        check(text);
        return "";
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

/// The pages that were installed with this program; empty when there are none.
std::string defaultPagesFolder() {
    std::error_code failure;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", failure);
    const auto pages = (program.parent_path() / SETTINGS_HANDLER_PAGES).lexically_normal();
    return !failure && ::access((pages / "index.html").c_str(), R_OK) == 0 ? pages.string() : "";
}

bool isSameFile(const std::string& path, const std::string& otherPath) {
    const auto canonical = [](const std::string& name) {
        std::error_code failure;
        const auto resolved = std::filesystem::weakly_canonical(name, failure);
        return failure ? std::filesystem::path(name) : std::filesystem::absolute(resolved, failure);
    };
    return canonical(path) == canonical(otherPath);
}

void refuseUnusablePaths(const Options& options) {
    if (options.storageFile.empty()) {
        throw CommandLineEnd(2, "--storage is required: neither XDG_STATE_HOME nor HOME names a folder",
                             options.log.format);
    }
    if (isSameFile(options.socketPath, options.deviceSocketPath)) {
        throw CommandLineEnd(2, "--socket and --device-socket are the same: " + options.socketPath, options.log.format);
    }
}

constexpr const char* description =
    "Serve the settings of a voice assistant over a Unix socket and to settings pages, with a simulated voice SDK and "
    "device.";

constexpr const char* examples = R"(
Examples:
  settings-host
  settings-host --storage /tmp/try/settings.db --socket /tmp/try/settings.sock --device-socket /tmp/try/device.sock
  settings-host --listen 127.0.0.1:9000 --pages pages/dist
  settings-host --log-level 0 --log-format json
  settings-host --reset

Exit status: 0 stopped by SIGINT or SIGTERM, or done with --reset, 1 start or --reset failed, 2 wrong usage.)";

/// The options as CLI11 reads them.
class CommandLine {
public:
    CommandLine() : app(description, "settings-host") {
        app.footer(examples);
        app.option_defaults()->always_capture_default();
        app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
        addStorageAndSockets();
        addWeb();
        addLog();
        addProcess();
        app.set_version_flag("--version", versionText());
    }

    /// Errors: `CommandLineEnd`.
    Options parse(int argumentCount, const char* const* arguments) {
        try {
            app.parse(argumentCount, arguments);
        } catch (const CLI::CallForHelp&) {
            throw CommandLineEnd(0, app.help());
        } catch (const CLI::CallForVersion& version) {
            throw CommandLineEnd(0, std::string(version.what()) + "\n");
        } catch (const CLI::ParseError& error) {
            throw CommandLineEnd(2, error.what(), logFormat());
        }
        options.log.format = logFormat();
        options.sandbox = !noSandbox;
        if (!noWeb) {
            options.listen = listen;
        }
        refuseUnusablePaths(options);
        return options;
    }

private:
    void addStorageAndSockets() {
        options.storageFile = defaultStorageFile();
        options.socketPath = defaultRuntimeFolder() + "/settings.sock";
        options.deviceSocketPath = defaultRuntimeFolder() + "/device.sock";
        addPath("--storage", options.storageFile, "Database file, created if missing")->type_name("FILE");
        addPath("--socket", options.socketPath, "Unix socket for clients");
        addPath("--device-socket", options.deviceSocketPath, "Unix socket that controls the simulated device");
    }

    void addWeb() {
        options.pagesFolder = defaultPagesFolder();
        CLI::Option* const listenOption =
            app.add_option("--listen", listen, "Loopback address and port for settings pages; port 0 picks a free one")
                ->type_name("ADDRESS:PORT")
                ->check(refuseInvalid<SettingsHandlerKit::checkListenAddress>);
        app.add_flag("--no-web", noWeb, "Do not open the web port")->excludes(listenOption);
        addPath("--pages", options.pagesFolder, "Folder of the settings pages")->type_name("DIR");
        app.add_option("--allow-origin", options.allowedOrigin,
                       "Allow pages of one more origin to connect, such as a development server")
            ->type_name("URL")
            ->check(refuseInvalid<SettingsHandlerKit::checkAllowedOrigin>);
    }

    void addLog() {
        app.add_option("--log-level", options.log.minimumLevel,
                       "Lowest level to log: 0 traces, 1 routine, 2 warnings, 3 errors")
            ->check(CLI::Range(0, 3));
        formatOption =
            app.add_option("--log-format", format, "Format of log lines")->check(CLI::IsMember({"text", "json"}));
        addPath("--log-file", options.log.file, "Also write the log to FILE; at 1 MiB it is renamed to FILE.1")
            ->type_name("FILE");
    }

    void addProcess() {
        CLI::Option* const worldOption =
            addPath("--world", options.worldFile,
                    "Start with the state in FILE (settings, device, faults); the database must be new")
                ->type_name("FILE");
        app.add_flag("--no-sandbox", noSandbox, "Disable the sandbox (for debugging)");
        CLI::Option* const resetOption =
            app.add_flag("--reset", options.reset,
                         "Remove the database, its backups and the log files after confirmation, then exit")
                ->excludes(worldOption);
        app.add_flag("--yes", options.resetConfirmed, "Do not ask for confirmation (with --reset)")->needs(resetOption);
    }

    CLI::Option* addPath(const std::string& name, std::string& path, const std::string& help) {
        return app.add_option(name, path, help)->type_name("PATH")->check(refuseInvalidPath);
    }

    /// Known as soon as the option was read, even if another one is wrong.
    SettingsHandlerKit::LogFormat logFormat() const {
        const auto& given = formatOption->results();
        return !given.empty() && given.back() == "json" ? SettingsHandlerKit::LogFormat::JSON
                                                        : SettingsHandlerKit::LogFormat::TEXT;
    }

    Options options;
    std::string listen = "127.0.0.1:8097";
    bool noWeb = false;
    std::string format = "text";
    bool noSandbox = false;
    CLI::App app;
    CLI::Option* formatOption = nullptr;
};

}  // namespace

Options parseOptions(int argumentCount, const char* const* arguments) {
    return CommandLine().parse(argumentCount, arguments);
}

}  // namespace SettingsHost
