#include <exception>
#include <iostream>

#include "SettingsHandlerKit/Process.h"
#include "Television.h"

int main(int argumentCount, char** arguments) {
    if (argumentCount != 3) {
        std::cerr << "usage: television FOLDER PAGES" << std::endl;
        return 2;
    }
    SettingsHandlerKit::openClosedStandardStreams();
    SettingsHandlerKit::ignoreSignalsOfWrites();
    try {
        Television television(arguments[1], arguments[2]);
        // SIGINT and SIGTERM stop the service; SIGHUP stands for the button.
        television.server.handleSignals([&] { television.pressHandsFree(); });
        std::cout << "ready: " << television.server.start() << std::endl;
        television.server.run();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "television: " << error.what() << std::endl;
        return 1;
    }
}
