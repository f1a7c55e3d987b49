#include "simulation/Judge.h"

#include <algorithm>
#include <utility>

#include "simulation/Fingerprint.h"

namespace SettingsSimulation {

namespace {

constexpr std::size_t largestFrame = 65536;
/// About half of the backlog of one client that does not read.
constexpr std::size_t muchUnread = 512UL * 1024UL;
/// With a disk that fails, each frame may have led to many things.
constexpr std::size_t mostFramesWithFailingDisk = 8;
/// More would take the machine's memory.
constexpr std::size_t mostPossibilities = 32768;

bool isSettings(Kind kind) {
    return kind != Kind::DEVICE;
}

}  // namespace

Judge::Judge(bool remembersAwaited) : onDisk(1), remembers(remembersAwaited) {}

std::string Judge::name(std::size_t connection) {
    return "connection " + std::to_string(connection);
}

std::string Judge::shown(const std::optional<std::string>& frame) {
    return frame ? *frame : "a frame that is too large";
}

// What clients do

void Judge::connected(std::size_t connection, Kind kind) {
    Client client;
    client.kind = kind;
    clients.emplace(connection, client);
}

void Judge::sent(std::size_t connection, const std::string& frame) {
    Client& client = clients.at(connection);
    if (client.kind == Kind::PAGE) {
        client.waiting.emplace_back(frame);
    } else {
        sentBytes(connection, frame + "\n");
    }
}

void Judge::sentBytes(std::size_t connection, const std::string& bytes) {
    Client& client = clients.at(connection);
    for (const char byte : bytes) {
        if (byte != '\n') {
            client.line += byte;
            if (client.line.size() == largestFrame + 1) {
                client.waiting.emplace_back(std::nullopt);
            }
            continue;
        }
        if (client.line.size() <= largestFrame && client.line.find_first_not_of(" \t\r") != std::string::npos) {
            client.waiting.emplace_back(client.line);
        }
        client.line.clear();
    }
}

void Judge::mustBeClosed(std::size_t connection, std::set<int> statuses) {
    clients.at(connection).closeStatuses = std::move(statuses);
}

void Judge::closed(std::size_t connection) {
    clients.at(connection).isOpen = false;
}

void Judge::endedOutput(std::size_t connection) {
    clients.at(connection).hasEndedOutput = true;
    for (auto& state : states) {
        const auto queue = state->queues.find(connection);
        if (queue == state->queues.end()) {
            continue;
        }
        for (auto& pending : queue->second) {
            pending.isOptional = pending.isOptional || pending.isSentLater;
        }
    }
}

void Judge::reads(std::size_t connection, bool isReading) {
    Client& client = clients.at(connection);
    client.isReading = isReading;
    client.unread = 0;
    // It does not answer pings.
    client.mayBeClosed = client.mayBeClosed || (!isReading && client.kind == Kind::PAGE);
}

bool Judge::isTooMuch(std::size_t connection) const {
    const Client& client = clients.at(connection);
    return isUp() && states.front()->model.isOn("storage-failing") && isSettings(client.kind) &&
           client.waiting.size() > mostFramesWithFailingDisk;
}

// What the host does

void Judge::observe(const Observed& observed) {
    if (isQuiet(observed)) {
        return receive(observed);
    }
    wasSettled = observed.isSettled;
    readAgain(observed.before, observed.now);
    unite();
    const bool hasPartial = observed.isCrashed && !observed.handled.empty();
    const std::size_t whole = observed.handled.size() - (hasPartial ? 1 : 0);
    for (std::size_t index = 0; index < whole; ++index) {
        handle(observed.handled[index], observed.now);
        rule(observed);
    }
    if (hasPartial) {
        crash(observed.handled.back());
    }
    receive(observed);
    if (observed.diskFailed) {
        // Then to read again can have failed, too.
        for (auto& state : states) {
            state->storageWorked = false;
        }
    }
    unite();
    if (observed.isSettled) {
        for (const auto& came : observed.connections) {
            clients.at(came.connection).hasJoined = true;
        }
    }
}

/// Has nothing but time passed? Then nothing was read again either.
bool Judge::isQuiet(const Observed& observed) const {
    const auto isSilent = [this](const Observed::OfConnection& came) {
        return came.frames.empty() && clients.at(came.connection).hasJoined;
    };
    return wasSettled && observed.isSettled && observed.handled.empty() && !observed.diskWasUsed &&
           std::all_of(observed.connections.begin(), observed.connections.end(), isSilent);
}

namespace {

std::string shownValues(const std::map<std::string, std::string>& values) {
    std::string text;
    for (const auto& [key, value] : values) {
        text.append(text.empty() ? "" : ", ").append(key).append(": '").append(value).append("'");
    }
    return "{" + text + "}";
}

}  // namespace

void Judge::handle(const Handled& handled, std::int64_t now) {
    Client& client = clients.at(handled.connection);
    if (client.waiting.empty() || client.waiting.front() != handled.frame) {
        throw Finding("the host handles the frames of " + name(handled.connection) + " in another order",
                      client.waiting.empty() ? "nothing" : shown(client.waiting.front()), shown(handled.frame));
    }
    client.waiting.pop_front();
    client.hasJoined = true;
    const long jump = states.front()->model.faultTime("clock-jump");
    States after;
    for (auto& state : states) {
        follow(std::move(state), handled, false, after);
        if (after.size() > mostPossibilities) {
            throw Finding("there are too many possibilities", "fewer", shown(handled.frame));
        }
    }
    states = std::move(after);
    readAgain(handled.begin - jump, now);
    unite();
}

/// Adds all that the frame can have led to.
void Judge::follow(std::unique_ptr<State> state, const Handled& handled, bool keepsSteps, States& after) {
    if (!handled.diskFailed && !state->model.isOn("storage-failing")) {
        step(*state, handled, {}, keepsSteps, false);
        after.push_back(std::move(state));
        return;
    }
    after.push_back(std::make_unique<State>(*state));
    step(*after.back(), handled, {}, keepsSteps, handled.diskFailed);
    const bool hasTransaction = after.back()->model.hadTransaction();
    for (auto fate : fates(after.back()->model.diskUses() + 1, handled.diskFailed)) {
        for (fate.endsTransaction = false;; fate.endsTransaction = true) {
            after.push_back(std::make_unique<State>(*state));
            step(*after.back(), handled, fate, keepsSteps, handled.diskFailed);
            if (fate.endsTransaction || !hasTransaction) {
                break;
            }
        }
    }
}

/// What the disk may do while a frame is handled, but to work.
std::vector<DiskFate> Judge::fates(long uses, bool diskFailed) {
    std::vector<DiskFate> all{{0, DiskFate::all, true, false}};
    for (long first = 0; first < uses; ++first) {
        all.push_back({first, DiskFate::all, false, false});
        for (long count = 1; count <= (diskFailed ? 3 : 1); ++count) {
            all.push_back({first, count, false, false});
        }
    }
    return all;
}

void Judge::step(State& state, const Handled& handled, const DiskFate& fate, bool keepsSteps, bool mayLeaveGhosts) {
    const long jump = state.model.faultTime("clock-jump");
    const bool wasWaiting = state.model.waitsForStorage();
    const std::string late = state.model.faultValue("replies-late");
    state.model.begin(fate, keepsSteps, mayLeaveGhosts);
    const auto outputs = state.model.handle({handled.connection, clients.at(handled.connection).kind}, handled.frame,
                                            {handled.begin, handled.end});
    if (state.model.faultValue("replies-late") != late) {
        release(state, handled.begin - jump);
    }
    send(state, outputs, handled.begin - jump, handled.end - jump);
    std::set<std::size_t> mayClose;
    if (state.model.keyWasReplaced()) {
        for (const auto& [connection, client] : clients) {
            if (client.kind != Kind::PAGE || !client.isOpen) {
                continue;
            }
            if (client.hasJoined) {
                state.closing.emplace(connection, 4401);
            } else {
                mayClose.insert(connection);
            }
        }
    }
    for (const std::size_t connection : mayClose) {
        clients.at(connection).mayBeClosed = true;
    }
    // While it fails to read again fails, too, and is tried again only when the storage has worked once more.
    state.storageWorked = wasWaiting && !state.model.isOn("storage-failing") &&
                          (state.storageWorked || (!mayLeaveGhosts && state.model.storageWorked()));
}

void Judge::send(State& state, const std::vector<Output>& outputs, std::int64_t begin, std::int64_t end,
                 bool isSentLater) {
    for (const auto& output : outputs) {
        for (auto& [connection, client] : clients) {
            const bool isReceiver = output.receiver ? *output.receiver == connection : isSettings(client.kind);
            if (!isReceiver || !client.isOpen || state.closing.count(connection) > 0) {
                continue;
            }
            if (output.isEvent && state.model.isOn("events-dropped")) {
                if (client.hasJoined) {
                    state.closing.emplace(connection, 0);
                }
                client.mayBeClosed = true;
                continue;
            }
            const bool isLate = isSettings(client.kind) && state.model.isOn("replies-late");
            const long delay = isLate ? state.model.faultTime("replies-late") : 0;
            const bool isOptional =
                output.receiver ? client.hasEndedOutput && isLate : !client.hasJoined || client.hasEndedOutput;
            state.queues[connection].push_back(
                {output.frame, begin + delay, end + delay, isOptional, output.persisted, isSentLater || isLate});
            if (!client.isReading) {
                client.unread += output.frame->shown().size();
                client.mayBeClosed = client.mayBeClosed || client.unread > muchUnread;
            }
        }
    }
}

/// What is late comes now, and nothing overtakes it.
void Judge::release(State& state, std::int64_t now) {
    for (auto& entry : state.queues) {
        for (auto& pending : entry.second) {
            pending.earliest = std::min(pending.earliest, now);
            pending.latest = std::min(pending.latest, now);
        }
    }
}

/// A batch that was rolled back may be read again after each frame, when the storage can be read. A slow SDK makes that
/// long: it ends between `begin` and `end`.
void Judge::readAgain(std::int64_t begin, std::int64_t end) {
    const std::size_t before = states.size();
    for (std::size_t index = 0; index < before; ++index) {
        if (!states[index]->model.waitsForStorage()) {
            continue;
        }
        auto again = std::make_unique<State>(*states[index]);
        again->model.begin({}, false, false);
        const auto outputs = again->model.readAgain({begin, end});
        send(*again, outputs, begin, end, true);
        again->storageWorked = false;
        states.push_back(std::move(again));
    }
}

/// The host ended while it handled this frame, or after it.
void Judge::crash(const Handled& handled) {
    clients.at(handled.connection).waiting.pop_front();
    States after;
    for (auto& state : states) {
        for (auto& entry : state->queues) {
            for (auto& pending : entry.second) {
                pending.persisted = 0;
            }
        }
        state->before = state->model.durable();
        state->ghostsBefore = state->model.ghosts();
        state->reachedStep = 0;
        follow(std::move(state), handled, true, after);
    }
    states = std::move(after);
}

// Possibilities

void Judge::unite() {
    // What was on the disk before the host ended is not compared.
    if (states.size() < 2 || states.front()->before) {
        return;
    }
    std::unordered_map<std::uint64_t, std::size_t> digests;
    States different;
    for (auto& state : states) {
        const auto [same, isNew] = digests.emplace(digest(*state), different.size());
        if (isNew) {
            different.push_back(std::move(state));
            continue;
        }
        State& known = *different[same->second];
        known.model.addGhosts(state->model.ghosts());
        known.storageWorked = known.storageWorked && state->storageWorked;
    }
    states = std::move(different);
}

std::uint64_t Judge::digest(const State& state) {
    Fingerprint all;
    all.add(state.model.digest());
    for (const auto& [connection, queue] : state.queues) {
        all.add(connection);
        for (const auto& pending : queue) {
            all.add(pending.frame->digest());
            all.add(static_cast<std::uint64_t>(pending.earliest));
        }
    }
    for (const auto& entry : state.closing) {
        all.add(entry.first);
    }
    return all.result();
}

// Life

void Judge::ended() {
    onDisk.clear();
    wasSettled = false;
    const auto add = [this](const Durable& durable) {
        if (std::find(onDisk.begin(), onDisk.end(), durable) == onDisk.end()) {
            onDisk.push_back(durable);
        }
    };
    for (const auto& each : states) {
        const State& state = *each;
        if (!state.model.run.empty()) {
            formerRuns.insert(state.model.run);
        }
        for (const auto& ghost : state.model.ghosts()) {
            add(ghost);
        }
        if (!state.before) {
            add(state.model.durable());
            continue;
        }
        const auto& steps = state.model.steps();
        if (state.reachedStep == 0) {
            add(*state.before);
            std::for_each(state.ghostsBefore.begin(), state.ghostsBefore.end(), add);
        }
        for (std::size_t step = 0; step < steps.size(); ++step) {
            if (static_cast<long>(step) + 1 >= state.reachedStep) {
                add(steps[step]);
            }
        }
    }
    states.clear();
    clients.clear();
}

void Judge::started(const std::map<std::string, std::string>& stored) {
    std::string expected;
    for (const auto& durable : onDisk) {
        if (durable.settings == stored) {
            states.push_back(std::make_unique<State>());
            states.back()->model.restart(durable);
        } else {
            expected += (expected.empty() ? "" : " or ") + shownValues(durable.settings);
        }
    }
    if (states.empty()) {
        throw Finding("other values are stored after the start", expected, shownValues(stored));
    }
}

std::vector<std::string> Judge::awaited(std::size_t connection, const KnownTexts& texts) const {
    std::vector<std::string> frames;
    const auto queue = queuesBefore.find(connection);
    if (queue != queuesBefore.end()) {
        for (const auto& pending : queue->second) {
            frames.push_back(pending.frame->example(runBefore, texts));
        }
    }
    return frames;
}

}  // namespace SettingsSimulation
