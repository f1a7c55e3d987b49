#include "fleet/Fleet.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>

#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include "support/ProcessUsage.h"

namespace Benchmarks {

namespace {

/// Connections that a broker did not accept are tried again after up to a minute.
constexpr std::chrono::seconds patience{200};
/// libmosquitto has a connection and a pair of sockets.
constexpr std::size_t descriptorsOfOne = 3;
constexpr std::size_t otherDescriptors = 50;

/// As many televisions as a process may have, with the limit of descriptors at its highest; children inherit it.
std::size_t mostInOneProcess() {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    return (limit.rlim_max - otherDescriptors) / descriptorsOfOne;
}

std::string lineOf(TestSupport::ChildProcess& process) {
    const auto line = process.output().readLine(patience);
    if (!line) {
        throw std::runtime_error("the televisions do not go on: " + process.errors().readAll(std::chrono::seconds(1)));
    }
    return *line;
}

}  // namespace

Fleet::Fleet(std::size_t count, const TelevisionOptions& options) {
    const std::size_t most = mostInOneProcess();
    const std::size_t processes = (count + most - 1) / most;
    for (std::size_t number = 0; number < processes; ++number) {
        std::array<int, 2> ends{};
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
            throw std::runtime_error("socketpair failed");
        }
        const std::size_t first = count * number / processes;
        const std::size_t next = count * (number + 1) / processes;
        const std::vector<std::string> arguments{FLEET_TELEVISIONS,
                                                 std::to_string(first),
                                                 std::to_string(next - first),
                                                 std::to_string(options.port),
                                                 std::to_string(options.keepalive),
                                                 std::to_string(options.firstPause.count())};
        parts.push_back({ends[0], first,
                         std::make_unique<TestSupport::ChildProcess>(arguments, std::map<std::string, std::string>(),
                                                                     std::vector<int>{ends[1]})});
        ::close(ends[1]);
    }
    for (auto& part : parts) {
        lineOf(*part.process);
    }
}

Fleet::~Fleet() {
    for (const auto& part : parts) {
        ::close(part.commands);
    }
}

void Fleet::send(const Part& part, const std::string& line) {
    const std::string bytes = line + "\n";
    if (::write(part.commands, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("the televisions take no commands");
    }
}

void Fleet::connect() {
    for (const auto& part : parts) {
        send(part, "connect");
    }
}

Fleet::Clock::time_point Fleet::waitUntilPublished() {
    Clock::time_point last{};
    for (auto& part : parts) {
        const std::string line = lineOf(*part.process);
        last = std::max(last, Clock::time_point(Clock::duration(std::stoll(line.substr(line.find(' '))))));
    }
    return last;
}

void Fleet::change(std::size_t television) {
    const auto part = std::find_if(parts.rbegin(), parts.rend(), [&](const auto& p) { return p.first <= television; });
    send(*part, "change " + std::to_string(television));
}

double Fleet::processorMicroseconds() const {
    double used = 0;
    for (const auto& part : parts) {
        used += TestSupport::processorMicroseconds(part.process->pid());
    }
    return used;
}

double Fleet::memory() const {
    double used = 0;
    for (const auto& part : parts) {
        used += memoryOf(part.process->pid());
    }
    return used;
}

double memoryOf(pid_t process) {
    return static_cast<double>(TestSupport::memoryOf(process).anonymous);
}

}  // namespace Benchmarks
