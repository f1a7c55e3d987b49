#include "Settings.h"

#include <algorithm>
#include <set>
#include <utility>

#include "Wire/Catalogue.h"
#include "bridge/ServiceManager.h"

namespace SettingsDbus {

namespace {

using SettingsClient::Event;

/// The newest event of each setting, in their order.
std::vector<Event> newestOf(const std::vector<Event>& events) {
    std::vector<Event> newest;
    std::set<std::string> keys;
    for (auto event = events.rbegin(); event != events.rend(); ++event) {
        if (keys.insert(event->key).second) {
            newest.push_back(*event);
        }
    }
    std::reverse(newest.begin(), newest.end());
    return newest;
}

/// What the host remembers; nothing of an older host.
std::vector<Event> historyOf(SettingsClient::Client& client) {
    try {
        return client.history();
    } catch (const SettingsClient::NotSupported&) {
        return {};
    }
}

Change changeOf(const Event& event) {
    return {event.key, event.from, event.to, event.sequence, event.origin, event.client};
}

}  // namespace

Settings::Settings(SettingsClient::Client& host, const SettingsBridge::Log& programLog,
                   std::function<void(const Change&)> changeObserver)
    : client(host), log(programLog), observer(std::move(changeObserver)) {
    client.onEvent([this](const auto& event) { take(event); });
    client.onReread([this](const auto& reread) { takeReread(reread); });
    client.onConnected([this] { takeConnection(); });
    client.onDisconnected([this](const auto& reason) { takeLoss(reason); });
}

std::string Settings::value(const std::string& key) const {
    const auto found = values.find(key);
    return found == values.end() ? "" : found->second;
}

SettingsClient::Client& Settings::host() {
    if (!isConnected || !client.isConnected()) {
        throw SettingsClient::ConnectionError(lossReason);
    }
    return client;
}

void Settings::repeat() {
    lastSequence = 0;
    mustRefresh = true;
    if (isConnected) {
        refresh();
    }
}

void Settings::take(const Event& event) {
    if (event.sequence != 0 && event.sequence <= lastSequence) {
        return;
    }
    lastSequence = std::max(lastSequence, event.sequence);
    values[event.key] = event.to;
    observer(changeOf(event));
}

void Settings::takeReread(const SettingsClient::Reread& reread) {
    if (!reread.missed) {
        return readAgain(reread.keys);
    }
    lastSequence = 0;
    refresh();
}

void Settings::takeConnection() {
    isConnected = true;
    const std::string status = "connected to " + client.socketPath();
    log.write(SettingsBridge::LogLevel::INFORMATION, status);
    SettingsBridge::notifyStatus(status);
    if (mustRefresh) {
        refresh();
    }
}

void Settings::takeLoss(const std::string& reason) {
    isConnected = false;
    lossReason = reason;
    log.write(SettingsBridge::LogLevel::WARNING, reason);
    SettingsBridge::notifyStatus(reason);
}

void Settings::refresh() {
    mustRefresh = true;
    try {
        readAll();
        mustRefresh = false;
    } catch (const std::runtime_error& error) {
        log.write(SettingsBridge::LogLevel::WARNING, std::string("the values were not read: ") + error.what());
    }
}

void Settings::readAll() {
    // In this order the values are not older than the events.
    const auto newest = newestOf(historyOf(client));
    const auto now = client.get();
    std::set<std::string> told;
    for (const auto& event : newest) {
        if (event.sequence > lastSequence) {
            told.insert(event.key);
            const auto value = now.find(event.key);
            values[event.key] = value == now.end() ? "" : value->second;
            observer(changeOf(event));
        }
    }
    if (!newest.empty()) {
        lastSequence = std::max(lastSequence, newest.back().sequence);
    }
    for (const auto& setting : Wire::catalogue()) {
        const auto value = now.find(setting.key);
        adopt(setting.key, value == now.end() ? "" : value->second, told.count(setting.key) > 0);
    }
    known = true;
}

void Settings::readAgain(const std::vector<std::string>& keys) {
    try {
        const auto now = client.get(keys);
        for (const auto& key : keys) {
            const auto value = now.find(key);
            adopt(key, value == now.end() ? "" : value->second, false);
        }
    } catch (const std::runtime_error&) {
        mustRefresh = true;
    }
}

void Settings::adopt(const std::string& key, const std::string& to, bool isTold) {
    const std::string from = value(key);
    values[key] = to;
    if (!isTold && (from != to || !known)) {
        observer({key, known ? std::optional(from) : std::nullopt, to, 0, "", ""});
    }
}

}  // namespace SettingsDbus
