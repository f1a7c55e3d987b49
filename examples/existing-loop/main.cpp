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
    Television* television;
    GMainLoop* loop;

    static ServerSource& of(GSource* source) { return *reinterpret_cast<ServerSource*>(source); }
    static gboolean prepare(GSource* source, int* timeout) {
        const auto left = of(source).television->server.timeout();
        *timeout = left ? static_cast<int>(left->count()) : -1;
        return FALSE;
    }
    /// After each wake-up, whatever the reason: without work, `process` returns at once.
    static gboolean check(GSource*) { return TRUE; }
    static gboolean dispatch(GSource* source, GSourceFunc, void*) {
        auto& server = of(source).television->server;
        server.process();
        if (!server.isRunning()) {
            g_main_loop_quit(of(source).loop);
        }
        return G_SOURCE_CONTINUE;
    }
};

GSourceFuncs serverFunctions{ServerSource::prepare, ServerSource::check, ServerSource::dispatch, nullptr, nullptr, nullptr};

void attach(Television& television, GMainLoop* loop) {
    GSource* source = g_source_new(&serverFunctions, sizeof(ServerSource));
    ServerSource::of(source).television = &television;
    ServerSource::of(source).loop = loop;
    g_source_add_unix_fd(source, television.server.fileDescriptor(), G_IO_IN);
    g_source_attach(source, g_main_loop_get_context(loop));
    g_source_unref(source);
}

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
        attach(television, loop);
        std::cout << "ready: " << television.server.start() << std::endl;
        g_main_loop_run(loop);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "television: " << error.what() << std::endl;
        return 1;
    }
}
