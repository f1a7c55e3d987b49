#pragma once

#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <utility>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "Utils/RapidjsonUtil.h"

/// One JSON object a line, on standard input and output.
class FrameTransport : public CommunicationHandler::CommunicationHandlerInterface {
public:
    std::string sendMessage(int messageType, rapidjson::Document& payload) override {
        const std::string messageId = "event-" + std::to_string(++events);
        send(messageType, messageId, payload);
        return messageId;
    }
    void sendResponse(const std::string& messageId, rapidjson::Document& payload) override {
        send(typeInHand, messageId, payload);
    }
    void registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) override {
        handlers[messageType] = std::move(handler);
    }

    /// One request, to the handler of its type.
    void deliver(const std::string& frame) {
        rapidjson::Document request;
        request.Parse<Utils::jsonParseFlags>(frame.c_str());
        long type = 0;
        if (request.HasParseError() || !Utils::RapidjsonUtil::tryGetInt64Member(request, "type", type)) {
            std::cout << R"({"error":"no request"})" << std::endl;
            return;
        }
        const auto handler = handlers.find(static_cast<int>(type));
        if (handler == handlers.end()) {
            std::cout << R"({"error":"unknown type"})" << std::endl;
            return;
        }
        typeInHand = handler->first;
        handler->second(frame);
    }

    /// From now on nothing reaches the handler, which may go.
    void stop() { handlers.clear(); }

private:
    void send(int type, const std::string& messageId, rapidjson::Document& payload) {
        rapidjson::Document frame(rapidjson::kObjectType);
        auto& memory = frame.GetAllocator();
        frame.AddMember("type", type, memory);
        frame.AddMember(rapidjson::Value(messageIdKey, memory), rapidjson::Value(messageId, memory), memory);
        frame.AddMember(rapidjson::Value(payloadKey, memory), payload, memory);
        std::cout << Utils::RapidjsonUtil::stringify(frame) << std::endl;
    }

    std::map<int, std::function<void(const std::string&)>> handlers;
    int typeInHand = 0;
    int events = 0;
};
