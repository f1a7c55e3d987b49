#include "mqtt/Outbox.h"

#include <algorithm>
#include <iterator>

namespace Mqtt {

void Outbox::add(Message message, const std::string& slot) {
    if (!message.retained || isConnected) {
        enqueue(std::move(message), slot);
        send();
    }
}

void Outbox::enqueue(Message message, const std::string& slot) {
    const std::string place = message.retained ? message.topic : slot;
    const auto isRival = [&](const Entry& other) { return !other.number && other.slot == place; };
    std::size_t bytes = message.payload.size();
    if (place.empty()) {
        for (const auto& other : entries) {
            bytes += isRival(other) ? other.message.payload.size() : 0;
        }
    }
    for (auto oldest = std::find_if(entries.begin(), entries.end(), isRival);
         oldest != entries.end() && (!place.empty() || bytes > maximumWaiting);
         oldest = std::find_if(entries.begin(), entries.end(), isRival)) {
        bytes -= oldest->message.payload.size();
        entries.erase(oldest);
    }
    entries.push_back({std::move(message), place});
}

void Outbox::forget(const std::string& slot) {
    const auto isForgotten = [&](const Entry& entry) { return !entry.number && entry.slot == slot; };
    entries.erase(std::remove_if(entries.begin(), entries.end(), isForgotten), entries.end());
    for (auto& entry : entries) {
        // A sent message still takes room at the broker; a retained one is not sent again.
        entry.message.retained = entry.message.retained || entry.slot == slot;
    }
}

void Outbox::connected(std::vector<Message> first) {
    isConnected = true;
    auto others = std::exchange(entries, {});
    for (auto& message : first) {
        enqueue(std::move(message), "");
    }
    std::move(others.begin(), others.end(), std::back_inserter(entries));
    send();
}

void Outbox::lost() {
    isConnected = false;
    for (auto& entry : std::exchange(entries, {})) {
        if (!entry.message.retained) {
            enqueue(std::move(entry.message), entry.slot);
        }
    }
}

void Outbox::acknowledged(int number) {
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&](auto& entry) { return entry.number == number; });
    if (found != entries.end()) {
        entries.erase(found);
    }
    send();
}

void Outbox::send() {
    for (std::size_t place = 0; isConnected && place < std::min(entries.size(), window);) {
        Entry& entry = entries[place];
        if (!entry.number) {
            entry.number = broker->publish(entry.message);
        }
        if (entry.number) {
            ++place;
        } else {
            entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(place));
        }
    }
}

}  // namespace Mqtt
