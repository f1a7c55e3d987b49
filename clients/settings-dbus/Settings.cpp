#include "Settings.h"

#include <algorithm>
#include <set>
#include <utility>

#include "Wire/Catalogue.h"

namespace SettingsDbus {

namespace {

/// The newest event of each setting, in their order.
std::vector<Settings::Event> newestOf(const std::vector<Settings::Event>& events) {
    std::vector<Settings::Event> newest;
    std::set<std::string> keys;
    for (auto event = events.rbegin(); event != events.rend(); ++event) {
        if (keys.insert(event->key).second) {
            newest.push_back(*event);
        }
    }
    std::reverse(newest.begin(), newest.end());
    return newest;
}

}  // namespace

Settings::Settings(SettingsClient::Client& host, const SettingsBridge::Log& programLog, Observer changeObserver)
    : client(host), log(programLog), observer(std::move(changeObserver)) {
    client.onEvent([this](const auto& event) { take(event); }, true);
    client.onReread([this](const auto& reread) { takeReread(reread); });
    client.onConnected([this] { takeConnection(); });
    client.onDisconnected([this](const auto& reason) { takeLoss(reason); });
}

const std::map<std::string, std::string>& Settings::all() const {
    return known ? values : throw SettingsClient::ConnectionError(lossReason);
}

SettingsClient::Client& Settings::host() {
    if (!isServed()) {
        throw SettingsClient::ConnectionError(lossReason);
    }
    return client;
}

void Settings::repeat() {
    lastSequence = 0;
    if (isConnected) {
        source.read();
    }
}

void Settings::take(const Event& event) {
    if (event.sequence != 0 && event.sequence <= lastSequence) {
        return;
    }
    lastSequence = std::max(lastSequence, event.sequence);
    values[event.key] = event.to;
    observer(event, false);
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
    lossReason = "the settings were not read yet";
    log.write(SettingsBridge::LogLevel::INFORMATION, "connected to " + client.socketPath());
    refresh();
}

void Settings::takeLoss(const std::string& reason) {
    isConnected = false;
    lossReason = reason;
    log.write(SettingsBridge::LogLevel::WARNING, reason);
}

void Settings::refresh() {
    // In this order the values are not older than the events.
    const auto newest = newestOf(client.history());
    const auto now = client.get();
    const bool isFirst = !std::exchange(known, true);
    std::set<std::string> told;
    for (const auto& event : newest) {
        if (event.sequence > lastSequence) {
            lastSequence = event.sequence;
            told.insert(event.key);
            adopt(event.key, now);
            observer(event, false);
        }
    }
    for (const auto& setting : Wire::catalogue()) {
        const auto change = adopt(setting.key, now);
        if (told.count(setting.key) == 0 && (isFirst || change.from != change.to)) {
            observer(change, isFirst);
        }
    }
}

void Settings::readAgain(const std::vector<std::string>& keys) {
    const auto now = client.get(keys);
    for (const auto& key : keys) {
        const auto change = adopt(key, now);
        if (change.from != change.to) {
            observer(change, false);
        }
    }
}

Settings::Event Settings::adopt(const std::string& key, const std::map<std::string, std::string>& now) {
    Event change;
    change.key = key;
    change.from = std::exchange(values[key], "");
    const auto found = now.find(key);
    if (found == now.end()) {
        values.erase(key);
    } else {
        change.to = values[key] = found->second;
    }
    return change;
}

}  // namespace SettingsDbus
