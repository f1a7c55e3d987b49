#pragma once

#include <string>
#include <vector>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "SettingsHandlerTesting/JsonText.h"

/// Builders of the JSON texts that clients send. Keys and values may be any bytes.
namespace SettingsHandlerTesting {

/// The payload of GetSettings: `{"settings":["deviceName"]}`. An empty list asks for all settings.
inline std::string settingsPayload(const std::vector<std::string>& keys = {}) {
    rapidjson::Document payload(rapidjson::kObjectType);
    auto& memory = payload.GetAllocator();
    rapidjson::Value list(rapidjson::kArrayType);
    for (const auto& key : keys) {
        list.PushBack(rapidjson::Value(key, memory), memory);
    }
    payload.AddMember("settings", list, memory);
    return jsonText(payload);
}

/// The payload of SetSettings: `{"settingDBId":"deviceName","to":"Den"}`.
inline std::string changePayload(const std::string& settingDBId, const std::string& to) {
    rapidjson::Document payload(rapidjson::kObjectType);
    auto& memory = payload.GetAllocator();
    payload.AddMember("settingDBId", rapidjson::Value(settingDBId, memory), memory);
    payload.AddMember("to", rapidjson::Value(to, memory), memory);
    return jsonText(payload);
}

/// A request with the member names of `transport`'s envelope. `payload`: JSON text, inserted unchanged.
inline std::string requestText(const CommunicationHandler::CommunicationHandlerInterface& transport, int messageType,
                               const std::string& messageId, long long timestamp, const std::string& payload) {
    const auto quoted = [](const std::string& text) {
        return jsonText(rapidjson::Value(rapidjson::StringRef(text.data(), text.size())));
    };
    return R"({"type":)" + std::to_string(messageType) + "," + quoted(transport.messageIdKey) + ":" +
           quoted(messageId) + "," + quoted(transport.timestampKey) + ":" + std::to_string(timestamp) + "," +
           quoted(transport.payloadKey) + ":" + payload + "}";
}

}  // namespace SettingsHandlerTesting
