#pragma once

#include <string>
#include <vector>

namespace teskVessa {

/// The bridge to the voice SDK, which owns locale, time zone, captions on/off and do-not-disturb, and which is told
/// of the hands-free and always-on modes and of the friendly name.
///
/// What the library does: calls it on the thread of the request or notification. No lock is held, except inside
/// `initializeSettings` and `getCurrentSettingsMap`, which hold the cache's mutex: do not call back into the handler
/// from there. Strings and lists are passed by value on purpose: they are the implementer's to keep.
///
/// What the implementer does: answers reads from memory, and is safe to call from every thread that the handler is
/// called from. The order of the operations is binary interface.
class [[gnu::visibility("default")]] SDKBridgeInterface {
public:
    /// Switches hands-free listening on or off.
    virtual void setHandsFreeEnabled(bool enabled) = 0;

    /// Hands over the value of "handsFreeAlwaysOnEnabled", "pttAlwaysOnEnabled" or "friendlyName".
    /// Returns: false when the SDK refused it; the handler counts the refusal and reports the change all the same.
    virtual bool applySetting(std::string settingDBId, std::string value) = 0;

    /// Sets the time zone, any text.
    virtual void setTimezone(std::string timezone) = 0;

    /// The current time zone.
    virtual std::string getTimezone() = 0;

    /// Sets the locales, the primary one first.
    virtual void setLocales(std::vector<std::string> locales) = 0;

    /// The current locales, the primary one first.
    virtual std::vector<std::string> getLocales() = 0;

protected:
    virtual void reserved7() {}

public:
    /// Are captions shown?
    virtual bool isCaptionsEnabled() = 0;

protected:
    virtual void reserved9() {}

public:
    /// Is do-not-disturb on?
    virtual bool isDoNotDisturbEnabled() = 0;

    virtual ~SDKBridgeInterface() = default;
};

}  // namespace teskVessa
