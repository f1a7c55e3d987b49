#include "simulation/World.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <set>

#include "SettingsHandlerKit/SettingDescriptions.h"
#include "Utils/RapidjsonUtil.h"
#include "Wire/JsonText.h"
#include "Wire/ObjectWriter.h"
#include "simulation/FaultCommands.h"

namespace SettingsHost {

namespace {

using SettingsHandlerKit::SettingDescription;
using SettingsHandlerKit::SettingKind;
using SettingsHandlerKit::SettingOwner;

constexpr int formatVersion = 1;
constexpr const char* faultsMember = "faults";
constexpr const char* legacyMember = "legacy";

/// The member of the file that has the settings of an owner.
const char* memberOf(SettingOwner owner) {
    switch (owner) {
        case SettingOwner::STORAGE:
            return "settings";
        case SettingOwner::VOICE_SDK:
            return "sdk";
        default:
            return "device";
    }
}

constexpr SettingOwner owners[] = {SettingOwner::STORAGE, SettingOwner::VOICE_SDK, SettingOwner::DEVICE};

[[noreturn]] void fail(const std::string& path, const std::string& why) {
    throw WorldError(path + ": " + why);
}

/// Calls `use` with each member, which must be there once.
template <typename Use>
void forEachMember(const std::string& path, const rapidjson::Value& object, const Use& use) {
    if (!object.IsObject()) {
        fail(path.empty() ? "/" : path, "must be an object");
    }
    std::set<std::string> seen;
    for (const auto& member : object.GetObject()) {
        const std::string name = Wire::textOf(member.name);
        std::string place = path;
        place.append("/").append(name);
        if (!seen.insert(name).second) {
            fail(place, "appears twice");
        }
        use(place, name, member.value);
    }
}

/// Storage keeps any text; voice SDK and device keep what they understand.
void checkValue(const std::string& path, const SettingDescription& setting, const std::string& value) {
    if (value.empty()) {
        fail(path, "must not be empty");
    }
    if (value.size() > SettingsHandlerKit::Storage::maximumValueLength) {
        fail(path, "is longer than " + std::to_string(SettingsHandlerKit::Storage::maximumValueLength) + " bytes");
    }
    if (setting.owner == SettingOwner::STORAGE) {
        return;
    }
    if (setting.kind == SettingKind::SWITCH && !SettingsHandlerKit::asSwitch(value)) {
        fail(path, R"(must be "true" or "false")");
    }
    if (setting.kind == SettingKind::LOCALES && !SettingsHandlerKit::asLocales(value)) {
        fail(path, R"(must be the text of a JSON array with at least one locale, such as "[\"en-US\"]")");
    }
}

void readSetting(World& world, const std::string& path, const std::string& key, const rapidjson::Value& value,
                 SettingOwner owner) {
    const SettingDescription* const setting = SettingsHandlerKit::describeSetting(key);
    if (setting == nullptr) {
        fail(path, "the catalogue has no such setting");
    }
    if (setting->owner != owner) {
        fail(path, std::string("belongs in \"") + memberOf(setting->owner) + "\"");
    }
    if (!value.IsString()) {
        fail(path, "must be a string");
    }
    const std::string text = Wire::textOf(value);
    checkValue(path, *setting, text);
    const auto locales = setting->kind == SettingKind::LOCALES ? SettingsHandlerKit::asLocales(text) : std::nullopt;
    world.values[key] = locales ? Utils::RapidjsonUtil::stringifyVector(*locales) : text;
}

/// Older software stored any text.
void readLegacy(World& world, const std::string& path, const std::string& key, const rapidjson::Value& value) {
    const auto type = SettingsHandler::settingTypeFromName(key);
    if (type != SettingsHandler::ORLIA_LOCALE && type != SettingsHandler::TIMEZONE) {
        fail(path, "is not a setting that is migrated");
    }
    if (!value.IsString() || value.GetStringLength() == 0) {
        fail(path, "must be a string that is not empty");
    }
    world.legacy[key] = Wire::textOf(value);
}

void readFault(World& world, const std::string& path, const std::string& name, const rapidjson::Value& value) {
    const FaultDescription* const fault = findFault(name);
    if (fault == nullptr) {
        fail(path, "no fault has this name");
    }
    if (fault->once) {
        fail(path, "happens once and cannot be on in a world");
    }
    if (fault->kind == FaultKind::SWITCH) {
        if (!value.IsTrue()) {
            fail(path, "must be true");
        }
        world.faults[fault->fault] = {};
        return;
    }
    const FaultValue wanted = faultValueOf(value);
    const std::string problem = Faults::problemWith(*fault, wanted);
    if (!problem.empty()) {
        fail(path, problem);
    }
    world.faults[fault->fault] = wanted;
}

void readMember(World& world, const std::string& path, const std::string& name, const rapidjson::Value& value) {
    if (name == "world") {
        if (!value.IsInt() || value.GetInt() != formatVersion) {
            fail(path, "must be 1, the version of the format");
        }
        return;
    }
    if (name == faultsMember) {
        forEachMember(path, value, [&](const auto& place, const auto& fault, const auto& wanted) {
            readFault(world, place, fault, wanted);
        });
        return;
    }
    if (name == legacyMember) {
        forEachMember(path, value, [&](const auto& place, const auto& key, const auto& stored) {
            readLegacy(world, place, key, stored);
        });
        return;
    }
    for (const SettingOwner owner : owners) {
        if (name == memberOf(owner)) {
            forEachMember(path, value, [&](const auto& place, const auto& key, const auto& wanted) {
                readSetting(world, place, key, wanted, owner);
            });
            return;
        }
    }
    fail(path, "is not a member of a world");
}

bool hasValues(SettingsHandlerKit::Storage& storage, SettingsHandlerKit::StateStore& state) {
    bool hasState = false;
    for (const auto& setting : SettingsHandlerKit::settingDescriptions()) {
        hasState = hasState || state.load(SimulatedDevice::stateKeyOf(setting.type).value_or(setting.key));
    }
    return hasState || storage.health().keys > 0;
}

bool store(const SettingDescription& setting, const std::string& value, SettingsHandlerKit::Storage& storage,
           SettingsHandlerKit::StateStore& state) {
    if (setting.owner == SettingOwner::STORAGE) {
        return storage.setValue(setting.key, value);
    }
    const auto mode = SimulatedDevice::stateKeyOf(setting.type);
    return mode ? state.save(*mode, value == "true" ? "on" : "off") : state.save(setting.key, value);
}

}  // namespace

World worldOf(const std::string& text) {
    rapidjson::Document document;
    document.Parse<Utils::jsonParseFlags | rapidjson::kParseValidateEncodingFlag>(text.data(), text.size());
    if (document.HasParseError()) {
        fail("/", "is not JSON at byte " + std::to_string(document.GetErrorOffset()));
    }
    World world;
    forEachMember("", document,
                  [&](const auto& path, const auto& name, const auto& value) { readMember(world, path, name, value); });
    if (!document.HasMember("world")) {
        fail("/world", "is missing");
    }
    return world;
}

World worldIn(const std::string& file) {
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    std::string text;
    std::array<char, 65536> bytes{};
    do {
        stream.read(bytes.data(), bytes.size());
        text.append(bytes.data(), static_cast<std::size_t>(stream.gcount()));
    } while (stream);
    if (!stream.eof()) {
        throw WorldError(file + ": " + std::strerror(errno));
    }
    try {
        return worldOf(text);
    } catch (const WorldError& error) {
        throw WorldError(file + ": " + error.what());
    }
}

void storeWorld(const World& world, SettingsHandlerKit::Storage& storage, SettingsHandlerKit::StateStore& state) {
    if (hasValues(storage, state)) {
        throw std::runtime_error(storage.file() + " has values already; --world needs a new database");
    }
    storage.beginTransaction();
    bool isStored = true;
    for (const auto& [key, value] : world.values) {
        isStored = isStored && store(*SettingsHandlerKit::describeSetting(key), value, storage, state);
    }
    for (const auto& [key, value] : world.legacy) {
        isStored = isStored && storage.setValue(key, value);
    }
    if (!isStored) {
        storage.rollBackTransaction();
    }
    if (!isStored || !storage.commitTransaction()) {
        throw std::runtime_error("the world could not be stored in " + storage.file());
    }
}

World currentWorld(SDKWrapper::StorageManagerInterface& storage, SimulatedSdkBridge& sdk, const SimulatedDevice& device,
                   const Faults& faults) {
    const auto booleanText = [](bool value) { return std::string(value ? "true" : "false"); };
    World world;
    for (const auto& setting : SettingsHandlerKit::settingDescriptions()) {
        if (setting.owner == SettingOwner::STORAGE) {
            std::string value;
            storage.getValue(setting.key, value);
            if (!value.empty()) {
                world.values[setting.key] = value;
            }
        } else if (const auto enabled = device.isOn(setting.type)) {
            world.values[setting.key] = booleanText(*enabled);
        }
    }
    using namespace SettingsHandler;
    world.values[settingNameFromType(ORLIA_LOCALE)] = Utils::RapidjsonUtil::stringifyVector(sdk.getLocales());
    world.values[settingNameFromType(TIMEZONE)] = sdk.getTimezone();
    world.values[settingNameFromType(CAPTIONS_ENABLED)] = booleanText(sdk.isCaptionsEnabled());
    world.values[settingNameFromType(DO_NOT_DISTURB_ENABLED)] = booleanText(sdk.isDoNotDisturbEnabled());
    world.faults = faults.on();
    return world;
}

std::string worldFrame(const World& world, bool withValues) {
    using SettingsHandlerKit::Privacy;
    std::vector<std::string> leftOut;
    Wire::ObjectWriter<> writer;
    writer.beginObject("world");
    writer.number("world", formatVersion);
    for (const SettingOwner owner : owners) {
        writer.beginObject(std::string(memberOf(owner)));
        for (const auto& setting : SettingsHandlerKit::settingDescriptions()) {
            const auto value = world.values.find(setting.key);
            if (setting.owner != owner || value == world.values.end()) {
                continue;
            }
            if (setting.privacy == Privacy::PERSONAL && !withValues) {
                leftOut.push_back(setting.key);
            } else {
                writer.text(setting.key, value->second);
            }
        }
        writer.endObject();
    }
    writer.beginObject("faults");
    rapidjson::Document memory;
    for (const auto& [fault, value] : world.faults) {
        const bool isSwitch = describe(fault).kind == FaultKind::SWITCH;
        writer.json(std::string(describe(fault).name),
                    isSwitch ? rapidjson::Value(true) : jsonOf(value, memory.GetAllocator()));
    }
    writer.endObject();
    writer.endObject();
    writer.texts("leftOut", leftOut);
    return writer.finish();
}

}  // namespace SettingsHost
