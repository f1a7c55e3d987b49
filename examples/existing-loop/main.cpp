#include <csignal>
#include <exception>
#include <iostream>

#include <glib-unix.h>

#include "ServerSource.h"
#include "SettingsHandlerKit/Process.h"
#include "Television.h"

namespace {

gboolean stop(void* television) {
    static_cast<Television*>(television)->server.stop();
    return G_SOURCE_CONTINUE;
}

gboolean pressHandsFree(void* television) {
    static_cast<Television*>(television)->pressHandsFree();
    return G_SOURCE_CONTINUE;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 3) {
        std::cerr << "usage: television FOLDER PAGES" << std::endl;
        return 2;
    }
    SettingsHandlerKit::openClosedStandardStreams();
    SettingsHandlerKit::ignoreSignalsOfWrites();
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    try {
        Television television(arguments[1], arguments[2]);
        g_unix_signal_add(SIGTERM, stop, &television);
        g_unix_signal_add(SIGHUP, pressHandsFree, &television);
        ServerSource::attach(television.server, loop);
        std::cout << "ready: " << television.server.start() << std::endl;
        g_main_loop_run(loop);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "television: " << error.what() << std::endl;
        return 1;
    }
}
