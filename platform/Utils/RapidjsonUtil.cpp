#include "Utils/RapidjsonUtil.h"

namespace Utils::RapidjsonUtil {

namespace {

/// The first member of `object` named `key`; null when there is none or `object` is not an object. `Json` is
/// `rapidjson::Value`, const or not.
template <typename Json>
Json* findMember(Json& object, const std::string& key) {
    if (!object.IsObject()) {
        return nullptr;
    }
    const auto member = object.FindMember(
        rapidjson::Value(rapidjson::StringRef(key.data(), static_cast<rapidjson::SizeType>(key.size()))));
    return member == object.MemberEnd() ? nullptr : &member->value;
}

}  // namespace

bool tryGetObjectMember(rapidjson::Value& object, const std::string& key, rapidjson::Value& out) {
    rapidjson::Value* const member = findMember(object, key);
    if (member == nullptr || !member->IsObject()) {
        return false;
    }
    out = *member;
    return true;
}

bool tryGetInt64Member(const rapidjson::Value& object, const std::string& key, long& out) {
    const rapidjson::Value* const member = findMember(object, key);
    if (member == nullptr || !member->IsInt64()) {
        return false;
    }
    out = static_cast<long>(member->GetInt64());
    return true;
}

bool tryGetStringMember(const rapidjson::Value& object, const std::string& key, std::string& out) {
    const rapidjson::Value* const member = findMember(object, key);
    if (member == nullptr || !member->IsString()) {
        return false;
    }
    out.assign(member->GetString(), member->GetStringLength());
    return true;
}

bool tryGetValueArrayMember(rapidjson::Value& object, const std::string& key, rapidjson::Value& out) {
    rapidjson::Value* const member = findMember(object, key);
    if (member == nullptr || !member->IsArray()) {
        return false;
    }
    out = *member;
    return true;
}

std::string stringify(const rapidjson::Value& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return std::string(buffer.GetString(), buffer.GetSize());
}

std::string stringifyVector(const std::vector<std::string>& values) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartArray();
    for (const auto& value : values) {
        writer.String(value);
    }
    writer.EndArray();
    return std::string(buffer.GetString(), buffer.GetSize());
}

}  // namespace Utils::RapidjsonUtil
