#include <iostream>
#include <memory>
#include <string>

#include "CarefulHandler.h"
#include "Collaborators.h"
#include "Device.h"
#include "FileStorage.h"
#include "FrameTransport.h"
#include "VoiceSdk.h"

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: television FILE" << std::endl;
        return 2;
    }
    FileStorage storage(arguments[1]);
    const auto transport = std::make_shared<FrameTransport>();
    const auto metrics = std::make_shared<ChangeCounts>();
    const auto device = std::make_shared<Device>();
    const auto sdk = std::make_shared<VoiceSdk>(device, storage);

    auto handler =
        std::make_shared<CarefulHandler>(transport, storage, metrics, sdk, std::make_shared<Launcher>(), device);
    handler->initializeSettings();
    handler->migrateExistingDeviceSettings();
    device->subscribe(handler);
    handler->addFriendlyNameObserver(std::make_shared<Announcer>());

    for (std::string line; std::getline(std::cin, line);) {
        if (line.rfind("locale ", 0) == 0) {
            device->changeLocale(line.substr(7));
        } else if (line == "handsfree on" || line == "handsfree off") {
            device->switchHandsfree(line == "handsfree on");
        } else {
            transport->deliver(line);
        }
    }

    transport->stop();
    handler.reset();
    for (const auto& [setting, count] : metrics->counts) {
        std::cout << setting << " changed " << count << std::endl;
    }
    return 0;
}
