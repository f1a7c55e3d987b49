#include "scenarios/Comparison.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "Wire/JsonText.h"
#include "Wire/MessageType.h"
#include "Wire/ObjectWriter.h"
#include "Wire/RefusalCode.h"

namespace SettingsCtl {

namespace {

using Value = rapidjson::Value;

std::string jsonOf(const Value& value) {
    rapidjson::StringBuffer text;
    Wire::Utf8Writer<rapidjson::StringBuffer> writer(text);
    value.Accept(writer);
    return {text.GetString(), text.GetSize()};
}

Value* memberOf(Value& object, const char* name) {
    const auto member = object.FindMember(name);
    return member == object.MemberEnd() ? nullptr : &member->value;
}

const Value* memberOf(const Value& object, const char* name) {
    const auto member = object.FindMember(name);
    return member == object.MemberEnd() ? nullptr : &member->value;
}

/// The value at a path of member names; null when there is none.
template <typename AnyValue>
AnyValue* valueAt(AnyValue& object, const std::vector<const char*>& path) {
    AnyValue* value = &object;
    for (const auto* const name : path) {
        value = value != nullptr && value->IsObject() ? memberOf(*value, name) : nullptr;
    }
    return value;
}

/// The values at `name` of both objects; nulls unless both are of one kind.
std::pair<Value*, const Value*> bothOf(Value& expected, const Value& got, const char* name) {
    Value* const one = memberOf(expected, name);
    const Value* const other = memberOf(got, name);
    const bool areAlike = one != nullptr && other != nullptr && one->GetType() == other->GetType();
    return areAlike ? std::pair(one, other) : std::pair<Value*, const Value*>(nullptr, nullptr);
}

/// The first place where they differ; nothing when they are the same. The order of members does not matter.
std::optional<std::string> placeOfDifference(const Value& expected, const Value& got) {
    if (expected.IsObject() && got.IsObject()) {
        for (const auto& member : expected.GetObject()) {
            const auto other = got.FindMember(member.name);
            const auto inner = other == got.MemberEnd() ? std::optional<std::string>("")
                                                        : placeOfDifference(member.value, other->value);
            if (inner) {
                return "/" + Wire::textOf(member.name) + *inner;
            }
        }
        for (const auto& member : got.GetObject()) {
            if (!expected.HasMember(member.name)) {
                return "/" + Wire::textOf(member.name);
            }
        }
        return std::nullopt;
    }
    if (expected.IsArray() && got.IsArray()) {
        const rapidjson::SizeType size = std::min(expected.Size(), got.Size());
        for (rapidjson::SizeType index = 0; index < size; ++index) {
            if (const auto inner = placeOfDifference(expected[index], got[index])) {
                return "/" + std::to_string(index) + *inner;
            }
        }
        return expected.Size() == got.Size() ? std::nullopt : std::optional<std::string>("/" + std::to_string(size));
    }
    return expected == got ? std::nullopt : std::optional<std::string>("");
}

/// What no two hosts have in common.
void adaptOthers(rapidjson::Document& expected, const rapidjson::Document& got) {
    std::vector<std::vector<const char*>> paths{{"page", "address"},
                                                {"backup", "file"},
                                                {"status", "health", "version"},
                                                {"status", "disk", "free"},
                                                {"status", "disk", "total"},
                                                {"status", "health", "uptimeSeconds"},
                                                {"status", "versions", "host"},
                                                {"status", "now"}};
    const auto* const code = valueAt<const Value>(expected, {"error", "code"});
    if (code != nullptr && *code == Wire::RefusalCode::notStored) {
        // It names a file.
        paths.push_back({"error", "message"});
    }
    for (const auto& path : paths) {
        auto* const value = valueAt<Value>(expected, path);
        const auto* const other = valueAt<const Value>(got, path);
        if (value != nullptr && other != nullptr && value->GetType() == other->GetType()) {
            value->CopyFrom(*other, expected.GetAllocator());
        }
    }
}

}  // namespace

void Comparison::adaptId(Value& expected, const Value& got, Allocator& allocator) {
    if (!got.IsString()) {
        return;
    }
    const std::string recorded = Wire::textOf(expected);
    if (ids.count(recorded) == 0 && taken.insert(Wire::textOf(got)).second) {
        ids[recorded] = Wire::textOf(got);
    }
    const auto bound = ids.find(recorded);
    if (bound != ids.end()) {
        expected.SetString(bound->second, allocator);
    }
}

void Comparison::adaptSequence(Value& expected, const Value& got) {
    if (expected.IsInt64() && got.IsInt64()) {
        const auto shift = shifts.emplace(run, got.GetInt64() - expected.GetInt64()).first;
        expected.SetInt64(expected.GetInt64() + shift->second);
    }
}

void Comparison::adaptEvent(Value& expected, const Value& got, Allocator& allocator) {
    const Value* const type = expected.IsObject() && got.IsObject() ? memberOf(expected, "type") : nullptr;
    if (type == nullptr || *type != static_cast<int>(Wire::SETTING_CHANGED)) {
        return;
    }
    if (const auto [id, other] = bothOf(expected, got, "messageId"); id != nullptr && id->IsString()) {
        adaptId(*id, *other, allocator);
    }
    if (const auto [time, other] = bothOf(expected, got, "timestamp"); time != nullptr && time->IsNumber()) {
        time->CopyFrom(*other, allocator);
    }
    if (const auto [sequence, other] = bothOf(expected, got, "sequence"); sequence != nullptr) {
        adaptSequence(*sequence, *other);
    }
}

void Comparison::adaptHello(Value& expected, const Value& got, Allocator& allocator) {
    if (const auto [id, other] = bothOf(expected, got, "run"); id != nullptr && id->IsString()) {
        const std::string recorded = Wire::textOf(*id);
        if (run.empty() && shifts.count(recorded) == 0 && shifts.count("") > 0) {
            shifts[recorded] = shifts[""];
        }
        run = recorded;
        adaptId(*id, *other, allocator);
    }
    if (const auto [sequence, other] = bothOf(expected, got, "sequence"); sequence != nullptr) {
        adaptSequence(*sequence, *other);
    }
}

void Comparison::adaptTrace(Value& expected, const Value& got, Allocator& allocator) {
    if (const auto [time, other] = bothOf(expected, got, "timestamp"); time != nullptr) {
        time->CopyFrom(*other, allocator);
    }
    if (const auto [client, other] = bothOf(expected, got, "client");
        client != nullptr && client->IsInt() && other->IsInt()) {
        Value name(std::to_string(client->GetInt()), allocator);
        adaptId(name, Value(std::to_string(other->GetInt()), allocator), allocator);
        client->SetInt(std::stoi(Wire::textOf(name)));
    }
    if (const auto [text, other] = bothOf(expected, got, "text"); text != nullptr && text->IsString()) {
        const auto inner = difference(Wire::textOf(*text), Wire::textOf(*other));
        text->SetString(inner ? inner->expected : Wire::textOf(*other), allocator);
    }
}

void Comparison::adapt(rapidjson::Document& expected, const rapidjson::Document& got) {
    auto& allocator = expected.GetAllocator();
    adaptEvent(expected, got, allocator);
    if (const auto [hello, other] = bothOf(expected, got, "hello"); hello != nullptr && hello->IsObject()) {
        adaptHello(*hello, *other, allocator);
    }
    if (const auto [trace, other] = bothOf(expected, got, "trace"); trace != nullptr && trace->IsObject()) {
        adaptTrace(*trace, *other, allocator);
    }
    auto* const remembered = valueAt<Value>(expected, {"history", "events"});
    const auto* const others = valueAt<const Value>(got, {"history", "events"});
    if (remembered != nullptr && others != nullptr && remembered->IsArray() && others->IsArray()) {
        for (rapidjson::SizeType index = 0; index < std::min(remembered->Size(), others->Size()); ++index) {
            adaptEvent((*remembered)[index], (*others)[index], allocator);
        }
    }
    adaptOthers(expected, got);
}

std::optional<FrameDifference> Comparison::difference(const std::string& expected, const std::string& got) {
    rapidjson::Document one;
    rapidjson::Document other;
    one.Parse<Utils::jsonParseFlags>(expected.data(), expected.size());
    other.Parse<Utils::jsonParseFlags>(got.data(), got.size());
    if (one.HasParseError() || other.HasParseError() || !one.IsObject() || !other.IsObject()) {
        return expected == got ? std::nullopt : std::optional(FrameDifference{"", expected});
    }
    adapt(one, other);
    const auto place = placeOfDifference(one, other);
    return place ? std::optional(FrameDifference{*place, jsonOf(one)}) : std::nullopt;
}

std::string Comparison::forThisRun(const std::string& frame) const {
    rapidjson::Document request;
    request.Parse<Utils::jsonParseFlags>(frame.data(), frame.size());
    if (request.HasParseError() || !request.IsObject()) {
        return frame;
    }
    auto* const recorded = valueAt<Value>(request, {"hello", "resume", "run"});
    if (recorded == nullptr || !recorded->IsString() || ids.count(Wire::textOf(*recorded)) == 0) {
        return frame;
    }
    auto* const sequence = valueAt<Value>(request, {"hello", "resume", "sequence"});
    const auto shift = shifts.find(Wire::textOf(*recorded));
    if (sequence != nullptr && sequence->IsInt64() && shift != shifts.end()) {
        sequence->SetInt64(std::max<std::int64_t>(sequence->GetInt64() + shift->second, 0));
    }
    recorded->SetString(ids.at(Wire::textOf(*recorded)), request.GetAllocator());
    return jsonOf(request);
}

void Comparison::hostStarted() {
    run.clear();
    shifts.erase("");
}

}  // namespace SettingsCtl
