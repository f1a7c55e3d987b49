#include "Service.h"

#include "Bus.h"
#include "CallQueue.h"
#include "Calls.h"
#include "Object.h"
#include "Settings.h"
#include "bridge/StatusFile.h"

namespace SettingsDbus {

namespace {

/// The bus's side of the program: objects, and one call that is carried out per turn of the loop.
class BusSource : public SettingsBridge::Source {
public:
    BusSource(const Options& options, SettingsClient::Client& host, const SettingsBridge::Log& log)
        : settings(host, log, [this](const auto& event, bool isFirst) { announce(event, isFirst); }),
          bus(options.session, {&preferences, &personal}, log) {}

    void start() {
        settings.tellChanges();
        bus.connect();
        settings.repeat();
    }
    SettingsBridge::Source& host() { return settings.hostSource(); }

    Wanted wanted() override {
        reportState();
        Wanted wanted = bus.wanted();
        if (!queue.empty()) {
            wanted.time = Time();
        }
        return wanted;
    }

    void process(short /*events*/) override {
        if (bus.process()) {
            settings.repeat();
        }
        if (bus.connection() == nullptr) {
            queue = CallQueue();
            calls.forgetCallers();
        } else if (!queue.empty()) {
            calls.carryOut(queue.next());
        }
    }

private:
    void reportState() {
        const std::string state = bus.connection() == nullptr ? "waiting for the bus"
                                  : !settings.isServed()      ? "waiting for the host"
                                                              : "connected to host and bus";
        status.write(bus.connection() != nullptr && settings.isServed(), state);
    }

    void announce(const SettingsClient::Event& event, bool isFirst) const {
        if (bus.connection() != nullptr) {
            preferences.announce(bus.connection(), event, isFirst);
            personal.announce(bus.connection(), event, isFirst);
        }
    }

    Settings settings;
    CallQueue queue;
    Calls calls{settings};
    Object preferences{Object::Privacy::PREFERENCE, settings, queue};
    Object personal{Object::Privacy::PERSONAL, settings, queue};
    Bus bus;
    SettingsBridge::StatusFile status{"settings-dbus", SETTINGS_HANDLER_VERSION};
};

}  // namespace

void serve(const Options& options) {
    const SettingsBridge::Log log(options.logLevel);
    SettingsBridge::Loop loop;
    SettingsClient::Client client({"settings-dbus", SettingsBridge::socketsOf(options)});
    BusSource bus(options, client, log);
    try {
        // The values come first, so that a call that starts the program has them.
        client.connect();
    } catch (const std::runtime_error&) {
        // The loop tries again.
    }
    bus.start();
    loop.add(bus);
    loop.add(bus.host());
    log.write(SettingsBridge::LogLevel::INFORMATION, "serving on the bus");
    loop.run("serving on the bus");
}

}  // namespace SettingsDbus
