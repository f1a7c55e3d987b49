#include "../Collaborators.h"
#include "CommunicationHandler/MessageType.h"

namespace {

/// Refuses every request for the companion device, whatever its time stamp.
class StrictHandler : public SettingsHandler::SettingsHandler {
public:
    using SettingsHandler::SettingsHandler;

    bool isRequestValid(std::string& settingDBId, long timestamp) override {
        const bool valid = settingDBId != "companionDevice" && SettingsHandler::isRequestValid(settingDBId, timestamp);
        std::cout << settingDBId << " at " << timestamp << (valid ? " taken" : " refused") << "\n";
        return valid;
    }
};

}  // namespace

int main() {
    Consumer::World<StrictHandler> world;
    world.handler->initializeSettings();
    for (const char* request : {R"({"timestamp":5,"payload":{"settingDBId":"deviceName","to":"Kitchen"}})",
                                R"({"timestamp":4,"payload":{"settingDBId":"deviceName","to":"Cellar"}})",
                                R"({"timestamp":6,"payload":{"settingDBId":"companionDevice","to":"phone"}})"}) {
        world.transport->deliver(CommunicationHandler::SET_SETTINGS, request);
    }
    world.transport->deliver(CommunicationHandler::GET_SETTINGS,
                             R"({"messageId":"8","payload":{"settings":["companionDevice","deviceName"]}})");
}
