#include <cstdlib>
#include <map>
#include <stdexcept>

#include <gio/gio.h>

#include "Peer.h"
#include "PrivateBus.h"
#include "Schema.h"
#include "support/TemporaryDirectory.h"

namespace Benchmarks {

namespace {

using Clock = std::chrono::steady_clock;
using Settings = std::unique_ptr<GSettings, decltype(&g_object_unref)>;

Settings openSettings() {
    GSettings* settings = g_settings_new(schemaName);
    GSettingsBackend* backend = nullptr;
    g_object_get(settings, "backend", &backend, nullptr);
    const std::string type = G_OBJECT_TYPE_NAME(backend);
    g_object_unref(backend);
    if (type != "DConfSettingsBackend") {
        throw std::runtime_error("GSettings stores with " + type + " instead of dconf");
    }
    return {settings, &g_object_unref};
}

class DconfSetter : public Setter {
public:
    void set(const std::string& value) override { g_settings_set_string(settings.get(), schemaKey, value.c_str()); }
    /// A change that is under way would hold the next one up.
    void settle() override { g_settings_sync(); }

private:
    Settings settings = openSettings();
};

void reportChange(GSettings* settings, const char* key, const Report* report) {
    const auto time = Clock::now();
    const std::unique_ptr<char, decltype(&g_free)> value(g_settings_get_string(settings, key), &g_free);
    report->seen(time, value.get());
}

class DconfPeer : public Peer {
public:
    explicit DconfPeer(const std::filesystem::path& parent)
        : folder(parent), bus(folder.path(), {{"ca.desrt.dconf", "/usr/libexec/dconf-service"}}, environment()) {
        compileSchema(folder.path());
    }

    std::unique_ptr<Setter> connect() const override {
        takeEnvironment();
        return std::make_unique<DconfSetter>();
    }

    void observe(const Report& report) const override {
        takeEnvironment();
        const Settings settings = openSettings();
        Report own = report;
        g_signal_connect(settings.get(), "changed", G_CALLBACK(reportChange), &own);
        // GSettings notifies of a key only once it has been read.
        g_free(g_settings_get_string(settings.get(), schemaKey));
        report.ready();
        for (;;) {
            g_main_context_iteration(nullptr, TRUE);
        }
    }

private:
    std::map<std::string, std::string> environment() const {
        return {{"XDG_CONFIG_HOME", folder / "config"},
                {"XDG_RUNTIME_DIR", runtimeFolder.path().string()},
                {"GSETTINGS_SCHEMA_DIR", folder.path().string()},
                {"GSETTINGS_BACKEND", "dconf"},
                {"DCONF_PROFILE", ""}};
    }

    /// For the processes that use the peer.
    void takeEnvironment() const {
        for (const auto& [name, value] : environment()) {
            value.empty() ? ::unsetenv(name.c_str()) : ::setenv(name.c_str(), value.c_str(), 1);
        }
        ::setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);
    }

    TestSupport::TemporaryDirectory folder;
    /// The service tells its clients by a file in memory that the database is a new one.
    TestSupport::TemporaryDirectory runtimeFolder{TestSupport::memoryFolder()};
    PrivateBus bus;
};

}  // namespace

std::unique_ptr<Peer> dconfPeer(const std::filesystem::path& parent) {
    return std::make_unique<DconfPeer>(parent);
}

}  // namespace Benchmarks
