#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>

#include "SettingsHandler/SettingsHandler.h"
#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeMetrics.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "SettingsHandlerTesting/FakeStorage.h"
#include "Utils/RapidjsonUtil.h"

using namespace SettingsHandlerTesting;

class LineTransport : public CommunicationHandler::CommunicationHandlerInterface {
public:
    std::map<int, std::function<void(const std::string&)>> handlers;

    std::string sendMessage(int messageType, rapidjson::Document& payload) override {
        std::cout << "event " << messageType << ' ' << Utils::RapidjsonUtil::stringify(payload) << std::endl;
        return "";
    }
    void sendResponse(const std::string& messageId, rapidjson::Document& payload) override {
        std::cout << "reply " << messageId << ' ' << Utils::RapidjsonUtil::stringify(payload) << std::endl;
    }
    void registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) override {
        handlers[messageType] = handler;
    }
};

int main() {
    Journal journal;
    FakeStorage storage(journal);
    const auto transport = std::make_shared<LineTransport>();
    const auto handler = SettingsHandler::SettingsHandler::create(
        transport, storage, std::make_shared<FakeMetrics>(journal), std::make_shared<FakeSdkBridge>(journal),
        std::make_shared<FakeAppLaunch>(journal), std::make_shared<FakeDeviceInfo>(journal));
    handler->initializeSettings();
    int type = 0;
    for (std::string text; std::cin >> type && std::getline(std::cin, text);) {
        transport->handlers.at(type)(text);
    }
}
