#include "Service.h"

#include "Bus.h"
#include "CallQueue.h"
#include "Calls.h"
#include "Object.h"
#include "Settings.h"
#include "bridge/ServiceManager.h"

namespace SettingsDbus {

namespace {

/// The bus's side of the program: objects, and one call that is carried out per turn of the loop.
class BusSource : public SettingsBridge::Source {
public:
    BusSource(const Options& options, SettingsClient::Client& host, const SettingsBridge::Log& log)
        : settings(host, log, [this](const auto& change) { announce(change); }),
          bus(options.session, {&preferences, &personal}, log) {}

    Wanted wanted() override {
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
            queue.clear();
            calls.forgetCallers();
        } else if (!queue.empty()) {
            calls.carryOut(queue.next());
        }
    }

private:
    void announce(const Change& change) const {
        if (bus.connection() != nullptr) {
            preferences.announce(bus.connection(), change);
            personal.announce(bus.connection(), change);
        }
    }

    Settings settings;
    CallQueue queue;
    Calls calls{settings};
    Object preferences{Object::Privacy::PREFERENCE, settings, queue};
    Object personal{Object::Privacy::PERSONAL, settings, queue};
    Bus bus;
};

}  // namespace

void serve(const Options& options) {
    const SettingsBridge::Log log(options.logLevel);
    SettingsBridge::Loop loop;
    SettingsClient::Client client({"settings-dbus", SettingsBridge::socketsOf(options)});
    BusSource bus(options, client, log);
    SettingsBridge::HostSource host(client);
    loop.add(bus);
    loop.add(host);
    SettingsBridge::notifyReady("serving on the bus");
    loop.run();
    SettingsBridge::notifyStopping();
}

}  // namespace SettingsDbus
