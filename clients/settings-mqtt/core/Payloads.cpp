#include "Payloads.h"

#include <cctype>

#include "Wire/JsonShape.h"
#include "Wire/ObjectWriter.h"

namespace SettingsMqtt {

namespace {

using SettingsClient::RequestRefused;
using SettingsClient::Setting;

/// The largest integer that every JSON reader keeps exactly.
constexpr std::int64_t largestVersion = 9007199254740991;

[[noreturn]] void fail(const std::string& message) {
    throw RequestRefused("bad-payload", message);
}

std::string textIn(const rapidjson::Document& object, const char* name) {
    const auto member = object.FindMember(name);
    if (member == object.MemberEnd() || !member->value.IsString()) {
        fail(std::string("the payload has no string \"") + name + "\"");
    }
    return {member->value.GetString(), member->value.GetStringLength()};
}

std::int64_t versionIn(const rapidjson::Document& object) {
    const auto version = object.FindMember("version");
    if (version == object.MemberEnd() || !version->value.IsInt64() || version->value.GetInt64() < 1 ||
        version->value.GetInt64() > largestVersion) {
        fail("\"version\" is not an integer from 1 to 9007199254740991");
    }
    return version->value.GetInt64();
}

const char* componentFor(const Setting& setting) {
    const bool isReadOnly = setting.setBy != "anyone";
    if (setting.kind == "switch") {
        return isReadOnly ? "binary_sensor" : "switch";
    }
    if (isReadOnly) {
        return "sensor";
    }
    return setting.kind == "choice" ? "select" : "text";
}

/// "captionsFontSize": "Captions font size".
std::string nameOf(const std::string& key) {
    std::string name;
    for (const char character : key) {
        const auto letter = static_cast<unsigned char>(character);
        if (!name.empty() && std::isupper(letter) != 0) {
            name += ' ';
        }
        name += static_cast<char>(name.empty() ? std::toupper(letter) : std::tolower(letter));
    }
    return name;
}

}  // namespace

Command readPayload(Command command) {
    const std::string& payload = command.value;
    if (payload.size() > 65536) {
        throw RequestRefused("too-large", "the payload has more than 65536 bytes");
    }
    if (!Wire::isValidUtf8(payload) || payload.find('\0') != std::string::npos) {
        fail("the payload is not UTF-8 text");
    }
    if (!command.isDesired && payload.front() != '{') {
        return command;
    }
    rapidjson::Document object;
    const auto shape = Wire::shapeOf(payload, object);
    if (!shape.valid || shape.root != Wire::JsonShape::Root::OBJECT || !shape.wellFormed ||
        shape.nesting > Wire::maximumNesting) {
        fail("the payload is not a JSON object");
    }
    command.value = textIn(object, "value");
    command.id = object.HasMember("id") ? textIn(object, "id") : "";
    if (command.id.size() > 128) {
        fail("\"id\" has more than 128 bytes");
    }
    command.version = command.isDesired ? versionIn(object) : 0;
    return command;
}

std::string eventPayload(const SettingsClient::Event& event) {
    Wire::ObjectWriter json;
    json.text("key", event.key);
    json.text("from", event.from);
    json.text("to", event.to);
    json.number("sequence", event.sequence);
    json.number("timestamp", event.timestamp);
    json.text("origin", event.origin);
    if (!event.client.empty()) {
        json.text("client", event.client);
    }
    return json.finish();
}

std::string outcomePayload(const Command& command, const SettingsClient::Answer& answer) {
    const bool isChanged = answer.outcome == SettingsClient::Outcome::CHANGED;
    Wire::ObjectWriter json;
    json.text("key", command.key);
    json.text("outcome", !answer.accepted() ? "refused" : isChanged ? "changed" : "unchanged");
    if (answer.value) {
        json.text("value", *answer.value);
    }
    if (!answer.applied) {
        json.boolean("applied", false);
    }
    if (!answer.accepted()) {
        json.text("reason", answer.reason);
        json.text("message", answer.message);
    }
    if (!command.id.empty()) {
        json.text("id", command.id);
    }
    if (command.version != 0) {
        json.number("version", command.version);
    }
    return json.finish();
}

Message discoveryOf(const Setting& setting, const Topics& topics, const std::string& version, bool isOffered) {
    const std::string component = componentFor(setting);
    const std::string device = "settings-" + topics.id;
    const std::string topic = "homeassistant/" + component + "/" + device + "/" + setting.key + "/config";
    if (!isOffered) {
        return {topic, "", true};
    }
    Wire::ObjectWriter json;
    json.text("name", nameOf(setting.key));
    json.text("unique_id", device + "-" + setting.key);
    json.text("state_topic", topics.state(setting.key));
    json.text("availability_topic", topics.availability(true).topic);
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
        // What is longer cannot be typed there.
        json.number("max", 255);
    }
    json.beginObject("device");
    json.texts("identifiers", std::vector<std::string>{device});
    json.text("name", "Television " + topics.id);
    json.text("sw_version", version);
    json.endObject();
    return {topic, json.finish(), true};
}

SettingsClient::Answer refusal(const std::string& reason, const std::string& message) {
    SettingsClient::Answer answer;
    answer.outcome = SettingsClient::Outcome::REFUSED;
    answer.reason = reason;
    answer.message = message;
    return answer;
}

}  // namespace SettingsMqtt
