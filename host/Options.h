#pragma once

#include <optional>
#include <stdexcept>
#include <string>

#include "SettingsHandlerKit/Logging.h"

namespace SettingsHost {

/// The command-line options of the host.
struct Options {
    std::string storageFile;
    std::string socketPath;
    std::string deviceSocketPath;
    SettingsHandlerKit::LogOptions log;
    /// The address of the web port; none with --no-web.
    std::optional<std::string> listen;
    /// The folder of the pages; empty when there are none.
    std::string pagesFolder;
    /// One more origin whose pages may connect; empty for none.
    std::string allowedOrigin;
    /// The file of the state to start with, see World.h; empty for none.
    std::string worldFile;
    /// Enter the sandbox before serving, see Sandbox.h.
    bool sandbox = true;
    /// Remove the stored files instead of serving, see Reset.h; without confirmation if `resetConfirmed`.
    bool reset = false;
    bool resetConfirmed = false;
};

/// The host is not to start: the command line asks for help or the version (status 0) or is wrong (2). `what()` is the
/// text to print, for status 2 in the log's format.
class CommandLineEnd : public std::runtime_error {
public:
    CommandLineEnd(int exitStatus, const std::string& text,
                   SettingsHandlerKit::LogFormat wantedFormat = SettingsHandlerKit::LogFormat::TEXT)
        : std::runtime_error(text), status(exitStatus), format(wantedFormat) {}

    int exitStatus() const { return status; }
    SettingsHandlerKit::LogFormat logFormat() const { return format; }

private:
    int status;
    SettingsHandlerKit::LogFormat format;
};

/// Parses the command line. Defaults depend on XDG_STATE_HOME, HOME and XDG_RUNTIME_DIR.
/// Errors: `CommandLineEnd` with status 0 for help and version, 2 for wrong usage.
Options parseOptions(int argumentCount, const char* const* arguments);

}  // namespace SettingsHost
