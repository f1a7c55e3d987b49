#include "Bridge.h"

#include <algorithm>
#include <stdexcept>

#include "Wire/RefusalCode.h"

namespace SettingsMqtt {

namespace {

using SettingsClient::RequestRefused;

/// Commands with an id that are remembered.
constexpr std::size_t maximumAnswered = 32;

}  // namespace

Bridge::Bridge(BridgeOptions chosen, std::shared_ptr<Mqtt::Broker> brokerConnection,
               std::shared_ptr<Host> hostConnection, std::shared_ptr<Versions> ofDesiredValues)
    : options(std::move(chosen)),
      topics(options.id, options.groups),
      broker(std::move(brokerConnection)),
      host(std::move(hostConnection)),
      outbox(broker),
      versions(std::move(ofDesiredValues)) {}

bool Bridge::isOffered(const Setting& setting) const {
    return setting.privacy == "preference" || options.included.count(setting.key) > 0;
}

void Bridge::requireOffered(const std::string& key) const {
    const auto setting = settings.find(key);
    if (setting == settings.end()) {
        throw RequestRefused("unknown-key", "there is no setting with this key");
    }
    if (!isOffered(setting->second)) {
        throw RequestRefused("not-offered", "this personal setting is not published by this device");
    }
}

/// A personal setting that nobody gave a value has none here, so a log-out leaves an empty topic.
Message Bridge::stateOf(const Setting& setting) const {
    const auto value = values.find(setting.key);
    const bool isEmpty =
        value == values.end() || (setting.privacy != "preference" && value->second == setting.defaultValue);
    return {topics.state(setting.key), isEmpty ? "" : value->second.value_or(""), true};
}

void Bridge::hostConnected() {
    const auto catalogue = host->catalogue();
    // Another version of the host may have other settings.
    settings.clear();
    for (const auto& setting : catalogue) {
        settings.emplace(setting.key, setting);
    }
    for (const auto& key : options.included) {
        if (settings.count(key) == 0) {
            options.log(2, "--include: the host has no setting " + key);
        }
    }
    reread({});
    isHostThere = true;
    outbox.add(topics.availability(true));
    for (const auto& [key, command] : std::exchange(waiting, {})) {
        applyDesired(command);
    }
}

void Bridge::hostLost() {
    if (std::exchange(isHostThere, false)) {
        outbox.add(topics.availability(false));
    }
}

void Bridge::take(const std::string& key, const std::optional<std::string>& value, const SettingsClient::Event* event) {
    const auto setting = settings.find(key);
    if (setting == settings.end() || !isOffered(setting->second)) {
        return;
    }
    versions->valueIs(key, value, event != nullptr && event->client == options.client);
    const std::string slot = "event of " + key;
    const auto [known, isNew] = values.emplace(key, value);
    if (isNew || known->second != value) {
        known->second = value;
        // Of a value that is gone; after a log-out nobody may read it any more.
        outbox.forget(slot);
        outbox.add(stateOf(setting->second));
    }
    if (event != nullptr) {
        outbox.add({topics.event(), eventPayload(*event)}, slot);
    }
}

void Bridge::reread(const std::vector<std::string>& keys) {
    const auto current = host->get(keys);
    for (const auto& [key, setting] : settings) {
        if (keys.empty() || std::find(keys.begin(), keys.end(), key) != keys.end()) {
            const auto found = current.find(key);
            take(key, found == current.end() ? std::nullopt : std::optional(found->second), nullptr);
        }
    }
}

void Bridge::brokerConnected() {
    broker->subscribe(topics.subscriptions());
    std::vector<Message> all;
    for (const auto& [key, setting] : settings) {
        // Also once of what is not offered: an earlier run may have offered it.
        if (isOffered(setting) || !wasConnected) {
            if (options.homeAssistant) {
                all.push_back(discoveryOf(setting, topics, options.version, isOffered(setting)));
            }
            all.push_back(stateOf(setting));
        }
    }
    all.push_back(topics.availability(isHostThere));
    wasConnected = true;
    outbox.connected(std::move(all));
}

void Bridge::brokerLost() {
    outbox.lost();
    versions->parted();
}

void Bridge::acknowledged(int number) {
    outbox.acknowledged(number);
    if (outbox.isEmpty()) {
        versions->agreed();
    }
}

void Bridge::received(const Message& message) {
    auto command = topics.commandOf(message);
    // An empty payload is how a retained message is removed.
    if (!command || message.payload.empty()) {
        return;
    }
    try {
        command = readPayload(*command);
        if (!command->isDesired) {
            return receivedSet(*command, message);
        }
        requireOffered(command->key);
        if (isHostThere) {
            applyDesired(*command);
        } else if (waiting[command->key].version < command->version) {
            waiting[command->key] = *command;
        }
    } catch (const RequestRefused& fault) {
        publishOutcome(*command, refusal(fault.code(), fault.message()));
    }
}

void Bridge::receivedSet(const Command& command, const Message& message) {
    if (command.retained) {
        throw RequestRefused("retained", "a retained set is not carried out; use desired");
    }
    // No topic has a NUL.
    const std::string identity = message.topic + '\0' + message.payload;
    const auto same =
        std::find_if(answered.begin(), answered.end(), [&](const auto& other) { return other.first == identity; });
    if (same != answered.end()) {
        return outbox.add({topics.outcome(), same->second});
    }
    requireOffered(command.key);
    const Answer answer = setAtHost(command);
    const std::string outcome = publishOutcome(command, answer);
    if (!command.id.empty() && answer.reason != unavailable) {
        answered.emplace_back(identity, outcome);
        if (answered.size() > maximumAnswered) {
            answered.pop_front();
        }
    }
}

void Bridge::applyDesired(const Command& command) {
    const auto verdict = versions->judge(command.key, command.version, command.retained);
    if (verdict == Versions::Verdict::OLD) {
        // Retained ones come again with each connection.
        if (!command.retained) {
            publishOutcome(command, refusal("old-version", "this version or a newer one was received before"));
        }
        return;
    }
    const Answer answer = verdict == Versions::Verdict::CHANGED_SINCE
                              ? refusal("changed-since", "the setting was changed at the device in the meantime")
                              : setAtHost(command);
    if (answer.reason == unavailable) {
        waiting[command.key] = command;
        return;
    }
    // Both may pass: a full disk may have room when the device is on again.
    if (answer.reason != SettingsClient::Reason::notStored && answer.reason != Wire::RefusalCode::busy) {
        versions->settle(command.key, command.version);
    }
    publishOutcome(command, answer);
}

SettingsClient::Answer Bridge::setAtHost(const Command& command) {
    try {
        if (isHostThere) {
            Answer answer = host->set({command.key, command.value});
            if (answer.reason == SettingsClient::Reason::stale && answer.newest) {
                // A client whose clock was ahead; the order of arrival counts, as messages have no time of their own.
                answer = host->set({command.key, command.value, *answer.newest + 1});
            }
            return answer;
        }
    } catch (const RequestRefused& fault) {
        return refusal(fault.code(), fault.message());
    } catch (const std::runtime_error& fault) {
        options.log(2, "cannot set " + command.key + ": " + fault.what());
        hostLost();
    }
    return refusal(unavailable, "the settings of the device are not available");
}

std::string Bridge::publishOutcome(const Command& command, const Answer& answer) {
    std::string outcome = outcomePayload(command, answer);
    outbox.add({topics.outcome(), outcome});
    return outcome;
}

}  // namespace SettingsMqtt
