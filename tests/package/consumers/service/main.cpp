#include "../Collaborators.h"
#include "CommunicationHandler/MessageType.h"

// Every reference component is called: the logger and the metrics cache by a change of the locale, the application
// table by the request to open the settings application.
int main() {
    Consumer::World<SettingsHandler::SettingsHandler> world;
    world.transport->deliver(CommunicationHandler::SET_SETTINGS,
                             R"({"timestamp":1,"payload":{"settingDBId":"orliaLocale","to":"[\"fr-FR\"]"}})");
    world.transport->deliver(CommunicationHandler::GET_SETTINGS,
                             R"({"messageId":"7","payload":{"settings":["deviceName","orliaLocale"]}})");
    world.transport->deliver(CommunicationHandler::OPEN_VA_SETTINGS, "{}");
}
