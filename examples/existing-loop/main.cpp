#include <csignal>
#include <exception>
#include <iostream>

#include <glib-unix.h>

#include "SettingsHandlerKit/Process.h"
#include "Television.h"

namespace {

/// The server as a source of events: the loop wakes when the descriptor is readable or the timeout is over.
struct ServerSource {
    GSource source;
    SettingsHandlerKit::Server* server;

    static gboolean prepare(GSource* source, int* timeout) {
        const auto left = reinterpret_cast<ServerSource*>(source)->server->timeout();
        *timeout = left ? static_cast<int>(left->count()) : -1;
        return FALSE;
    }
    /// After each wake-up, whatever the reason: without work, `process` returns at once.
    static gboolean check(GSource*) { return TRUE; }
    static gboolean dispatch(GSource* source, GSourceFunc, void*) {
        reinterpret_cast<ServerSource*>(source)->server->process();
        return G_SOURCE_CONTINUE;
    }
};

GSourceFuncs serverFunctions{ServerSource::prepare, ServerSource::check, ServerSource::dispatch, nullptr, nullptr, nullptr};

void attach(SettingsHandlerKit::Server& server, GMainContext* context) {
    GSource* source = g_source_new(&serverFunctions, sizeof(ServerSource));
    reinterpret_cast<ServerSource*>(source)->server = &server;
    g_source_add_unix_fd(source, server.fileDescriptor(), G_IO_IN);
    g_source_attach(source, context);
    g_source_unref(source);
}

gboolean pressHandsFree(void* television) {
    static_cast<Television*>(television)->pressHandsFree();
    return G_SOURCE_CONTINUE;
}

gboolean quit(void* loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
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
        g_unix_signal_add(SIGTERM, quit, loop);
        g_unix_signal_add(SIGUSR1, pressHandsFree, &television);
        attach(television.server, nullptr);
        std::cout << "ready: " << television.server.start() << std::endl;
        g_main_loop_run(loop);
        television.server.stop();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "television: " << error.what() << std::endl;
        return 1;
    }
}
