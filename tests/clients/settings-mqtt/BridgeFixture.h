#pragma once

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "../mqtt/FakeBroker.h"
#include "Bridge.h"
#include "SettingsClient/Errors.h"

namespace SettingsMqttTest {

using MqttTest::FakeBroker;
using MqttTest::Lines;

class FakeHost : public SettingsMqtt::Host {
public:
    std::vector<SettingsClient::Setting> catalogue() override {
        return isBusy ? throw SettingsClient::RequestRefused("busy", "too much waits") : settings;
    }
    std::map<std::string, std::string> get(const std::vector<std::string>& keys) override {
        if (keys.empty()) {
            return values;
        }
        std::map<std::string, std::string> found;
        for (const auto& key : keys) {
            if (values.count(key) > 0) {
                found[key] = values[key];
            }
        }
        return found;
    }
    SettingsClient::Answer set(const SettingsClient::Assignment& wanted) override {
        const auto& [key, value, timestamp] = wanted;
        requests.push_back(key + "=" + value + (timestamp ? " at " + std::to_string(*timestamp) : ""));
        if (isGone) {
            throw SettingsClient::ConnectionError("gone");
        }
        SettingsClient::Answer answer;
        if (!answers.empty()) {
            answer = answers.front();
            answers.pop_front();
            return answer;
        }
        answer.outcome = values[key] == value ? SettingsClient::Outcome::UNCHANGED : SettingsClient::Outcome::CHANGED;
        answer.value = values[key] = value;
        return answer;
    }

    std::vector<SettingsClient::Setting> settings;
    std::map<std::string, std::string> values;
    std::deque<SettingsClient::Answer> answers;
    Lines requests;
    bool isGone = false;
    bool isBusy = false;
};

inline SettingsClient::Setting setting(const std::string& key, const std::string& kind,
                                       const std::string& privacy = "preference") {
    SettingsClient::Setting made;
    made.key = key;
    made.kind = kind;
    made.setBy = "anyone";
    made.privacy = privacy;
    return made;
}

/// A host with the settings "size" (a choice, "small") and "name" (personal, default "TV").
class BridgeTest : public testing::Test {
protected:
    BridgeTest() {
        auto size = setting("size", "choice");
        size.values = {"small", "large"};
        auto name = setting("name", "text", "personal");
        name.defaultValue = "TV";
        host->settings = {size, name};
        host->values = {{"size", "small"}, {"name", "TV"}};
        options.id = "tv";
        start();
    }

    /// A new bridge, which knows what is stored.
    void start() {
        versions = std::make_shared<SettingsMqtt::Versions>(stored);
        bridge = std::make_shared<SettingsMqtt::Bridge>(options, broker, host, versions);
    }

    /// Connects both sides; the broker acknowledges everything.
    void connect() {
        bridge->hostConnected();
        connectBroker();
    }
    void connectBroker() {
        bridge->brokerConnected();
        acknowledge();
        broker->lines.clear();
    }

    void acknowledge() {
        while (acknowledged < broker->last) {
            bridge->acknowledged(++acknowledged);
        }
    }

    /// A change by somebody else.
    void change(const std::string& key, const std::string& to, const std::string& client = "") {
        SettingsClient::Event event;
        event.key = key;
        event.from = host->values[key];
        event.to = host->values[key] = to;
        event.sequence = ++sequence;
        event.timestamp = 7;
        event.origin = "page";
        event.client = client;
        bridge->changed(event);
    }

    void receive(const std::string& topic, const std::string& payload, bool retained = false) {
        bridge->received({topic, payload, retained});
        acknowledge();
    }

    /// What was published since the last call.
    Lines published() { return std::exchange(broker->lines, {}); }

    SettingsMqtt::BridgeOptions options;
    const std::shared_ptr<FakeBroker> broker = std::make_shared<FakeBroker>();
    const std::shared_ptr<FakeHost> host = std::make_shared<FakeHost>();
    SettingsMqtt::VersionRecords stored;
    std::shared_ptr<SettingsMqtt::Versions> versions;
    std::shared_ptr<SettingsMqtt::Bridge> bridge;
    int acknowledged = 0;
    std::uint64_t sequence = 0;
};

}  // namespace SettingsMqttTest
