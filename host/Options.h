#pragma once

#include <optional>
#include <stdexcept>
#include <string>

#include "server/web/WebAddress.h"
#include "service/logging/HostLogSink.h"

namespace SettingsHost {

/// What the person who starts the host may choose.
struct Options {
    std::string storageFile;
    std::string socketPath;
    std::string deviceSocketPath;
    LogChoices log;
    /// Where pages are served; nowhere when empty.
    std::optional<WebAddress> listen;
    /// The folder of the pages; empty when there are none.
    std::string pagesFolder;
    /// One more origin whose pages may connect, unless empty.
    std::string allowedOrigin;
    /// Give up what the host does not need, see sandbox/Sandbox.h.
    bool sandbox = true;
    /// Serve nobody, but remove what hosts keep, see Reset.h; without asking when `resetConfirmed`.
    bool reset = false;
    bool resetConfirmed = false;
};

/// The command line was help, version or wrong: `text` was not printed yet, and is to be printed as `format` says when
/// it tells what is wrong.
class CommandLineEnd : public std::runtime_error {
public:
    CommandLineEnd(int exitStatus, const std::string& text, LogFormat wantedFormat = LogFormat::TEXT)
        : std::runtime_error(text), status(exitStatus), format(wantedFormat) {}

    int exitStatus() const { return status; }
    LogFormat logFormat() const { return format; }

private:
    int status;
    LogFormat format;
};

/// Reads the command line. Defaults follow XDG_STATE_HOME and XDG_RUNTIME_DIR.
/// Errors: `CommandLineEnd` with status 0 for help and version, 2 for wrong usage.
Options parseOptions(int argumentCount, const char* const* arguments);

}  // namespace SettingsHost
