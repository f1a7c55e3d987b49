#pragma once

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include <systemd/sd-bus.h>

namespace SettingsDbus {

using Message = std::unique_ptr<sd_bus_message, decltype(&sd_bus_message_unref)>;

inline Message referTo(sd_bus_message* message) {
    return {sd_bus_message_ref(message), &sd_bus_message_unref};
}

/// A function of sd-bus failed, or the bus refused something.
class BusError : public std::runtime_error {
public:
    BusError(const std::string& what, int result) : std::runtime_error(what + ": " + std::strerror(-result)) {}
};

/// Throws `BusError` when `result` is an error of sd-bus. Returns: `result`.
inline int check(const char* what, int result) {
    return result < 0 ? throw BusError(what, result) : result;
}

/// A call is answered with an error of this name and text.
class CallError : public std::runtime_error {
public:
    CallError(std::string errorName, const std::string& text) : std::runtime_error(text), name(std::move(errorName)) {}

    const std::string name;
};

namespace ErrorName {

constexpr const char* readOnly = "org.settingshandler.Error.ReadOnly";
constexpr const char* stale = "org.settingshandler.Error.Stale";
constexpr const char* wrongForm = "org.settingshandler.Error.WrongForm";
constexpr const char* notStored = "org.settingshandler.Error.NotStored";
constexpr const char* unavailable = "org.settingshandler.Error.Unavailable";

}  // namespace ErrorName

}  // namespace SettingsDbus
