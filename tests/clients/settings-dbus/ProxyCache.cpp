// Prints the cached value of a property of the service, and prints it again whenever the cache changed.
// Usage: proxy-cache PROPERTY
#include <cstdio>

#include <gio/gio.h>

namespace {

void print(GDBusProxy* proxy, const char* property) {
    GVariant* const value = g_dbus_proxy_get_cached_property(proxy, property);
    char* const text = value == nullptr ? g_strdup("nothing") : g_variant_print(value, FALSE);
    std::printf("%s\n", text);
    std::fflush(stdout);
    g_free(text);
    if (value != nullptr) {
        g_variant_unref(value);
    }
}

void onChange(GDBusProxy* proxy, GVariant* /*changed*/, char** /*invalidated*/, gpointer property) {
    print(proxy, static_cast<const char*>(property));
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        return 2;
    }
    GError* error = nullptr;
    GDBusProxy* const proxy = g_dbus_proxy_new_for_bus_sync(
        G_BUS_TYPE_SYSTEM, G_DBUS_PROXY_FLAGS_NONE, nullptr, "org.settingshandler.Settings1",
        "/org/settingshandler/Settings1", "org.settingshandler.Settings1", nullptr, &error);
    if (proxy == nullptr) {
        std::fprintf(stderr, "%s\n", error->message);
        return 1;
    }
    g_signal_connect(proxy, "g-properties-changed", G_CALLBACK(onChange), arguments[1]);
    print(proxy, arguments[1]);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
