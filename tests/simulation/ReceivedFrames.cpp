// The judge of frames that come.

#include <algorithm>
#include <utility>

#include "simulation/Judge.h"

namespace SettingsSimulation {

/// Each event has an id of its own, and everybody gets the same text.
void Judge::checkIds(const Observed::OfConnection& came) {
    static const std::string beginning = R"({"type":25,"messageId":")";
    for (const auto& frame : came.frames) {
        if (frame.rfind(beginning, 0) != 0) {
            continue;
        }
        const std::string id = frame.substr(beginning.size(), frame.find('"', beginning.size()) - beginning.size());
        const auto known = events.emplace(id, frame).first;
        if (known->second != frame) {
            throw Finding("two events have the message id " + id, known->second, frame);
        }
    }
}

/// Rules out what does not agree with what came, as soon as that is known.
void Judge::rule(const Observed& observed) {
    if (states.size() < 2) {
        return;
    }
    const auto disagrees = [&](const std::unique_ptr<State>& state) {
        return std::any_of(observed.connections.begin(), observed.connections.end(),
                           [&](const auto& came) { return !agrees(*state, came); });
    };
    // With none, the first one tells what is wrong.
    if (!std::all_of(states.begin(), states.end(), disagrees)) {
        states.erase(std::remove_if(states.begin(), states.end(), disagrees), states.end());
    }
}

bool Judge::agrees(State& state, const Observed::OfConnection& came) {
    const auto found = state.queues.find(came.connection);
    if (found == state.queues.end()) {
        return true;
    }
    Queue queue = found->second;
    auto next = queue.begin();
    for (const auto& frame : came.frames) {
        next = find(queue, next, frame, state.model.run);
        if (next == queue.end()) {
            return true;
        }
        if (!matches(*next->frame, frame, state.model.run)) {
            return false;
        }
        ++next;
    }
    return true;
}

/// Returns: what `frame` must be.
Judge::Queue::iterator Judge::find(Queue& queue, Queue::iterator next, const std::string& frame, std::string& run) {
    while (next != queue.end() && next->isOptional && !matches(*next->frame, frame, run)) {
        ++next;
    }
    if (next != queue.end() && next->isOptional) {
        // A client that joined too late for this one may have got the same text that must come after it.
        const auto must =
            std::find_if(next + 1, queue.end(), [](const Pending& pending) { return !pending.isOptional; });
        if (must != queue.end() && matches(*must->frame, frame, run)) {
            must->isOptional = true;
        }
    }
    return next;
}

void Judge::receive(const Observed& observed) {
    for (const auto& came : observed.connections) {
        checkIds(came);
        for (const auto& frame : came.frames) {
            if (remembers) {
                learn(frame, knownTexts);
            }
        }
    }
    if (remembers && isUp()) {
        queuesBefore = states.front()->queues;
        runBefore = run();
    }
    std::optional<Finding> first;
    States possible;
    for (auto& state : states) {
        auto reason = receive(*state, observed);
        if (!reason && observed.isSettled && observed.isRunning) {
            reason = complete(*state, observed);
        }
        if (!reason) {
            possible.push_back(std::move(state));
            continue;
        }
        if (!first) {
            first = std::move(reason);
        }
    }
    if (possible.empty() && first) {
        throw Finding(*first);
    }
    states = std::move(possible);
}

std::optional<Finding> Judge::receive(State& state, const Observed& observed) {
    for (const auto& came : observed.connections) {
        if (auto reason = receive(state, came, observed.now)) {
            return reason;
        }
    }
    return std::nullopt;
}

std::optional<Finding> Judge::receive(State& state, const Observed::OfConnection& came, std::int64_t now) {
    if (came.frames.empty()) {
        return std::nullopt;
    }
    auto& queue = state.queues[came.connection];
    auto next = queue.begin();
    for (const auto& frame : came.frames) {
        next = find(queue, next, frame, state.model.run);
        if (next == queue.end()) {
            return Finding("a frame came at " + name(came.connection) + " without a reason", "nothing", frame);
        }
        if (!matches(*next->frame, frame, state.model.run)) {
            return Finding("another frame came at " + name(came.connection), next->frame->shown(), frame);
        }
        if (next->earliest > now) {
            return Finding("a frame came at " + name(came.connection) + " too early", next->frame->shown(),
                           std::to_string(next->earliest - now) + " ms too early: " + frame);
        }
        state.reachedStep = std::max(state.reachedStep, next->persisted);
        ++next;
    }
    queue.erase(queue.begin(), next);
    if (queue.empty()) {
        state.queues.erase(came.connection);
    }
    return std::nullopt;
}

std::optional<Finding> Judge::complete(State& state, const Observed& observed) {
    for (const auto& came : observed.connections) {
        if (auto reason = completeClient(state, came, observed.now)) {
            return reason;
        }
    }
    const bool isReadable = !observed.diskFailed && !state.model.isOn("storage-failing");
    if (state.model.waitsForStorage() && state.storageWorked && isReadable) {
        return Finding("a batch that was rolled back is not read again", "a notice of its keys", "nothing");
    }
    if (!state.model.run.empty() && formerRuns.count(state.model.run) > 0) {
        return Finding("a run has the name of a former one", "another name", state.model.run);
    }
    return std::nullopt;
}

std::optional<Finding> Judge::completeClient(State& state, const Observed::OfConnection& came, std::int64_t now) {
    const Client& client = clients.at(came.connection);
    const auto closing = state.closing.find(came.connection);
    if (!client.isOpen || !client.isReading || state.model.restartWasAsked()) {
        return std::nullopt;
    }
    if (came.isClosedByHost && client.mayBeClosed) {
        return std::nullopt;
    }
    const bool mustClose = closing != state.closing.end() || !client.closeStatuses.empty();
    if (mustClose && !came.isClosedByHost) {
        return Finding(name(came.connection) + " is not closed", "closed", "open");
    }
    if (mustClose) {
        const bool isRight = closing != state.closing.end()
                                 ? closing->second == 0 || closing->second == came.closeStatus
                                 : client.closeStatuses.count(came.closeStatus) > 0;
        return isRight ? std::nullopt
                       : std::optional(Finding(name(came.connection) + " is closed with another status", "",
                                               std::to_string(came.closeStatus)));
    }
    if (came.isClosedByHost && !client.hasEndedOutput) {
        return Finding(name(came.connection) + " is closed without a reason", "open",
                       "closed " + std::to_string(came.closeStatus));
    }
    if (!came.isClosedByHost && !client.waiting.empty()) {
        return Finding("a frame of " + name(came.connection) + " is not handled", shown(client.waiting.front()),
                       "nothing");
    }
    const auto queue = state.queues.find(came.connection);
    if (queue == state.queues.end()) {
        return std::nullopt;
    }
    for (const auto& pending : queue->second) {
        if (!pending.isOptional && pending.latest <= now) {
            return Finding("a frame did not come at " + name(came.connection), pending.frame->shown(), "nothing");
        }
    }
    return std::nullopt;
}

}  // namespace SettingsSimulation
