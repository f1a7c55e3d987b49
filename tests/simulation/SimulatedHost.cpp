#include "simulation/SimulatedHost.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <utility>

#include "simulation/SimulatedParts.h"

namespace SettingsSimulation {

SimulatedHost::SimulatedHost(Choices& choices) : parts(std::make_unique<Parts>(choices)) {}

SimulatedHost::~SimulatedHost() = default;

SimulatedHost::State SimulatedHost::state() const {
    return parts->state;
}

bool SimulatedHost::start() {
    return parts->state == State::RUNNING || (!parts->process && parts->start());
}

const std::string& SimulatedHost::startFailure() const {
    return parts->startFailure;
}

void SimulatedHost::stop() {
    if (parts->state == State::RUNNING) {
        parts->state = State::STOPPING;
        parts->process->server().stop();
        parts->turnWanted = true;
    }
}

void SimulatedHost::kill() {
    if (parts->process) {
        parts->die(false);
        parts->bury();
    }
}

void SimulatedHost::powerCut() {
    if (parts->process) {
        parts->die(true);
        parts->bury();
    } else {
        parts->disk->losePower();
    }
}

void SimulatedHost::killAtDiskCall(long calls) {
    parts->disk->cutOffAt(calls, [this] { parts->die(false); });
}

void SimulatedHost::powerCutAtDiskCall(long calls) {
    parts->disk->cutOffAt(calls, [this] { parts->die(true); });
}

void SimulatedHost::failDiskCalls(long first, long count) {
    parts->disk->failCalls(first, count);
}

std::shared_ptr<Connection> SimulatedHost::connect(Kind kind) {
    return parts->connect(kind);
}

std::vector<Handled> SimulatedHost::takeHandled() {
    return std::exchange(parts->handled, {});
}

bool SimulatedHost::step() {
    return parts->step();
}

std::size_t SimulatedHost::settle() {
    return parts->settle();
}

void SimulatedHost::advance(std::chrono::milliseconds time) {
    const auto end = parts->clock.sinceStart() + time;
    settle();
    while (const auto left = nextTimer()) {
        if (parts->clock.sinceStart() + *left > end) {
            break;
        }
        parts->clock.advance(*left);
        settle();
    }
    parts->clock.advance(std::max(end - parts->clock.sinceStart(), std::chrono::nanoseconds(0)));
    // The loop learns what time it is: timers that are set from now on are relative to it.
    parts->turnWanted = true;
    settle();
}

std::optional<std::chrono::milliseconds> SimulatedHost::nextTimer() {
    return parts->process ? parts->process->server().timeout() : std::nullopt;
}

std::int64_t SimulatedHost::now() const {
    return parts->clock.now();
}

SettingsHost::Faults& SimulatedHost::faults() {
    if (!parts->process) {
        throw std::logic_error("a host that does not run has no faults");
    }
    return parts->process->faults();
}

long SimulatedHost::diskCalls() const {
    return parts->disk->calls();
}

long SimulatedHost::diskFailures() const {
    return parts->disk->failures();
}

std::map<std::string, std::string> SimulatedHost::files() const {
    return parts->disk->contents();
}

std::map<std::string, std::string> SimulatedHost::storedSettings() {
    return parts->disk->rows(storageFile, "settings");
}

void SimulatedHost::observeLog(LogObserver observer) {
    parts->logObserver = std::move(observer);
}

std::uint64_t SimulatedHost::fingerprint() const {
    Fingerprint all = parts->fingerprint;
    for (const auto& [name, content] : files()) {
        all.add(name);
        all.add(content);
    }
    all.add(static_cast<std::uint64_t>(parts->clock.sinceStart().count()));
    return all.result();
}

}  // namespace SettingsSimulation
