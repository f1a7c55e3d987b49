#include "connection/EventOrder.h"

#include <algorithm>
#include <utility>

namespace SettingsClient {

std::optional<Wire::LastEvent> EventOrder::beginConnection() {
    early.clear();
    mustReread = hasTold;
    isResuming = run.has_value();
    if (!run) {
        sequence = 0;
        return std::nullopt;
    }
    return Wire::LastEvent{*run, sequence};
}

/// Events without a number, which no host of this wire sends, are all new.
bool EventOrder::isNew(const Event& event) {
    if (event.sequence != 0 && event.sequence <= sequence) {
        return false;
    }
    sequence = std::max(sequence, event.sequence);
    return true;
}

EventOrder::Told EventOrder::takeEvent(Event event) {
    if (isResuming) {
        const std::uint64_t number = event.sequence;
        early.emplace(number, std::move(event));
        return {};
    }
    Told told;
    if (isNew(event)) {
        hasTold = true;
        told.events.push_back(std::move(event));
    }
    return told;
}

EventOrder::Told EventOrder::takeNotice(const Wire::HostFrame& frame, std::vector<std::string> keys) {
    if (isResuming) {
        // The answer names its keys, too.
        return {};
    }
    hasTold = true;
    return {{}, Reread{std::move(keys), false, frame.text()}};
}

EventOrder::Told EventOrder::takeHello(const Wire::HostFrame& answer) {
    const auto newRun = answer.textAt({"hello", "run"});
    const auto newest = answer.integerAt({"hello", "sequence"});
    if (!newRun || !newest || *newest < 0) {
        throw Wire::MalformedFrame();
    }
    Told told;
    if (isResuming && answer.booleanAt({"hello", "missed"}) == false) {
        for (auto& [number, event] : early) {
            if (isNew(event)) {
                told.events.push_back(std::move(event));
            }
        }
        auto keys = answer.textsAt({"hello", "reread"}).value_or(std::vector<std::string>());
        if (!keys.empty()) {
            told.reread = Reread{std::move(keys), false, answer.text()};
        }
    } else {
        told = startAnew(answer);
    }
    run = newRun;
    sequence = std::max(sequence, static_cast<std::uint64_t>(*newest));
    isResuming = false;
    hasTold = true;
    return told;
}

EventOrder::Told EventOrder::takeRefusal(const Wire::HostFrame& answer) {
    Told told = startAnew(answer);
    run.reset();
    isResuming = false;
    hasTold = true;
    return told;
}

void EventOrder::giveUpResuming() {
    run.reset();
    isResuming = false;
    early.clear();
    sequence = 0;
}

EventOrder::Told EventOrder::startAnew(const Wire::HostFrame& answer) {
    if (isResuming) {
        // Events that came before the answer are among what is read again.
        sequence = early.empty() ? 0 : early.rbegin()->first;
    }
    return mustReread ? Told{{}, Reread{{}, true, answer.text()}} : Told{};
}

Event eventOf(const Wire::HostFrame& frame) {
    auto change = frame.change();
    if (!change) {
        throw Wire::MalformedFrame();
    }
    Event event;
    event.key = std::move(change->key);
    event.from = std::move(change->from);
    event.to = std::move(change->to);
    event.timestamp = frame.timestamp().value_or(0);
    event.sequence = static_cast<std::uint64_t>(std::max<std::int64_t>(frame.integerAt({"sequence"}).value_or(0), 0));
    event.origin = frame.textAt({"origin"}).value_or("");
    event.client = frame.textAt({"client"}).value_or("");
    event.frame = frame.text();
    return event;
}

}  // namespace SettingsClient
