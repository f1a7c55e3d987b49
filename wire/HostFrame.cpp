#include "Wire/HostFrame.h"

#include <string_view>
#include <utility>

#include "Wire/MessageType.h"
#include "Wire/Utf8.h"

namespace Wire {

namespace {

std::string_view viewOf(const rapidjson::Value& value) {
    return {value.GetString(), value.GetStringLength()};
}

std::string stringOf(const rapidjson::Value& value) {
    return std::string(viewOf(value));
}

std::string textOf(const rapidjson::Value& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

const rapidjson::Value* member(const rapidjson::Value& object, const char* name) {
    if (!object.IsObject()) {
        return nullptr;
    }
    const auto found = object.FindMember(name);
    return found == object.MemberEnd() ? nullptr : &found->value;
}

}  // namespace

HostFrame::HostFrame(std::string received)
    : line(std::move(received)), parsed(line.c_str(), line.c_str() + line.size() + 1) {
    // The parser stops at a NUL. With its own check of the encoding and its copies of texts it takes twice as long.
    if (line.find('\0') != std::string::npos || !isValidUtf8(line) ||
        document.ParseInsitu<Utils::jsonParseFlags>(parsed.data()).HasParseError() || !document.IsObject()) {
        throw MalformedFrame("not a JSON object");
    }
    const auto* const type = at({"type"});
    hasEvent = type != nullptr && type->IsInt() && type->GetInt() == SETTING_CHANGED;
}

const rapidjson::Value* HostFrame::at(Path path) const {
    const rapidjson::Value* value = &document;
    for (const char* const name : path) {
        value = value == nullptr ? nullptr : member(*value, name);
    }
    return value;
}

bool HostFrame::isReplyTo(const std::string& messageId) const {
    const auto* const id = at({"messageId"});
    return !isEvent() && id != nullptr && id->IsString() && viewOf(*id) == messageId;
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
    const auto* const payload = at({"payload"});
    if (payload == nullptr || !payload->IsObject()) {
        throw MalformedFrame();
    }
    const auto text = [&](const char* name) {
        const auto* const value = member(*payload, name);
        return value == nullptr ? throw MalformedFrame() : stringOf(*value);
    };
    for (const auto& entry : payload->GetObject()) {
        if (!entry.value.IsString()) {
            throw MalformedFrame();
        }
    }
    return Change{text("settingDBId"), text("from"), text("to")};
}

std::optional<std::vector<std::string>> HostFrame::reread() const {
    return textsAt({"notice", "reread"});
}

std::optional<Refusal> HostFrame::refusal() const {
    const auto* const error = at({"error"});
    if (error == nullptr) {
        return std::nullopt;
    }
    if (!error->IsObject()) {
        throw MalformedFrame();
    }
    const auto text = [this](const char* name) {
        const auto value = textAt({"error", name});
        if (!value && at({"error", name}) != nullptr) {
            throw MalformedFrame();
        }
        return value.value_or("");
    };
    return Refusal{text("code"), text("message")};
}

std::map<std::string, std::string> HostFrame::stringsAt(Path path) const {
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

std::optional<bool> HostFrame::booleanAt(Path path) const {
    const rapidjson::Value* const value = at(path);
    if (value == nullptr || !value->IsBool()) {
        return std::nullopt;
    }
    return value->GetBool();
}

std::optional<std::int64_t> HostFrame::integerAt(Path path) const {
    const rapidjson::Value* const value = at(path);
    return value == nullptr || !value->IsInt64() ? std::nullopt : std::optional(value->GetInt64());
}

std::map<std::string, std::int64_t> HostFrame::integersAt(Path path) const {
    std::map<std::string, std::int64_t> integers;
    const rapidjson::Value* const object = at(path);
    if (object == nullptr || !object->IsObject()) {
        return integers;
    }
    for (const auto& entry : object->GetObject()) {
        if (entry.value.IsInt64()) {
            integers[stringOf(entry.name)] = entry.value.GetInt64();
        }
    }
    return integers;
}

std::optional<std::string> HostFrame::textAt(Path path) const {
    const rapidjson::Value* const value = at(path);
    return value == nullptr || !value->IsString() ? std::nullopt : std::optional(stringOf(*value));
}

std::string HostFrame::objectAt(Path path) const {
    const rapidjson::Value* const value = at(path);
    if (value == nullptr || !value->IsObject()) {
        throw MalformedFrame();
    }
    return textOf(*value);
}

std::vector<std::string> HostFrame::objectsAt(Path path) const {
    const rapidjson::Value* const value = at(path);
    if (value == nullptr || !value->IsArray()) {
        throw MalformedFrame();
    }
    std::vector<std::string> objects;
    for (const auto& element : value->GetArray()) {
        if (!element.IsObject()) {
            throw MalformedFrame();
        }
        objects.push_back(textOf(element));
    }
    return objects;
}

std::optional<std::vector<std::string>> HostFrame::textsAt(Path path) const {
    const rapidjson::Value* const value = at(path);
    if (value == nullptr || !value->IsArray()) {
        return std::nullopt;
    }
    std::vector<std::string> texts;
    for (const auto& element : value->GetArray()) {
        if (element.IsString()) {
            texts.push_back(stringOf(element));
        }
    }
    return texts;
}

}  // namespace Wire
