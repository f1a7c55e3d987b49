#include "scenarios/OwnHost.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Failure.h"
#include "Output.h"

namespace SettingsCtl {

namespace {

/// The program next to this one; its name alone, for PATH, when there is none.
std::string hostProgram() {
    std::error_code failure;
    const auto own = std::filesystem::read_symlink("/proc/self/exe", failure);
    const auto host = own.parent_path() / "settings-host";
    return !failure && ::access(host.c_str(), X_OK) == 0 ? host.string() : "settings-host";
}

std::filesystem::path newFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "settingsctl-replay-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw Failure(REFUSED, "cannot create a temporary folder '" + pattern + "': " + std::strerror(errno));
    }
    return pattern;
}

Failure cannotStart(int error) {
    return {REFUSED, std::string("cannot start settings-host: ") + std::strerror(error)};
}

}  // namespace

OwnHost::OwnHost(std::string worldText) : folder(newFolder()), world(std::move(worldText)) {
    try {
        std::ofstream(folder / "world.json") << world;
        start();
    } catch (...) {
        std::filesystem::remove_all(folder);
        throw;
    }
    // It is stored.
    world.clear();
}

OwnHost::~OwnHost() {
    kill();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

SettingsClient::SocketOptions OwnHost::sockets() const {
    return {folder / "settings.sock", folder / "device.sock"};
}

void OwnHost::becomeHost(const std::vector<std::string>& words, int output) const {
    // It must not outlive this program.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int log = ::open((folder / "log").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(log, STDERR_FILENO);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    std::signal(SIGPIPE, SIG_DFL);
    std::vector<char*> arguments;
    std::transform(words.begin(), words.end(), std::back_inserter(arguments),
                   [](const auto& word) { return const_cast<char*>(word.c_str()); });  // NOLINT: execvp wants it so
    arguments.push_back(nullptr);
    ::execvp(arguments.front(), arguments.data());
    ::dprintf(STDERR_FILENO, "cannot start %s: %s\n", arguments.front(), std::strerror(errno));
    ::_exit(127);
}

std::string OwnHost::whatItSaid() const {
    std::ifstream log(folder / "log");
    std::string text{std::istreambuf_iterator<char>(log), {}};
    text.erase(text.find_last_not_of('\n') + 1);
    return escaped(text.substr(text.rfind('\n') + 1));
}

void OwnHost::start() {
    std::vector<std::string> words{hostProgram(),       "--log-level",          "3",
                                   "--storage",         folder / "settings.db", "--socket",
                                   *sockets().settings, "--device-socket",      *sockets().device,
                                   "--listen",          "127.0.0.1:0"};
    if (!world.empty()) {
        words.insert(words.end(), {"--world", folder / "world.json"});
    }
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
        throw cannotStart(errno);
    }
    process = ::fork();
    const int error = errno;
    if (process == 0) {
        becomeHost(words, pipe[1]);
    }
    ::close(pipe[1]);
    if (process < 0) {
        ::close(pipe[0]);
        throw cannotStart(error);
    }
    // The line of a host that is ready, or nothing from one that has ended.
    std::array<char, 4096> line{};
    ssize_t count = -1;
    do {
        count = ::read(pipe[0], line.data(), line.size());
    } while (count < 0 && errno == EINTR);
    ::close(pipe[0]);
    if (count <= 0) {
        throw Failure(REFUSED, "settings-host does not start: " + end() + ": " + whatItSaid());
    }
}

void OwnHost::kill() {
    if (process > 0) {
        ::kill(process, SIGKILL);
        end();
    }
}

void OwnHost::stop() const {
    ::kill(process, SIGTERM);
}

std::string OwnHost::end() {
    int status = 0;
    const pid_t ended = std::exchange(process, -1);
    if (ended <= 0) {
        return "it is not running";
    }
    while (::waitpid(ended, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status)) {
        return "ended by signal " + std::to_string(WTERMSIG(status));
    }
    return WEXITSTATUS(status) == 0 ? "" : "exit status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace SettingsCtl
