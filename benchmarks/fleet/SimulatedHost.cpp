#include "fleet/SimulatedHost.h"

#include <chrono>

#include "Wire/Catalogue.h"
#include "Wire/HostFrame.h"

namespace Benchmarks {

namespace {

/// As a client gets it.
std::vector<SettingsClient::Setting> readCatalogue() {
    std::vector<SettingsClient::Setting> settings;
    for (const auto& entry : Wire::HostFrame(std::string(Wire::catalogueText())).objectsAt({"settings"})) {
        const Wire::HostFrame setting(entry);
        const auto text = [&](const char* member) { return setting.textAt({member}).value_or(""); };
        settings.push_back({text("key"), static_cast<int>(setting.integerAt({"number"}).value_or(0)), text("kind"),
                            setting.textsAt({"values"}).value_or(std::vector<std::string>()),
                            setting.textAt({"default"}), text("owner"), text("setBy"), text("privacy"),
                            text("description")});
    }
    return settings;
}

const std::vector<SettingsClient::Setting>& catalogueOfAll() {
    static const auto settings = readCatalogue();
    return settings;
}

}  // namespace

SimulatedHost::SimulatedHost() {
    for (const auto& setting : catalogueOfAll()) {
        values[setting.key] = setting.defaultValue.value_or(setting.kind == "switch" ? "false" : "none");
    }
}

std::vector<SettingsClient::Setting> SimulatedHost::catalogue() {
    return catalogueOfAll();
}

std::map<std::string, std::string> SimulatedHost::get(const std::vector<std::string>& keys) {
    if (keys.empty()) {
        return values;
    }
    std::map<std::string, std::string> wanted;
    for (const auto& key : keys) {
        const auto found = values.find(key);
        if (found != values.end()) {
            wanted.insert(*found);
        }
    }
    return wanted;
}

SettingsClient::Answer SimulatedHost::set(const SettingsClient::Assignment& wanted) {
    SettingsClient::Answer answer;
    answer.value = wanted.value;
    answer.outcome =
        values[wanted.key] == wanted.value ? SettingsClient::Outcome::UNCHANGED : SettingsClient::Outcome::CHANGED;
    if (answer.outcome == SettingsClient::Outcome::CHANGED) {
        assign(wanted.key, wanted.value, "socket");
    }
    return answer;
}

void SimulatedHost::assign(const std::string& key, const std::string& value, const std::string& origin) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    SettingsClient::Event event;
    event.key = key;
    event.from = std::exchange(values[key], value);
    event.to = value;
    event.timestamp = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
    event.sequence = ++sequence;
    event.origin = origin;
    events.push_back(std::move(event));
}

}  // namespace Benchmarks
