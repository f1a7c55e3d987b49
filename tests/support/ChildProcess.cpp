#include "support/ChildProcess.h"

#include <array>
#include <cerrno>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/Sanitizers.h"

namespace TestSupport {

namespace {

struct Pipe {
    Pipe() {
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw std::runtime_error("cannot create a pipe");
        }
    }
    std::array<int, 2> ends{-1, -1};
};

/// Moves the sockets to the descriptors where the program expects them, and sets the variables.
void passSockets(std::vector<int> sockets) {
    constexpr int firstDescriptor = 3;
    if (sockets.empty()) {
        return;
    }
    // First to free descriptors, since one may have the number of another.
    for (int& socket : sockets) {
        socket = ::fcntl(socket, F_DUPFD_CLOEXEC, firstDescriptor + static_cast<int>(sockets.size()));
    }
    int descriptor = firstDescriptor;
    for (const int socket : sockets) {
        if (::dup2(socket, descriptor) < 0) {
            ::close(descriptor);
        }
        ++descriptor;
    }
    ::setenv("LISTEN_FDS", std::to_string(sockets.size()).c_str(), 1);
    ::setenv("LISTEN_PID", std::to_string(::getpid()).c_str(), 1);
}

[[noreturn]] void becomeProgram(std::vector<char*>& arguments, const std::map<std::string, std::string>& environment,
                                int output, int errors, const std::vector<int>& sockets) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The test may run with ignored signals, under nohup or in a shell's background.
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE}) {
        ::signal(number, SIG_DFL);
    }
    const int input = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::dup2(input, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(errors, STDERR_FILENO);
    for (const auto& [name, value] : environment) {
        if (value.empty()) {
            ::unsetenv(name.c_str());
        } else {
            ::setenv(name.c_str(), value.c_str(), 1);
        }
    }
    passSockets(sockets);
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
}

void closeOnce(int& descriptor) {
    if (descriptor >= 0) {
        ::close(descriptor);
        descriptor = -1;
    }
}

/// Does not reap the process.
bool hasEnded(pid_t process) {
    siginfo_t information{};
    return ::waitid(P_PID, static_cast<id_t>(process), &information, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           information.si_pid == process;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments,
                           const std::map<std::string, std::string>& environment, const std::vector<int>& sockets) {
    std::vector<char*> argumentPointers;
    argumentPointers.reserve(arguments.size() + 1);
    for (const auto& argument : arguments) {
        argumentPointers.push_back(const_cast<char*>(argument.c_str()));  // NOLINT: execvp wants it so
    }
    argumentPointers.push_back(nullptr);
    const Pipe out;
    const Pipe err;
    process = ::fork();
    if (process == 0) {
        becomeProgram(argumentPointers, environment, out.ends[1], err.ends[1], sockets);
    }
    ::close(out.ends[1]);
    ::close(err.ends[1]);
    outputDescriptor = out.ends[0];
    errorDescriptor = err.ends[0];
    outputReader = LineReader(outputDescriptor);
    errorReader = LineReader(errorDescriptor);
    if (process < 0) {
        throw std::runtime_error("cannot start a process");
    }
}

ChildProcess::~ChildProcess() {
    if (!status) {
        ::kill(process, SIGKILL);
        wait();
    }
    closeOutput();
    closeErrors();
}

void ChildProcess::sendSignal(int number) const {
    ::kill(process, number);
    if (!sanitizersHoldSignalsBack || number == SIGKILL) {
        return;
    }
    // Each round ends a system call that started before the signal was delivered. Rarely the runtime loses a signal.
    constexpr int roundsUntilResend = 10;
    for (int round = 1; round <= 50 && !hasEnded(process); ++round) {
        ::kill(process, SIGSTOP);
        ::kill(process, SIGCONT);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        if (round % roundsUntilResend == 0) {
            ::kill(process, number);
        }
    }
}

void ChildProcess::closeOutput() {
    closeOnce(outputDescriptor);
}

void ChildProcess::closeErrors() {
    closeOnce(errorDescriptor);
}

std::optional<int> ChildProcess::wait(std::chrono::milliseconds deadline) {
    const auto until = std::chrono::steady_clock::now() + deadline;
    while (!status) {
        int raw = 0;
        const pid_t ended = ::waitpid(process, &raw, WNOHANG);
        if (ended == process) {
            status = WIFSIGNALED(raw) ? 128 + WTERMSIG(raw) : WEXITSTATUS(raw);
        } else if (ended < 0 && errno != EINTR) {
            throw std::runtime_error("cannot wait for a process");
        } else if (std::chrono::steady_clock::now() > until) {
            break;
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
    return status;
}

Finished run(const std::vector<std::string>& arguments, const std::map<std::string, std::string>& environment,
             std::chrono::milliseconds deadline) {
    ChildProcess child(arguments, environment);
    std::string errors;
    std::thread errorCollector([&] { errors = child.errors().readAll(deadline); });
    std::string output = child.output().readAll(deadline);
    errorCollector.join();
    const std::optional<int> status = child.wait(deadline);
    return {status.value_or(-1), std::move(output), std::move(errors)};
}

}  // namespace TestSupport
