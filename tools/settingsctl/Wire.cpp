#include "Wire.h"

#include <utility>

#include "Failure.h"

namespace SettingsCtl {

namespace {

std::string stringOf(const rapidjson::Value& value) {
    return {value.GetString(), value.GetStringLength()};
}

const rapidjson::Value* member(const rapidjson::Value& object, const char* name) {
    if (!object.IsObject()) {
        return nullptr;
    }
    const auto found = object.FindMember(name);
    return found == object.MemberEnd() ? nullptr : &found->value;
}

void startRequest(JsonWriter& writer, MessageType type, const std::string& messageId) {
    writer.StartObject();
    writer.Key("type");
    writer.Int(type);
    writer.Key("messageId");
    writer.String(messageId);
}

std::string finishRequest(JsonWriter& writer, const rapidjson::StringBuffer& buffer) {
    writer.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

}  // namespace

Frame::Frame(std::string received) : line(std::move(received)) {
    if (document.Parse<jsonParseFlags>(line.c_str()).HasParseError() || !document.IsObject()) {
        throw Failure(UNREACHABLE, "what answers is no settings host: it sent something that is no JSON object");
    }
}

const rapidjson::Value* Frame::at(const std::vector<const char*>& path) const {
    const rapidjson::Value* value = &document;
    for (const char* const name : path) {
        value = value == nullptr ? nullptr : member(*value, name);
    }
    return value;
}

bool Frame::isReplyTo(const std::string& messageId) const {
    const auto* const type = at({"type"});
    const auto* const id = at({"messageId"});
    return type != nullptr && type->IsInt() && type->GetInt() != SETTING_CHANGED && id != nullptr && id->IsString() &&
           stringOf(*id) == messageId;
}

std::optional<Change> Frame::change() const {
    const auto* const type = at({"type"});
    if (type == nullptr || !type->IsInt() || type->GetInt() != SETTING_CHANGED) {
        return std::nullopt;
    }
    auto payload = stringsAt({"payload"});
    return Change{payload["settingDBId"], payload["from"], payload["to"]};
}

std::optional<std::vector<std::string>> Frame::reread() const {
    const auto* const keys = at({"notice", "reread"});
    if (keys == nullptr || !keys->IsArray()) {
        return std::nullopt;
    }
    std::vector<std::string> result;
    for (const auto& key : keys->GetArray()) {
        if (key.IsString()) {
            result.push_back(stringOf(key));
        }
    }
    return result;
}

void Frame::throwIfRefusal() const {
    if (at({"error"}) != nullptr) {
        auto error = stringsAt({"error"});
        throw Failure(REFUSED, "the host refused it: " + error["message"] + " (" + error["code"] + ")");
    }
}

std::map<std::string, std::string> Frame::stringsAt(const std::vector<const char*>& path) const {
    std::map<std::string, std::string> strings;
    const rapidjson::Value* const object = at(path);
    if (object != nullptr && object->IsObject()) {
        for (const auto& entry : object->GetObject()) {
            if (entry.value.IsString()) {
                strings[stringOf(entry.name)] = stringOf(entry.value);
            }
        }
    }
    return strings;
}

std::optional<bool> Frame::booleanAt(const std::vector<const char*>& path) const {
    const rapidjson::Value* const value = at(path);
    if (value == nullptr || !value->IsBool()) {
        return std::nullopt;
    }
    return value->GetBool();
}

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

std::string setSettingsRequest(const std::string& messageId, std::int64_t timestamp, const Change& wanted) {
    rapidjson::StringBuffer buffer;
    JsonWriter writer(buffer);
    startRequest(writer, SET_SETTINGS, messageId);
    writer.Key("timestamp");
    writer.Int64(timestamp);
    writer.Key("payload");
    writer.StartObject();
    writer.Key("settingDBId");
    writer.String(wanted.key);
    writer.Key("to");
    writer.String(wanted.to);
    writer.EndObject();
    return finishRequest(writer, buffer);
}

std::string bareRequest(MessageType type, const std::string& messageId) {
    rapidjson::StringBuffer buffer;
    JsonWriter writer(buffer);
    startRequest(writer, type, messageId);
    return finishRequest(writer, buffer);
}

}  // namespace SettingsCtl
