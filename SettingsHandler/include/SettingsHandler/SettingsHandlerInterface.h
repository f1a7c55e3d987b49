#pragma once

#include <climits>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "DeviceAbstractionLayer/DeviceInfoObserverInterface.h"
#include "DeviceAbstractionLayer/HandsfreeStateObserverInterface.h"
#include "VessaNativeCommon/FriendlyNameObserverInterface.h"
#include "VessaNativeCommon/OrliaLocaleObserverInterface.h"
#include "teskVessa/NativeBridgeInterface.h"

static_assert(sizeof(long) * CHAR_BIT >= 64,
              "SettingsHandler carries 64-bit time stamps in `long`: build it for a 64-bit Linux target");

namespace SettingsHandler {

/// The assistant settings of a device, as a host service and the device layer see them.
///
/// Values are strings: a switch is "true" or "false", the locale list is the compact JSON text of an array such as
/// `["en-US","es-US"]`. Values are not trimmed or normalised, and comparisons are exact.
///
/// Threads: any thread may call any operation, unless the operation says otherwise.
///
/// Locks: one mutex, the cache mutex, guards the cache of last known values and the observers. It is not recursive. It
/// is never held while an observer, the transport or the metrics sink is called. Operations that hold it while they
/// call another collaborator say so.
///
/// Errors: a refusal is a bool result and a log line. The handler catches nothing: an exception of a collaborator or an
/// observer leaves the operation that called it, and the mutex is free then.
///
/// The order of the operations is part of the binary interface.
class [[gnu::visibility("default")]] SettingsHandlerInterface
    : public DeviceAbstractionLayer::DeviceInfoObserverInterface,
      public DeviceAbstractionLayer::HandsfreeStateObserverInterface {
public:
    /// Reads the current value of every setting into the cache, then passes the hands-free switch and the two always-on
    /// modes to the voice SDK. Call it once, after construction and before requests and notifications are delivered. A
    /// second call repeats everything.
    /// - Errors: a refusal by the voice SDK is ignored; exceptions pass.
    /// - Locks: holds the cache mutex throughout, also while it calls storage, voice SDK and device information.
    virtual void initializeSettings() = 0;

    /// Reads settings from their owners: the voice SDK, the device information, or the storage with the default of the
    /// catalogue.
    /// - `names`: keys of settings; an empty list asks for all. Unknown keys are looked up in the storage.
    /// - Returns: key and value of each, ordered by key. A key with neither a stored value nor a default is left out
    ///   and logged at level 3.
    /// - Locks: none. The value of an unknown key is written to the cache without the mutex, so read unknown keys only
    ///   while no other thread uses the handler.
    virtual std::map<std::string, std::string> getSettings(const std::vector<std::string>& names) = 0;

    /// Sets the setting `name` to `value`: compares it with the old value and, when it differs, passes it to the owner
    /// of the setting, updates the cache, sends the event, records the metrics and notifies the observers of that
    /// setting.
    /// - `name`: a key; the value of an unknown key is stored under that key.
    /// - `value`: any string. "orliaLocale" takes the JSON text of an array with at least one non-empty string; any
    ///   other JSON value ends the process. "captionsEnabled" and "doNotDisturbEnabled" are read-only.
    /// - Returns: true for a change; false when the value is unchanged, malformed, read-only or was not stored. Each
    ///   false is logged, except for the unchanged value of a stored setting. The entitlement status returns true
    ///   also when it was not stored. A refusal by the voice SDK still returns true.
    /// - Locks: the cache mutex while it reads or updates the cache, and while it copies the list of observers.
    virtual bool setSetting(const std::string& name, const std::string& value) = 0;

    /// Checks that a SetSettings request for `settingDBId` is not older than the newest accepted one, and records its
    /// time stamp.
    /// - `timestamp`: in any unit that all clients share. An equal time stamp is accepted. All unknown keys share one
    ///   record.
    /// - Returns: false when a newer time stamp is on record; the record then stays as it is.
    /// - Threads: the transport's only. Locks: none.
    virtual bool isRequestValid(std::string & settingDBId, long timestamp) = 0;

    /// Reads do-not-disturb, captions on/off, locale, time zone and the hands-free switch from their owners into the
    /// cache. Everything else, the always-on modes included, is returned as last known.
    /// - Returns: a copy of the whole cache, ordered by key.
    /// - Locks: holds the cache mutex throughout, also while it calls voice SDK and device information.
    virtual std::map<std::string, std::string> getCurrentSettingsMap() = 0;

    void notifyHandsfreeStateChanged(bool enabled) override = 0;

    /// Adds an observer of the primary locale, which is notified each time the locale list is set. It cannot be
    /// removed: the handler shares it until the handler is destroyed.
    ///
    /// For this and the four operations below: a null observer is logged at level 2 and ignored; an observer is held
    /// once, however often it is added; one that is added during a notification is notified of the next change.
    /// - Locks: the cache mutex.
    virtual void addOrliaLocaleObserver(std::shared_ptr<VessaNativeCommon::OrliaLocaleObserverInterface> observer) = 0;

    /// Adds an observer of the friendly name and shares it until it is removed. Locks: the cache mutex.
    virtual void addFriendlyNameObserver(
        std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface> observer) = 0;

    /// Removes and releases `observer`; one that was never added is ignored. A notification that is under way still
    /// reaches it. Locks: the cache mutex.
    virtual void removeFriendlyNameObserver(
        std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface> observer) = 0;

    /// Adds an observer of the entitlement status and shares it until it is removed. Locks: the cache mutex.
    virtual void addEntitlementStatusObserver(std::shared_ptr<teskVessa::NativeBridgeInterface> observer) = 0;

    /// Removes `observer`, like `removeFriendlyNameObserver`.
    virtual void removeEntitlementStatusObserver(std::shared_ptr<teskVessa::NativeBridgeInterface> observer) = 0;

    /// Sets the locale list and the time zone that older software left in the storage, and removes each stored value
    /// that `setSetting` accepted. A value that was refused, or that the voice SDK already has, stays in the storage
    /// and is tried again by the next call.
    /// - Errors: logged. A stored locale that is JSON but not an array ends the process, see `setSetting`.
    /// - Locks: those of `setSetting`.
    virtual void migrateExistingDeviceSettings() = 0;

    ~SettingsHandlerInterface() override = default;
};

}  // namespace SettingsHandler
