#include "host/client/Server.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include <sched.h>

#include "host/client/Exchange.h"
#include "support/ProcessUsage.h"

namespace Benchmarks {

namespace {

/// SETTINGS_BENCHMARK_DISK names a folder where temporary files are in memory.
std::filesystem::path folderFor(Storage storage) {
    if (storage == Storage::MEMORY) {
        return TestSupport::memoryFolder();
    }
    const char* const chosen = std::getenv("SETTINGS_BENCHMARK_DISK");
    return chosen != nullptr ? chosen : std::filesystem::temp_directory_path();
}

/// SETTINGS_BENCHMARK_HOST names another build of the host.
std::string hostProgram() {
    const char* const chosen = std::getenv("SETTINGS_BENCHMARK_HOST");
    return chosen != nullptr ? chosen : SETTINGS_HOST;
}

}  // namespace

void stayOnOneProcessor() {
    cpu_set_t processors;
    CPU_ZERO(&processors);
    CPU_SET(static_cast<std::size_t>(::sched_getcpu()), &processors);
    ::sched_setaffinity(0, sizeof(processors), &processors);
}

Server::Server(Storage storage) : storageFolder(folderFor(storage)), socketFolder(TestSupport::memoryFolder()) {}

std::string Server::start(const std::vector<std::string>& arguments) {
    std::vector<std::string> all{"/bin/sh", "-c", R"(exec "$0" "$@" 2>/dev/null)"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    process = std::make_unique<TestSupport::ChildProcess>(all);
    const auto ready = process->output().readLine();
    if (!ready) {
        throw std::runtime_error("cannot start " + arguments.front());
    }
    return *ready;
}

double Server::processorMicroseconds() const {
    return TestSupport::processorMicroseconds(process->pid());
}

HostServer::HostServer(Storage storage, int logLevel) : Server(storage) {
    const std::string ready =
        start({hostProgram(), "--storage", database(), "--socket", socket(), "--device-socket", otherSocket(),
               "--listen", "127.0.0.1:0", "--log-level", std::to_string(logLevel)});
    const std::string before = "ready: http://127.0.0.1:";
    const std::string between = "/?key=";
    const std::size_t keyPlace = ready.find(between);
    if (ready.rfind(before, 0) != 0 || keyPlace == std::string::npos) {
        throw std::runtime_error("the host said " + ready);
    }
    port = static_cast<std::uint16_t>(std::stoi(ready.substr(before.size())));
    key = ready.substr(keyPlace + between.size(), ready.find(' ', keyPlace) - keyPlace - between.size());
}

std::unique_ptr<FrameConnection> HostServer::connect(Listener listener) {
    auto connection = listener == Listener::UNIX_SOCKET
                          ? connectToSocket(socket())
                          : connectToWebSocket(port, "/settings?key=" + key, "settings.v1");
    // A connection may wait to be accepted, and misses events meanwhile.
    exchange(*connection, connection->bytesOf(getAllRequest), getAllReply);
    return connection;
}

}  // namespace Benchmarks
