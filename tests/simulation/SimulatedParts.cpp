#include "simulation/SimulatedParts.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <utility>

namespace SettingsSimulation {

namespace {

/// What the kernel keeps of a connection. Some are narrow, so that what waits for the client waits in the host.
constexpr std::size_t usualRoom = 131072;
constexpr std::size_t leastRoom = 16;
constexpr std::size_t narrowRooms = 4096;

/// The host would refuse more.
constexpr std::size_t mostConnections = 100;

std::size_t roomOf(Choices& choices) {
    constexpr std::size_t narrow = 7;
    return choices.pick(narrow + 1, "is a connection narrow") == narrow
               ? leastRoom + choices.pick(narrowRooms, "how narrow")
               : usualRoom;
}

}  // namespace

SimulatedHost::Parts::Parts(Choices& allChoices)
    : choices(allChoices), disk(std::make_shared<SimulatedDisk>(choices, [this](auto time) { clock.advance(time); })) {
    VessaLogger::setLogSink([this](const VessaLogger::LogLine& line) { logged(line); });
}

SimulatedHost::Parts::~Parts() {
    if (process) {
        die(false);
        bury();
    }
    VessaLogger::setLogSink({});
}

void SimulatedHost::Parts::logged(const VessaLogger::LogLine& line) {
    if (isDying) {
        return;
    }
    fingerprint.add(static_cast<std::uint64_t>(line.level));
    fingerprint.add(line.text);
    if (logObserver) {
        logObserver(line.level, line.text);
    }
}

HostProcess::Surroundings SimulatedHost::Parts::surroundings() {
    return {choices,
            disk,
            [this](auto time) { clock.advance(time); },
            [this] {
                if (!std::exchange(startsAgain, true)) {
                    state = State::STOPPING;
                    process->server().stop();
                    turnWanted = true;
                }
            },
            {[this] { return reading; },
             [this](auto connection, const auto& frame, const auto& action) { handle(connection, frame, action); }}};
}

bool SimulatedHost::Parts::start() {
    startFailure.clear();
    try {
        process = std::make_unique<HostProcess>(surroundings());
        state = State::RUNNING;
    } catch (const std::exception& error) {
        startFailure = error.what();
        state = State::DEAD;
    }
    if (isDying) {
        startFailure = "killed";
        bury();
        return false;
    }
    for (auto& client : clients) {
        if (process && !client.stream && !client.link->hostGone) {
            accept(client);
        }
    }
    return process != nullptr;
}

void SimulatedHost::Parts::die(bool powerIsCut) {
    disk->cutOff();
    isDying = true;
    losesPower = powerIsCut;
    for (auto& client : clients) {
        client.link->hostGone = true;
        client.link->toHost.clear();
        if (powerIsCut) {
            client.link->toClient.clear();
        }
    }
}

void SimulatedHost::Parts::bury() {
    for (auto& client : clients) {
        client.stream.reset();
    }
    process.reset();
    disk->work();
    if (losesPower) {
        disk->losePower();
    }
    isDying = false;
    startsAgain = false;
    turnWanted = false;
    state = State::DEAD;
}

void SimulatedHost::Parts::ended() {
    for (auto& client : clients) {
        client.stream.reset();
    }
    process.reset();
    if (isDying) {
        bury();
        return;
    }
    disk->work();
    turnWanted = false;
    state = State::OFF;
    if (std::exchange(startsAgain, false)) {
        start();
    }
}

std::shared_ptr<Connection> SimulatedHost::Parts::connect(Kind kind) {
    const auto link = std::make_shared<Link>();
    const auto end = std::make_shared<ClientEnd>(++lastNumber, kind, link);
    link->room = roomOf(choices);
    const bool isListening = process && process->server().isListening();
    if (clients.size() >= mostConnections || !(isListening || startsAgain)) {
        link->hostGone = true;
        return end;
    }
    clients.push_back({link, end, nullptr});
    if (isListening) {
        accept(clients.back());
    }
    return end;
}

void SimulatedHost::Parts::accept(Client& client) {
    if (client.end->kind() == Kind::PAGE) {
        client.end->openWebSocket(process->server().pageAddress());
    }
    reading = client.end->number();
    client.stream = process->server().accept(client.end->kind(), client.link);
}

std::int64_t SimulatedHost::Parts::hostTime() const {
    return clock.now() + (process ? process->faults().timeOf(SettingsHost::Fault::CLOCK_JUMP).count() : 0);
}

void SimulatedHost::Parts::handle(std::size_t connection, const std::optional<std::string>& frame,
                                  const std::function<void()>& action) {
    if (isDying) {
        return;
    }
    const std::size_t place = handled.size();
    const long failures = disk->failures();
    handled.push_back({connection, frame, hostTime(), 0, false});
    fingerprint.add(connection);
    action();
    handled[place].end = hostTime();
    handled[place].diskFailed = disk->failures() != failures;
}

bool SimulatedHost::Parts::step() {
    collectEvents();
    if (events.empty()) {
        return false;
    }
    happen(events[choices.pick(events.size(), "what happens next")]);
    if (isDying) {
        bury();
    } else if (process && !process->server().isRunning()) {
        ended();
    }
    return true;
}

std::size_t SimulatedHost::Parts::settle() {
    constexpr std::size_t tooMany = 10'000'000;
    std::size_t steps = 0;
    while (step()) {
        if (++steps == tooMany) {
            throw std::logic_error("the host does not come to rest");
        }
    }
    return steps;
}

void SimulatedHost::Parts::collectEvents() {
    events.clear();
    // To ask for the timeout is to tell the loop the time, as after every wait.
    const auto timeout = process ? process->server().timeout() : std::nullopt;
    if (process && (turnWanted || timeout == std::chrono::milliseconds(0))) {
        events.push_back({Event::Kind::TURN, 0});
    }
    const auto isOver = [](const Client& client) {
        return (!client.stream || !client.stream->isOpen()) && client.link->hostGone &&
               (client.link->clientGone || client.link->toClient.empty());
    };
    clients.erase(std::remove_if(clients.begin(), clients.end(), isOver), clients.end());
    for (std::size_t place = 0; place < clients.size(); ++place) {
        const Client& client = clients[place];
        if (client.stream && client.stream->canRead()) {
            events.push_back({Event::Kind::READ, place});
        }
        if (client.stream && client.stream->canWrite()) {
            events.push_back({Event::Kind::WRITE, place});
        }
        if (client.end->canReceive()) {
            events.push_back({Event::Kind::RECEIVE, place});
        }
    }
}

void SimulatedHost::Parts::happen(const Event& event) {
    if (event.kind == Event::Kind::TURN) {
        turnWanted = false;
        process->server().process();
        return;
    }
    // Held, since the clients may change meanwhile.
    Client client = clients[event.client];
    reading = client.end->number();
    switch (event.kind) {
        case Event::Kind::READ:
            client.stream->read(choices);
            break;
        case Event::Kind::WRITE:
            client.stream->writeRest();
            break;
        default:
            receive(client);
    }
}

void SimulatedHost::Parts::receive(Client& client) {
    constexpr std::size_t some = 7;
    const std::size_t waiting = client.link->toClient.size();
    const bool isWhole = waiting < 2 || choices.pick(some + 1, "does all arrive") != some;
    const std::string bytes = client.end->receive(isWhole ? waiting : 1 + choices.pick(waiting, "how much arrives"));
    fingerprint.add(client.end->number());
    fingerprint.add(bytes);
}

}  // namespace SettingsSimulation
