#include "Payloads.h"

#include "Wire/JsonShape.h"
#include "Wire/ObjectWriter.h"

namespace SettingsMqtt {

namespace {

constexpr std::size_t maximumId = 128;
/// The largest integer that every JSON reader keeps exactly.
constexpr std::int64_t largestVersion = 9007199254740991;

void checkBytes(const std::string& payload) {
    if (payload.size() > maximumPayload) {
        throw BadPayload(BridgeReason::tooLarge, "the payload has more than 65536 bytes");
    }
    if (!Wire::isValidUtf8(payload) || payload.find('\0') != std::string::npos) {
        throw BadPayload(BridgeReason::badPayload, "the payload is not UTF-8 text");
    }
}

std::string textIn(const rapidjson::Document& object, const char* name) {
    const auto member = object.FindMember(name);
    if (member == object.MemberEnd() || !member->value.IsString()) {
        throw BadPayload(BridgeReason::badPayload, std::string("the payload has no string \"") + name + "\"");
    }
    return {member->value.GetString(), member->value.GetStringLength()};
}

/// An object with `value` and perhaps `id`.
Command parseObject(const std::string& payload, rapidjson::Document& object) {
    const auto shape = Wire::shapeOf(payload, object);
    if (!shape.valid || shape.root != Wire::JsonShape::Root::OBJECT || !shape.wellFormed ||
        shape.nesting > Wire::maximumNesting) {
        throw BadPayload(BridgeReason::badPayload, "the payload is not a JSON object");
    }
    Command command;
    command.value = textIn(object, "value");
    if (object.HasMember("id")) {
        command.id = textIn(object, "id");
    }
    if (command.id.size() > maximumId) {
        throw BadPayload(BridgeReason::badPayload, "\"id\" has more than 128 bytes");
    }
    return command;
}

const char* wordOf(SettingsClient::Outcome outcome) {
    switch (outcome) {
        case SettingsClient::Outcome::CHANGED:
            return "changed";
        case SettingsClient::Outcome::UNCHANGED:
            return "unchanged";
        case SettingsClient::Outcome::DONE:
            return "done";
        case SettingsClient::Outcome::REFUSED:
            break;
    }
    return "refused";
}

}  // namespace

Command parseSet(const std::string& payload) {
    checkBytes(payload);
    if (payload.front() != '{') {
        Command command;
        command.value = payload;
        return command;
    }
    rapidjson::Document object;
    return parseObject(payload, object);
}

Command parseDesired(const std::string& payload) {
    checkBytes(payload);
    rapidjson::Document object;
    Command command = parseObject(payload, object);
    const auto version = object.FindMember("version");
    if (version == object.MemberEnd() || !version->value.IsInt64() || version->value.GetInt64() < 1 ||
        version->value.GetInt64() > largestVersion) {
        throw BadPayload(BridgeReason::badPayload, "\"version\" is not an integer from 1 to 9007199254740991");
    }
    command.version = version->value.GetInt64();
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

std::string outcomePayload(const std::string& key, const Command& command, const SettingsClient::Answer& answer) {
    Wire::ObjectWriter json;
    json.text("key", key);
    json.text("outcome", wordOf(answer.outcome));
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

SettingsClient::Answer refusal(const std::string& reason, const std::string& message) {
    SettingsClient::Answer answer;
    answer.outcome = SettingsClient::Outcome::REFUSED;
    answer.reason = reason;
    answer.message = message;
    return answer;
}

}  // namespace SettingsMqtt
