// Prints "ready", and then each signal of the service in one line. Usage: signal-monitor [USER]
// USER: whose rights it has then; it need not be one who may run programs of this build.
#include <cstdio>

#include <gio/gio.h>
#include <grp.h>
#include <pwd.h>
#include <unistd.h>

namespace {

bool become(const char* name) {
    const passwd* const user = ::getpwnam(name);
    return user != nullptr && ::setgroups(0, nullptr) == 0 && ::setgid(user->pw_gid) == 0 &&
           ::setuid(user->pw_uid) == 0;
}

void print(GDBusConnection* /*bus*/, const char* /*sender*/, const char* path, const char* interface,
           const char* signal, GVariant* parameters, gpointer /*data*/) {
    char* const text = g_variant_print(parameters, TRUE);
    std::printf("%s: %s.%s %s\n", path, interface, signal, text);
    std::fflush(stdout);
    g_free(text);
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount > 1 && !become(arguments[1])) {
        return 2;
    }
    GDBusConnection* const bus = g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr);
    if (bus == nullptr) {
        return 1;
    }
    g_dbus_connection_signal_subscribe(bus, "org.settingshandler.Settings1", nullptr, nullptr, nullptr, nullptr,
                                       G_DBUS_SIGNAL_FLAGS_NONE, print, nullptr, nullptr);
    // The bus has taken the subscription when it answers the next call.
    GVariant* const id = g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetId",
                                                     nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    std::printf(id == nullptr ? "no answer\n" : "ready\n");
    std::fflush(stdout);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
