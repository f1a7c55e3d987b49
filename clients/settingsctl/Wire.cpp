#include "Wire.h"

#include <utility>

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

Failure malformedFrame() {
    return {UNREACHABLE, "unexpected response: not a settings-host (malformed frame)"};
}

Frame::Frame(std::string received) : line(std::move(received)) {
    // The parser stops at a NUL.
    if (line.find('\0') != std::string::npos || document.Parse<jsonParseFlags>(line.c_str()).HasParseError() ||
        !document.IsObject()) {
        throw Failure(UNREACHABLE, "unexpected response: not a settings-host (not a JSON object)");
    }
}

const rapidjson::Value* Frame::at(const std::vector<const char*>& path) const {
    const rapidjson::Value* value = &document;
    for (const char* const name : path) {
        value = value == nullptr ? nullptr : member(*value, name);
    }
    return value;
}

bool Frame::isEvent() const {
    const auto* const type = at({"type"});
    return type != nullptr && type->IsInt() && type->GetInt() == SETTING_CHANGED;
}

bool Frame::isReplyTo(const std::string& messageId) const {
    const auto* const id = at({"messageId"});
    return !isEvent() && id != nullptr && id->IsString() && stringOf(*id) == messageId;
}

std::optional<std::int64_t> Frame::timestamp() const {
    const auto* const timestamp = at({"timestamp"});
    if (!isEvent() || timestamp == nullptr || !timestamp->IsInt64()) {
        return std::nullopt;
    }
    return timestamp->GetInt64();
}

std::optional<Change> Frame::change() const {
    if (!isEvent()) {
        return std::nullopt;
    }
    const auto payload = stringsAt({"payload"});
    const auto key = payload.find("settingDBId");
    const auto from = payload.find("from");
    const auto to = payload.find("to");
    if (key == payload.end() || from == payload.end() || to == payload.end()) {
        throw malformedFrame();
    }
    return Change{key->second, from->second, to->second};
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
        if (error["code"] == "too-many-clients") {
            throw Failure(UNREACHABLE, "the host has reached its limit of clients; try again later");
        }
        throw Failure(REFUSED, "the host refused the request: " + error["message"] + " (" + error["code"] + ")");
    }
}

std::map<std::string, std::string> Frame::stringsAt(const std::vector<const char*>& path) const {
    const rapidjson::Value* const object = at(path);
    if (object == nullptr || !object->IsObject()) {
        throw malformedFrame();
    }
    std::map<std::string, std::string> strings;
    for (const auto& entry : object->GetObject()) {
        if (!entry.value.IsString()) {
            throw malformedFrame();
        }
        strings[stringOf(entry.name)] = stringOf(entry.value);
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

bool isValidUtf8(const std::string& text) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer, rapidjson::UTF8<>, rapidjson::UTF8<>, rapidjson::CrtAllocator,
                      rapidjson::kWriteValidateEncodingFlag>
        writer(buffer);
    return writer.String(text);
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

}  // namespace SettingsCtl
