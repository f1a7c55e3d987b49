#include <algorithm>
#include <csignal>
#include <utility>
#include <vector>

#include <malloc.h>

#include "SettingsHandlerKit/Logging.h"
#include "SettingsHandlerKit/ServiceManager.h"
#include "server/ServerParts.h"

namespace SettingsHandlerKit {

namespace {

/// The grace period in which clients may read their backlog when the server stops.
constexpr unsigned drainMilliseconds = 500;

/// Allocations of at least this size do not come from the heap.
constexpr int largeAllocation = 64 * 1024;

/// SIGHUP stops a service with its terminal, unless it is ignored (nohup).
std::vector<int> stopSignals(bool hangUpStops) {
    std::vector<int> signals{SIGINT, SIGTERM};
    struct sigaction hangUp {};
    if (hangUpStops && ::sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN) {
        signals.push_back(SIGHUP);
    }
    return signals;
}

}  // namespace

void Server::handleSignals(std::function<void()> onHangUp) {
    parts->loop.onSignals(stopSignals(!onHangUp), [this] { parts->requestStop(); });
    if (onHangUp) {
        parts->loop.onSignals({SIGHUP}, std::move(onHangUp));
    }
}

void Server::Parts::tellServiceManager() {
    isManaged = true;
    // Without the key, since every user of the machine may read it.
    const std::string& path = endpoints.front().path;
    notifyReady("Serving at " + path + (webAddress && !path.empty() ? " and " : "") +
                (webAddress ? webAddress->text() : ""));
    if (const auto waitTimeout = watchdogTimeout()) {
        constexpr auto shortest = std::chrono::milliseconds(1);
        heartbeat.emplace(loop, std::chrono::milliseconds(0), std::max(shortest, *waitTimeout / 2), notifyAlive);
    }
}

void Server::run() {
    parts->tellServiceManager();
    // Gives memory that only the start needed back to the system, and later every large allocation at once: otherwise
    // the C library keeps more and more of them after the first ones.
    ::malloc_trim(0);
    ::mallopt(M_MMAP_THRESHOLD, largeAllocation);
    parts->serve();
}

void Server::startThread() {
    parts->thread = std::thread([this] { parts->serve(); });
}

void Server::join() {
    if (parts->thread.joinable()) {
        parts->thread.join();
    }
}

void Server::stop() {
    parts->loop.post([this] { parts->requestStop(); });
}

PassedSockets Server::handOver() {
    return parts->handOver();
}

PassedSockets Server::Parts::handOver() {
    PassedSockets sockets;
    if (phase != Phase::SERVING || stopRequested || isHandedOver) {
        return sockets;
    }
    for (const auto& endpoint : endpoints) {
        if (!endpoint.path.empty()) {
            sockets.add(endpoint.name, endpoint.listener->duplicate(), endpoint.listener->leaveFile());
        }
    }
    if (webServer) {
        sockets.add("web", webServer->duplicate(), false);
    }
    isHandedOver = true;
    loop.post([this] { requestStop(); });
    return sockets;
}

/// From the loop.
void Server::Parts::requestStop() {
    stopRequested = true;
    loop.stop();
}

void Server::Parts::serve() {
    loop.run();
    beginStop();
    loop.drain(drainMilliseconds, [this] { closeNow(); });
    heartbeat.reset();
    phase = Phase::ENDED;
}

void Server::Parts::turn() {
    bool isOpen = loop.turn();
    if (phase == Phase::SERVING && std::exchange(stopRequested, false)) {
        beginStop();
        loop.beginDrain(drainMilliseconds, [this] { closeNow(); });
        isOpen = loop.turn();
    }
    if (phase == Phase::DRAINING && (!isOpen || stopRequested)) {
        loop.endDrain();
        phase = Phase::ENDED;
    }
}

void Server::Parts::beginStop() {
    phase = Phase::DRAINING;
    if (isManaged) {
        (isHandedOver ? notifyReloading : notifyStopping)("Draining connections");
    }
    health.setServing(false);
    loop.keepOpen(false);
    writeLog(VessaLogger::INFORMATION, "stopping");
    for (const auto& endpoint : endpoints) {
        endpoint.listener->close();
    }
    if (webServer) {
        webServer->close();
    }
}

void Server::Parts::closeNow() {
    for (const auto& endpoint : endpoints) {
        endpoint.listener->closeNow();
    }
    if (webServer) {
        webServer->closeNow();
    }
}

int Server::fileDescriptor() const {
    return parts->loop.fileDescriptor();
}

std::optional<std::chrono::milliseconds> Server::timeout() const {
    return isRunning() ? parts->loop.timeout() : std::nullopt;
}

void Server::process() {
    if (isRunning()) {
        parts->turn();
    }
}

bool Server::isRunning() const {
    return parts->phase == Parts::Phase::SERVING || parts->phase == Parts::Phase::DRAINING;
}

}  // namespace SettingsHandlerKit
