#include "Wire/Requests.h"

#include "Utils/Rapidjson.h"

namespace Wire {

namespace {

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

void startRequest(JsonWriter& writer, MessageType type, const std::string& messageId) {
    writer.StartObject();
    writer.Key("type");
    writer.Int(type);
    writer.Key("messageId");
    writer.String(messageId);
}

std::string finishRequest(JsonWriter& writer, const rapidjson::StringBuffer& buffer) {
    writer.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace

std::string getSettingsRequest(const std::string& messageId, const std::vector<std::string>& keys) {
    rapidjson::StringBuffer buffer;
    JsonWriter writer(buffer);
    startRequest(writer, GET_SETTINGS, messageId);
    writer.Key("payload");
    writer.StartObject();
    writer.Key("settings");
    writer.StartArray();
    for (const auto& key : keys) {
        writer.String(key);
    }
    writer.EndArray();
    writer.EndObject();
    return finishRequest(writer, buffer);
}

std::string setSettingsRequest(const std::string& messageId, std::int64_t timestamp, const std::string& key,
                               const std::string& value) {
    rapidjson::StringBuffer buffer;
    JsonWriter writer(buffer);
    startRequest(writer, SET_SETTINGS, messageId);
    writer.Key("timestamp");
    writer.Int64(timestamp);
    writer.Key("payload");
    writer.StartObject();
    writer.Key("settingDBId");
    writer.String(key);
    writer.Key("to");
    writer.String(value);
    writer.EndObject();
    return finishRequest(writer, buffer);
}

std::string bareRequest(MessageType type, const std::string& messageId) {
    rapidjson::StringBuffer buffer;
    JsonWriter writer(buffer);
    startRequest(writer, type, messageId);
    return finishRequest(writer, buffer);
}

}  // namespace Wire
