#include "Bridge.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "Discovery.h"
#include "SettingsClient/Errors.h"
#include "Wire/RefusalCode.h"

namespace SettingsMqtt {

namespace {

/// Commands with an id that are remembered.
constexpr std::size_t maximumAnswered = 32;

Message retainedMessage(std::string topic, std::string payload) {
    return {std::move(topic), std::move(payload), true};
}

std::string eventSlot(const std::string& key) {
    return "event of " + key;
}

}  // namespace

Bridge::Bridge(BridgeOptions chosen, std::shared_ptr<Broker> brokerConnection, std::shared_ptr<Host> hostConnection,
               std::shared_ptr<VersionStore> versionStore)
    : options(std::move(chosen)),
      topics(options.id, options.groups),
      broker(std::move(brokerConnection)),
      host(std::move(hostConnection)),
      outbox(broker),
      versions(std::move(versionStore)) {}

Message Bridge::lastWill(const std::string& id) {
    return retainedMessage(Topics(id, {}).availability(), "offline");
}

bool Bridge::isOffered(const Setting& setting) const {
    return setting.privacy == "preference" || options.included.count(setting.key) > 0;
}

Message Bridge::availability() const {
    return retainedMessage(topics.availability(), isHostThere ? "online" : "offline");
}

/// A personal setting that nobody gave a value has none here, so a log-out leaves an empty topic.
std::string Bridge::stateOf(const Setting& setting) const {
    const auto value = values.find(setting.key);
    if (value == values.end() || (setting.privacy != "preference" && value->second == setting.defaultValue)) {
        return "";
    }
    return value->second.value_or("");
}

Message Bridge::stateMessage(const Setting& setting) const {
    return retainedMessage(topics.state(setting.key), stateOf(setting));
}

void Bridge::readCatalogue() {
    settings.clear();
    for (auto& setting : host->catalogue()) {
        const std::string key = setting.key;
        settings.emplace(key, std::move(setting));
    }
    for (const auto& key : options.included) {
        if (settings.count(key) == 0) {
            options.log(2, "--include: the host has no setting " + key);
        }
    }
}

void Bridge::hostConnected() {
    // Another version of the host may have other settings.
    readCatalogue();
    reread({});
    isHostThere = true;
    outbox.add(availability());
    for (const auto& [key, desired] : std::exchange(waiting, {})) {
        applyDesired(key, desired);
    }
}

void Bridge::hostLost() {
    if (std::exchange(isHostThere, false)) {
        outbox.add(availability());
    }
}

void Bridge::take(const std::string& key, const std::optional<std::string>& value, bool byBridge) {
    versions.valueIs(key, value, byBridge);
    const auto known = values.find(key);
    if (known == values.end() || known->second != value) {
        values[key] = value;
        outbox.add(stateMessage(settings.at(key)));
    }
}

void Bridge::changed(const SettingsClient::Event& event) {
    const auto setting = settings.find(event.key);
    if (setting == settings.end() || !isOffered(setting->second)) {
        return;
    }
    take(event.key, event.to, event.client == options.client);
    outbox.add({topics.event(), eventPayload(event)}, eventSlot(event.key));
}

void Bridge::reread(const std::vector<std::string>& keys) {
    std::vector<std::string> wanted;
    for (const auto& [key, setting] : settings) {
        if (isOffered(setting) && (keys.empty() || std::find(keys.begin(), keys.end(), key) != keys.end())) {
            wanted.push_back(key);
        }
    }
    if (wanted.empty()) {
        return;
    }
    auto current = host->get(wanted);
    for (const auto& key : wanted) {
        const auto found = current.find(key);
        const auto value = found == current.end() ? std::nullopt : std::make_optional(std::move(found->second));
        const auto known = values.find(key);
        if (known != values.end() && known->second != value) {
            // Of a value that is gone; after a log-out nobody may read it any more.
            outbox.forget(eventSlot(key));
        }
        take(key, value, false);
    }
}

void Bridge::brokerConnected() {
    broker->subscribe(topics.subscriptions());
    std::vector<Message> all;
    for (const auto& [key, setting] : settings) {
        if (isOffered(setting)) {
            if (options.homeAssistant) {
                all.push_back(discoveryOf(setting, options.id, topics, options.version));
            }
            all.push_back(stateMessage(setting));
        } else if (!wasConnected) {
            // An earlier run may have offered it.
            if (options.homeAssistant) {
                all.push_back(noDiscoveryOf(setting, options.id));
            }
            all.push_back(retainedMessage(topics.state(key), ""));
        }
    }
    all.push_back(availability());
    wasConnected = true;
    outbox.connected(std::move(all));
}

void Bridge::brokerLost() {
    outbox.lost();
    versions.parted();
}

void Bridge::acknowledged(int number) {
    outbox.acknowledged(number);
    if (outbox.isEmpty()) {
        versions.agreed();
    }
}

void Bridge::received(const Message& message) {
    const auto target = topics.targetOf(message.topic);
    // An empty payload is how a retained message is removed.
    if (!target || message.payload.empty()) {
        return;
    }
    try {
        if (target->kind == Topics::Target::Kind::SET) {
            receivedSet(target->key, message);
        } else {
            receivedDesired(target->key, message);
        }
    } catch (const BadPayload& fault) {
        publishOutcome(target->key, {}, refusal(fault.reason(), fault.what()));
    }
}

std::optional<SettingsClient::Answer> Bridge::refusalOf(const std::string& key) const {
    const auto setting = settings.find(key);
    if (setting == settings.end()) {
        return refusal(BridgeReason::unknownKey, "there is no setting of that key");
    }
    if (!isOffered(setting->second)) {
        return refusal(BridgeReason::notOffered, "this setting is personal and not offered here");
    }
    return std::nullopt;
}

void Bridge::receivedSet(const std::string& key, const Message& message) {
    const Command command = parseSet(message.payload);
    if (message.retained) {
        publishOutcome(key, command, refusal(BridgeReason::retained, "a retained set is not carried out; use desired"));
        return;
    }
    const auto same = std::find_if(answered.begin(), answered.end(), [&](const Answered& other) {
        return other.message.topic == message.topic && other.message.payload == message.payload;
    });
    if (same != answered.end()) {
        outbox.add({topics.outcome(), same->outcome});
        return;
    }
    const auto refused = refusalOf(key);
    const Answer answer = refused ? *refused : setAtHost(key, command.value);
    const std::string outcome = publishOutcome(key, command, answer);
    if (!command.id.empty() && answer.reason != BridgeReason::unavailable) {
        answered.push_back({message, outcome});
        if (answered.size() > maximumAnswered) {
            answered.pop_front();
        }
    }
}

void Bridge::receivedDesired(const std::string& key, const Message& message) {
    const Desired desired{parseDesired(message.payload), message.retained};
    if (const auto refused = refusalOf(key)) {
        publishOutcome(key, desired.command, *refused);
    } else if (isHostThere) {
        applyDesired(key, desired);
    } else if (waiting.count(key) == 0 || waiting[key].command.version < desired.command.version) {
        waiting[key] = desired;
    }
}

void Bridge::applyDesired(const std::string& key, const Desired& desired) {
    const Command& command = desired.command;
    switch (versions.judge(key, command.version, desired.retained)) {
        case Versions::Verdict::OLD:
            // Retained ones come again with each connection.
            if (!desired.retained) {
                publishOutcome(key, command,
                               refusal(BridgeReason::oldVersion, "this version, or a newer one, came before"));
            }
            return;
        case Versions::Verdict::CHANGED_SINCE:
            versions.settle(key, command.version);
            publishOutcome(key, command,
                           refusal(BridgeReason::changedSince, "the setting was changed at the device meanwhile"));
            return;
        case Versions::Verdict::APPLY:
            break;
    }
    const Answer answer = setAtHost(key, command.value);
    if (answer.reason == BridgeReason::unavailable) {
        waiting[key] = desired;
        return;
    }
    // Both may pass: a full disk may have room when the device is on again.
    if (answer.reason != SettingsClient::Reason::notStored && answer.reason != Wire::RefusalCode::busy) {
        versions.settle(key, command.version);
    }
    publishOutcome(key, command, answer);
}

SettingsClient::Answer Bridge::setAtHost(const std::string& key, const std::string& value) {
    if (!isHostThere) {
        return refusal(BridgeReason::unavailable, "the settings of the device are not available");
    }
    try {
        Answer answer = host->set(key, value, std::nullopt);
        if (answer.reason == SettingsClient::Reason::stale && answer.newest) {
            // A client whose clock was ahead; the order of arrival counts, as messages have no time of their own.
            answer = host->set(key, value, *answer.newest + 1);
        }
        return answer;
    } catch (const SettingsClient::RequestRefused& fault) {
        return refusal(fault.code(), fault.message());
    } catch (const std::runtime_error& fault) {
        options.log(2, std::string("cannot set ") + key + ": " + fault.what());
        hostLost();
        return refusal(BridgeReason::unavailable, "the settings of the device are not available");
    }
}

std::string Bridge::publishOutcome(const std::string& key, const Command& command, const Answer& answer) {
    std::string outcome = outcomePayload(key, command, answer);
    outbox.add({topics.outcome(), outcome});
    return outcome;
}

void Bridge::stop() {
    hostLost();
}

}  // namespace SettingsMqtt
