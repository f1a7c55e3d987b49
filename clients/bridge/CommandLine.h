#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "SettingsClient/SocketCandidates.h"

namespace CLI {
class App;
}

namespace SettingsBridge {

/// The options that every bridge has.
struct Options {
    SettingsClient::SocketOptions sockets;
    /// Lines of lower levels are not logged.
    int logLevel = 1;
};

/// The program is not to start: the command line asks for help or the version (status 0) or is wrong (2). `what()` is
/// the text to print.
class CommandLineEnd : public std::runtime_error {
public:
    CommandLineEnd(int exitStatus, const std::string& text) : std::runtime_error(text), status(exitStatus) {}

    int exitStatus() const { return status; }

private:
    int status;
};

/// What `--version` prints: the program, its version, and the commit that it was built from. Each program has its own,
/// by `add_program_version`.
const char* versionText();

/// Adds --socket, --log-level and --version. Of an option that is given twice the last one counts, also of those that
/// are added later.
void addOptions(CLI::App& app, Options& options);

/// Errors: `CommandLineEnd`.
void parse(CLI::App& app, int argumentCount, const char* const* arguments);

/// The sockets of the host to try.
std::vector<SettingsClient::SocketCandidate> socketsOf(const Options& options);

/// What `main` does: runs `program` and prints what ends it.
/// Returns: the exit status: 0 when it returned, 1 when it threw, that of a `CommandLineEnd`.
int runProgram(const std::string& name, const std::function<void()>& program);

}  // namespace SettingsBridge
