#include "Terminal.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/LineReader.h"

namespace SettingsCtlTests {

Terminal::Terminal(const std::vector<std::string>& arguments, const std::map<std::string, std::string>& environment) {
    std::vector<char*> argumentPointers;
    for (const auto& argument : arguments) {
        argumentPointers.push_back(const_cast<char*>(argument.c_str()));  // NOLINT: execvp wants it so
    }
    argumentPointers.push_back(nullptr);
    const winsize size{50, 200, 0, 0};
    process = ::forkpty(&terminal, nullptr, nullptr, &size);
    if (process == 0) {
        for (const auto& [name, value] : environment) {
            ::setenv(name.c_str(), value.c_str(), 1);
        }
        ::execvp(argumentPointers[0], argumentPointers.data());
        ::_exit(127);
    }
    if (process < 0) {
        throw std::runtime_error("cannot open a terminal");
    }
}

Terminal::~Terminal() {
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
    ::close(terminal);
}

void Terminal::type(const std::string& keys) const {
    if (::write(terminal, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
        throw std::runtime_error("cannot type");
    }
}

std::string Terminal::readUntil(const std::string& end) {
    const auto until = std::chrono::steady_clock::now() + TestSupport::waitTimeout;
    for (;;) {
        const std::size_t found = shown.find(end);
        if (found != std::string::npos) {
            std::string before = shown.substr(0, found);
            shown.erase(0, found + end.size());
            return before;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        pollfd wanted{terminal, POLLIN, 0};
        std::array<char, 4096> bytes{};
        if (left.count() <= 0 || ::poll(&wanted, 1, static_cast<int>(left.count())) != 1) {
            throw std::runtime_error("no '" + end + "' appeared, only '" + shown + "'");
        }
        const ssize_t count = ::read(terminal, bytes.data(), bytes.size());
        if (count <= 0) {
            throw std::runtime_error("the program ended, having shown '" + shown + "'");
        }
        shown.append(bytes.data(), static_cast<std::size_t>(count));
    }
}

}  // namespace SettingsCtlTests
