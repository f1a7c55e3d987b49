#pragma once

#include <string>
#include <vector>

namespace teskVessa {

/// The bridge to the voice SDK, which owns locale, time zone, captions on/off and do-not-disturb. The hands-free
/// switch, the always-on modes and the friendly name are passed to it.
///
/// The library calls it on the thread that calls the handler. No lock is held, except inside `initializeSettings` and
/// `getCurrentSettingsMap`, which hold the cache mutex: do not call the handler from there. Strings and lists are
/// passed by value: the implementer may keep them.
///
/// The implementer returns current values from memory, and may be called from every thread that calls the handler.
///
/// The order of the operations is part of the binary interface.
class [[gnu::visibility("default")]] SDKBridgeInterface {
public:
    /// Switches hands-free listening on or off.
    virtual void setHandsFreeEnabled(bool enabled) = 0;

    /// Sets "handsFreeAlwaysOnEnabled", "pttAlwaysOnEnabled" or "friendlyName".
    /// - Returns: false when the SDK refused it; the handler then records a metric and reports the change all the same.
    virtual bool applySetting(std::string settingDBId, std::string value) = 0;

    /// Sets the time zone. `timezone`: any text.
    virtual void setTimezone(std::string timezone) = 0;

    /// Returns: the current time zone.
    virtual std::string getTimezone() = 0;

    /// Sets the locales, the primary one first.
    virtual void setLocales(std::vector<std::string> locales) = 0;

    /// Returns: the current locales, the primary one first.
    virtual std::vector<std::string> getLocales() = 0;

protected:
    virtual void reserved7() {}

public:
    /// Returns: whether captions are on.
    virtual bool isCaptionsEnabled() = 0;

protected:
    virtual void reserved9() {}

public:
    /// Returns: whether do-not-disturb is on.
    virtual bool isDoNotDisturbEnabled() = 0;

    virtual ~SDKBridgeInterface() = default;
};

}  // namespace teskVessa
