#include "FakeHost.h"

#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "support/SendAll.h"

namespace SettingsCtlTests {

using TestSupport::ChildProcess;

std::string Peer::receiveLine() {
    const auto line = reader.readLine();
    if (!line) {
        throw std::runtime_error("the client sent no further line");
    }
    return *line;
}

bool Peer::send(const std::string& bytes) const {
    return TestSupport::sendAll(socket, bytes);
}

void Peer::waitUntilRead() const {
    const auto deadline = std::chrono::steady_clock::now() + TestSupport::waitTimeout;
    for (int waiting = 1; waiting > 0;) {
        if (::ioctl(socket, SIOCOUTQ, &waiting) != 0 || std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("the client does not read");
        }
        ::usleep(1000);
    }
}

void Peer::close() {
    if (socket >= 0) {
        ::close(socket);
        socket = -1;
    }
}

ListeningSocket::ListeningSocket(const std::string& path, int backlog)
    : socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    if (::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        ::listen(socket, backlog) != 0) {
        throw std::runtime_error("cannot listen at " + path);
    }
}

ListeningSocket::~ListeningSocket() {
    ::close(socket);
}

Peer ListeningSocket::accept() const {
    pollfd wanted{socket, POLLIN, 0};
    constexpr auto timeout = std::chrono::duration_cast<std::chrono::milliseconds>(TestSupport::waitTimeout);
    if (::poll(&wanted, 1, static_cast<int>(timeout.count())) != 1) {
        throw std::runtime_error("no client connected");
    }
    return Peer(::accept4(socket, nullptr, nullptr, SOCK_CLOEXEC));
}

FakeHost::FakeHost() : settings(settingsPath()), device(devicePath()) {}

ChildProcess FakeHost::start(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), SETTINGSCTL_PROGRAM);
    return ChildProcess(arguments, {{"XDG_RUNTIME_DIR", folder.path().string()}});
}

TestSupport::Finished finish(ChildProcess& program) {
    std::string output = program.output().readAll();
    std::string errors = program.errors().readAll();
    return {program.wait().value_or(-1), std::move(output), std::move(errors)};
}

std::string messageId(const ChildProcess& program, int number) {
    return "settingsctl-" + std::to_string(program.pid()) + "-" + std::to_string(number);
}

std::string getRequest(const ChildProcess& program, int number, const std::string& keys) {
    return R"({"type":7,"messageId":")" + messageId(program, number) + R"(","payload":{"settings":)" + keys + "}}";
}

std::string bareRequest(int type, const ChildProcess& program, int number) {
    return R"({"type":)" + std::to_string(type) + R"(,"messageId":")" + messageId(program, number) + R"("})";
}

std::string getReply(const ChildProcess& program, int number, const std::string& settings) {
    return R"({"type":7,"messageId":")" + messageId(program, number) + R"(","payload":{"settings":)" + settings + "}}";
}

std::string event(const std::string& key, const std::string& from, const std::string& to,
                  const std::string& timestamp) {
    return R"({"type":25,"messageId":"host-1","timestamp":)" + timestamp +
           R"(,"sequence":1,"origin":"socket","payload":{"settingDBId":")" + key + R"(","from":")" + from +
           R"(","to":")" + to + R"("}})";
}

void expectEnd(ChildProcess& program, int status, const std::string& output, const std::string& errors) {
    const TestSupport::Finished end = finish(program);
    EXPECT_EQ(end.output, output);
    EXPECT_EQ(end.errors, errors);
    EXPECT_EQ(end.status, status);
}

}  // namespace SettingsCtlTests
