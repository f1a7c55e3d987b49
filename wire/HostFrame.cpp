#include "Wire/HostFrame.h"

#include <utility>

#include "Wire/MessageType.h"

namespace Wire {

namespace {

constexpr unsigned parseFlags = Utils::jsonParseFlags | rapidjson::kParseValidateEncodingFlag;

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

}  // namespace

HostFrame::HostFrame(std::string received) : line(std::move(received)) {
    // The parser stops at a NUL.
    if (line.find('\0') != std::string::npos || document.Parse<parseFlags>(line.c_str()).HasParseError() ||
        !document.IsObject()) {
        throw MalformedFrame("not a JSON object");
    }
}

const rapidjson::Value* HostFrame::at(const std::vector<const char*>& path) const {
    const rapidjson::Value* value = &document;
    for (const char* const name : path) {
        value = value == nullptr ? nullptr : member(*value, name);
    }
    return value;
}

bool HostFrame::isEvent() const {
    const auto* const type = at({"type"});
    return type != nullptr && type->IsInt() && type->GetInt() == SETTING_CHANGED;
}

bool HostFrame::isReplyTo(const std::string& messageId) const {
    const auto* const id = at({"messageId"});
    return !isEvent() && id != nullptr && id->IsString() && stringOf(*id) == messageId;
}

std::optional<std::int64_t> HostFrame::timestamp() const {
    const auto* const timestamp = at({"timestamp"});
    if (!isEvent() || timestamp == nullptr || !timestamp->IsInt64()) {
        return std::nullopt;
    }
    return timestamp->GetInt64();
}

std::optional<Change> HostFrame::change() const {
    if (!isEvent()) {
        return std::nullopt;
    }
    const auto payload = stringsAt({"payload"});
    const auto key = payload.find("settingDBId");
    const auto from = payload.find("from");
    const auto to = payload.find("to");
    if (key == payload.end() || from == payload.end() || to == payload.end()) {
        throw MalformedFrame();
    }
    return Change{key->second, from->second, to->second};
}

std::optional<std::vector<std::string>> HostFrame::reread() const {
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

std::optional<Refusal> HostFrame::refusal() const {
    const auto* const error = at({"error"});
    if (error == nullptr) {
        return std::nullopt;
    }
    if (!error->IsObject()) {
        throw MalformedFrame();
    }
    const auto text = [error](const char* name) {
        const auto* const value = member(*error, name);
        if (value != nullptr && !value->IsString()) {
            throw MalformedFrame();
        }
        return value == nullptr ? "" : stringOf(*value);
    };
    return Refusal{text("code"), text("message")};
}

std::map<std::string, std::string> HostFrame::stringsAt(const std::vector<const char*>& path) const {
    const rapidjson::Value* const object = at(path);
    if (object == nullptr || !object->IsObject()) {
        throw MalformedFrame();
    }
    std::map<std::string, std::string> strings;
    for (const auto& entry : object->GetObject()) {
        if (!entry.value.IsString()) {
            throw MalformedFrame();
        }
        strings[stringOf(entry.name)] = stringOf(entry.value);
    }
    return strings;
}

std::optional<bool> HostFrame::booleanAt(const std::vector<const char*>& path) const {
    const rapidjson::Value* const value = at(path);
    if (value == nullptr || !value->IsBool()) {
        return std::nullopt;
    }
    return value->GetBool();
}

}  // namespace Wire
