#include "simulation/FaultCommands.h"

#include <utility>

#include "Utils/RapidjsonUtil.h"
#include "Wire/ObjectWriter.h"
#include "simulation/CommandRefusals.h"

namespace SettingsHost {

namespace {

using Memory = rapidjson::Document::AllocatorType;

rapidjson::Value textIn(Memory& memory, std::string_view text) {
    return {text.data(), static_cast<rapidjson::SizeType>(text.size()), memory};
}

rapidjson::Value shown(const FaultDescription& fault, const Faults& faults, Memory& memory) {
    rapidjson::Value object(rapidjson::kObjectType);
    object.AddMember("name", textIn(memory, fault.name), memory);
    object.AddMember("on", faults.isOn(fault.fault), memory);
    const auto on = faults.on().find(fault.fault);
    if (on != faults.on().end() && fault.kind != FaultKind::SWITCH) {
        object.AddMember("value", jsonOf(on->second, memory), memory);
    }
    object.AddMember("kind", textIn(memory, kindName(fault.kind)), memory);
    if (fault.once) {
        object.AddMember("once", true, memory);
    }
    if (fault.kind == FaultKind::MILLISECONDS) {
        object.AddMember("minimum", fault.minimum, memory);
        object.AddMember("maximum", fault.maximum, memory);
        object.AddMember("default", fault.defaultTime, memory);
    }
    if (fault.kind == FaultKind::SETTING) {
        rapidjson::Value keys(rapidjson::kArrayType);
        for (const auto& key : fault.settings) {
            keys.PushBack(textIn(memory, key), memory);
        }
        object.AddMember("settings", keys, memory);
    }
    object.AddMember("description", textIn(memory, fault.description), memory);
    return object;
}

std::string replyTo(Faults::Result result) {
    switch (result) {
        case Faults::Result::CHANGED:
            return R"({"ok":true})";
        case Faults::Result::UNCHANGED:
            return R"({"ok":true,"changed":false})";
        default:
            return notWritten();
    }
}

}  // namespace

rapidjson::Value jsonOf(const FaultValue& value, Memory& memory) {
    if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        return rapidjson::Value(*number);
    }
    const auto* const key = std::get_if<std::string>(&value);
    return key != nullptr ? textIn(memory, *key) : rapidjson::Value();
}

FaultValue faultValueOf(const rapidjson::Value& member) {
    if (member.IsInt64()) {
        return member.GetInt64();
    }
    return member.IsString() ? FaultValue(std::string(member.GetString(), member.GetStringLength())) : FaultValue();
}

std::string switchFault(Faults& faults, const rapidjson::Value& request) {
    std::string name;
    Utils::RapidjsonUtil::tryGetStringMember(request, "name", name);
    const FaultDescription* const fault = findFault(name);
    if (fault == nullptr) {
        return badArgument(R"("name" must be one of the faults; the command "faults" lists them)");
    }
    const auto enabled = request.FindMember("enabled");
    if (enabled == request.MemberEnd() || !enabled->value.IsBool()) {
        return badArgument(R"("enabled" must be true or false)");
    }
    if (!enabled->value.GetBool()) {
        return replyTo(faults.switchOff(fault->fault));
    }
    const auto member = request.FindMember("value");
    if (member == request.MemberEnd()) {
        return replyTo(faults.switchOn(fault->fault));
    }
    const FaultValue value = faultValueOf(member->value);
    const std::string problem = Faults::problemWith(*fault, value);
    return problem.empty() ? replyTo(faults.switchOn(fault->fault, value)) : badArgument(problem);
}

std::string faultsFrame(const Faults& faults) {
    rapidjson::Document list(rapidjson::kArrayType);
    for (const auto& fault : allFaults()) {
        list.PushBack(shown(fault, faults, list.GetAllocator()), list.GetAllocator());
    }
    Wire::ObjectWriter<> writer;
    writer.json("faults", list);
    return writer.finish();
}

}  // namespace SettingsHost
