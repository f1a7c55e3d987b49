#pragma once

#include <glib.h>

#include "SettingsHandlerKit/Server.h"

/// A server in a GLib main loop: the loop wakes when the descriptor is readable or the timeout is over.
struct ServerSource {
    GSource source;
    SettingsHandlerKit::Server* server;
    GMainLoop* loop;

    /// Serves in `loop` from now on, and ends the loop when the server has stopped. The server outlives the loop.
    static void attach(SettingsHandlerKit::Server& server, GMainLoop* loop) {
        static GSourceFuncs functions{prepare, check, dispatch, nullptr, nullptr, nullptr};
        GSource* source = g_source_new(&functions, sizeof(ServerSource));
        of(source).server = &server;
        of(source).loop = loop;
        g_source_add_unix_fd(source, server.fileDescriptor(), G_IO_IN);
        g_source_attach(source, g_main_loop_get_context(loop));
        g_source_unref(source);
    }

private:
    static ServerSource& of(GSource* source) { return *reinterpret_cast<ServerSource*>(source); }

    static gboolean prepare(GSource* source, int* timeout) {
        const auto left = of(source).server->timeout();
        *timeout = left ? static_cast<int>(left->count()) : -1;
        return FALSE;
    }
    /// After each wake-up, whatever its reason: without work, `process` returns at once.
    static gboolean check(GSource*) { return TRUE; }
    static gboolean dispatch(GSource* source, GSourceFunc, void*) {
        of(source).server->process();
        if (!of(source).server->isRunning()) {
            g_main_loop_quit(of(source).loop);
        }
        return G_SOURCE_CONTINUE;
    }
};
