#include "Discovery.h"

#include "Wire/ObjectWriter.h"

namespace SettingsMqtt {

namespace {

/// What is longer cannot be typed there.
constexpr int maximumText = 255;

std::string componentOf(const SettingsClient::Setting& setting) {
    const bool isReadOnly = setting.setBy != "anyone";
    if (setting.kind == "switch") {
        return isReadOnly ? "binary_sensor" : "switch";
    }
    if (isReadOnly) {
        return "sensor";
    }
    return setting.kind == "choice" ? "select" : "text";
}

std::string topicOf(const SettingsClient::Setting& setting, const std::string& id) {
    return "homeassistant/" + componentOf(setting) + "/settings-" + id + "/" + setting.key + "/config";
}

/// "captionsFontSize": "Captions font size".
std::string nameOf(const std::string& key) {
    std::string name;
    for (const char letter : key) {
        const bool isCapital = letter >= 'A' && letter <= 'Z';
        const bool isSmall = letter >= 'a' && letter <= 'z';
        if (name.empty() && isSmall) {
            name += static_cast<char>(letter - 'a' + 'A');
        } else if (!name.empty() && isCapital) {
            name += {' ', static_cast<char>(letter - 'A' + 'a')};
        } else {
            name += letter;
        }
    }
    return name;
}

}  // namespace

Message discoveryOf(const SettingsClient::Setting& setting, const std::string& id, const Topics& topics,
                    const std::string& version) {
    const std::string component = componentOf(setting);
    Wire::ObjectWriter json;
    json.text("name", nameOf(setting.key));
    json.text("unique_id", "settings-" + id + "-" + setting.key);
    json.text("state_topic", topics.state(setting.key));
    json.text("availability_topic", topics.availability());
    if (setting.setBy == "anyone") {
        json.text("command_topic", topics.set(setting.key));
        json.number("qos", 1);
    }
    if (setting.kind == "switch") {
        json.text("payload_on", "true");
        json.text("payload_off", "false");
    } else if (component == "select") {
        json.texts("options", setting.values);
    } else if (component == "text") {
        json.number("max", maximumText);
    }
    json.beginObject("device");
    json.texts("identifiers", std::vector<std::string>{"settings-" + id});
    json.text("name", "Television " + id);
    json.text("sw_version", version);
    json.endObject();
    return {topicOf(setting, id), json.finish(), true};
}

Message noDiscoveryOf(const SettingsClient::Setting& setting, const std::string& id) {
    return {topicOf(setting, id), "", true};
}

}  // namespace SettingsMqtt
