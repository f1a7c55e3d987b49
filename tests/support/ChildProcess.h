#pragma once

#include <csignal>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "support/LineReader.h"

namespace TestSupport {

/// A program started by a test, its standard output and error readable as lines. Killed with the object.
class ChildProcess {
public:
    /// Starts `arguments[0]`, looked up in PATH if it holds no slash, in the test's environment with the changes of
    /// `environment` (an empty value removes the variable). Standard input is empty; signals have their default
    /// actions. `sockets` are passed to the program as by a service manager; the caller names them in LISTEN_FDNAMES.
    /// The descriptor of a socket -1 is not open.
    explicit ChildProcess(const std::vector<std::string>& arguments,
                          const std::map<std::string, std::string>& environment = {},
                          const std::vector<int>& sockets = {});
    ~ChildProcess();

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    LineReader& output() { return outputReader; }
    LineReader& errors() { return errorReader; }

    pid_t pid() const { return process; }
    void sendSignal(int number) const;
    /// Closes the test's end of the program's standard output or error: the program writes to a broken pipe.
    void closeOutput();
    void closeErrors();

    /// Waits for the end. Returns: the exit status, 128 + the number of the signal that ended it, or nothing in time.
    std::optional<int> wait(std::chrono::milliseconds deadline = waitTimeout);

private:
    pid_t process = -1;
    int outputDescriptor = -1;
    int errorDescriptor = -1;
    LineReader outputReader{-1};
    LineReader errorReader{-1};
    std::optional<int> status;
};

/// The result of a program that has ended.
struct Finished {
    int status;
    std::string output;
    std::string errors;
};

/// Runs a program to its end and collects what it wrote. Status -1: it did not end in time and was killed.
Finished run(const std::vector<std::string>& arguments, const std::map<std::string, std::string>& environment = {},
             std::chrono::milliseconds deadline = waitTimeout);

}  // namespace TestSupport
