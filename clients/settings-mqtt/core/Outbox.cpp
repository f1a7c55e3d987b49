#include "Outbox.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace SettingsMqtt {

void Outbox::add(Message message, const std::string& slot) {
    if (message.retained && !isConnected) {
        return;
    }
    const std::string place = message.retained ? message.topic : slot;
    enqueue({std::move(message), place});
    send();
}

void Outbox::enqueue(Entry entry) {
    const auto next = [&] {
        return std::find_if(waiting.begin(), waiting.end(),
                            [&](const Entry& other) { return other.slot == entry.slot; });
    };
    const auto same = entry.slot.empty() ? waiting.end() : next();
    if (same != waiting.end()) {
        waiting.erase(same);
    }
    bytesWithoutSlot += bytesOf(entry);
    while (bytesWithoutSlot > maximumWaiting && next() != waiting.end()) {
        take(next());
    }
    waiting.push_back(std::move(entry));
}

Outbox::Entry Outbox::take(std::deque<Entry>::iterator place) {
    Entry entry = std::move(*place);
    waiting.erase(place);
    bytesWithoutSlot -= bytesOf(entry);
    return entry;
}

void Outbox::forget(const std::string& slot) {
    const auto isForgotten = [&](const Entry& entry) { return entry.slot == slot; };
    waiting.erase(std::remove_if(waiting.begin(), waiting.end(), isForgotten), waiting.end());
    // Sent messages still take room at the broker; without a slot and retained they are not sent again.
    for (auto& [number, entry] : sent) {
        if (isForgotten(entry)) {
            entry.message = {"", "", true};
        }
    }
}

void Outbox::connected(std::vector<Message> first) {
    isConnected = true;
    auto others = std::exchange(waiting, {});
    for (auto& message : first) {
        const std::string slot = message.topic;
        enqueue({std::move(message), slot});
    }
    std::move(others.begin(), others.end(), std::back_inserter(waiting));
    send();
}

void Outbox::lost() {
    isConnected = false;
    const auto later = std::exchange(waiting, {});
    bytesWithoutSlot = 0;
    const auto keep = [this](const Entry& entry) {
        if (!entry.message.retained) {
            enqueue(entry);
        }
    };
    for (const auto& [number, entry] : sent) {
        keep(entry);
    }
    std::for_each(later.begin(), later.end(), keep);
    sent.clear();
}

void Outbox::acknowledged(int number) {
    const auto found = std::find_if(sent.begin(), sent.end(), [&](const auto& pair) { return pair.first == number; });
    if (found != sent.end()) {
        sent.erase(found);
    }
    send();
}

void Outbox::send() {
    while (isConnected && sent.size() < window && !waiting.empty()) {
        Entry entry = take(waiting.begin());
        const int number = broker->publish(entry.message);
        sent.emplace_back(number, std::move(entry));
    }
}

}  // namespace SettingsMqtt
