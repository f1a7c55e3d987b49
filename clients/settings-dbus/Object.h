#pragma once

#include <map>
#include <string>
#include <vector>

#include "CallQueue.h"
#include "Message.h"
#include "Settings.h"
#include "Wire/Catalogue.h"

namespace SettingsDbus {

/// The name on the bus, and that of the one interface that the objects have.
constexpr const char* serviceName = "org.settingshandler.Settings1";

/// An object on the bus: the settings of one privacy class. A policy of the bus tells objects apart, not properties.
/// Reading is answered at once, from memory; calls that change something go to the queue.
class Object {
public:
    enum class Privacy { PREFERENCE, PERSONAL };

    Object(Privacy privacy, const Settings& settings, CallQueue& queue);
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    const std::string& path() const { return objectPath; }
    /// Adds it to `bus`, which must not outlive it. Errors: `BusError`.
    void addTo(sd_bus* bus);
    /// Sends the signals of a change, as `Settings::Observer` has it; nothing when the setting is not one of its own.
    void announce(sd_bus* bus, const SettingsClient::Event& event, bool isFirst) const;

private:
    const Wire::SettingDescription* settingOf(const std::string& key) const;
    /// Errors: `CallError`.
    const Wire::SettingDescription& requireKey(const std::string& key) const;
    const Wire::SettingDescription& requireProperty(const char* property) const;

    int appendProperty(const char* property, sd_bus_message* reply) const;
    int replyToGet(sd_bus_message* call) const;
    Call parse(sd_bus_message* call) const;

    /// For sd-bus.
    static int takeAny(sd_bus_message* call, void* object, sd_bus_error* error);
    static int takeGet(sd_bus_message* call, void* object, sd_bus_error* error);
    static int takeCall(sd_bus_message* call, void* object, sd_bus_error* error);
    static int getProperty(sd_bus* bus, const char* path, const char* interface, const char* property,
                           sd_bus_message* reply, void* object, sd_bus_error* error);
    static int setProperty(sd_bus* bus, const char* path, const char* interface, const char* property,
                           sd_bus_message* value, void* object, sd_bus_error* error);

    const std::string objectPath;
    const Settings& settings;
    CallQueue& queue;
    /// By the name of the property, to which the table of sd-bus refers.
    std::map<std::string, const Wire::SettingDescription*> properties;
    std::vector<sd_bus_vtable> table;
};

}  // namespace SettingsDbus
