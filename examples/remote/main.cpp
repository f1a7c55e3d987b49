#include <exception>
#include <iostream>

#include "SettingsClient/Client.h"

int main() {
    try {
        SettingsClient::Client client({"kitchen-remote"});
        const auto answer = client.set("deviceName", "Kitchen");
        std::cout << (answer.accepted() ? "ready" : "refused: " + answer.message) << std::endl;
        client.onEvent([](const auto& event) {
            std::cout << event.key << ": " << event.to << " by " << event.client << std::endl;
        });
        client.onReread([&](const auto& reread) {
            for (const auto& [key, value] : client.get(reread.keys)) {
                std::cout << key << " is " << value << std::endl;
            }
        });
        client.run();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "remote: " << error.what() << std::endl;
        return 1;
    }
}
