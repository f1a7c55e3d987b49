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

/// The assistant settings of a device: what a host service and the device layer may ask of the handler.
///
/// Values are strings throughout: booleans are "true" and "false", the locale list is the compact JSON text of an
/// array such as `["en-US","es-US"]`. Nothing is trimmed or normalised; comparisons are exact.
///
/// Threads: every operation may be called from any thread unless it says otherwise. One mutex, the cache's, guards the
/// cache of last known values and the observers; it is never held while an observer, the transport or the metrics sink
/// is called. Operations that hold it while they call the voice SDK or the device information say so.
///
/// Errors: refusals are bool results and log lines. The handler catches nothing, so an exception of a collaborator or
/// an observer leaves the operation that called it, with the mutex free.
///
/// The order of the operations is binary interface.
class [[gnu::visibility("default")]] SettingsHandlerInterface
    : public DeviceAbstractionLayer::DeviceInfoObserverInterface,
      public DeviceAbstractionLayer::HandsfreeStateObserverInterface {
public:
    /// Fills the cache with the current value of every setting, then tells the voice SDK the hands-free switch and the
    /// two always-on modes. Call it once, after construction and before requests and notifications are let in.
    /// Calling it again repeats everything.
    /// Errors: a refusal by the voice SDK is ignored; exceptions pass.
    /// Locks: holds the cache's mutex throughout, the calls to storage, voice SDK and device information included.
    virtual void initializeSettings() = 0;

    /// Reads settings from their owners: voice SDK, device information or storage with the catalogue's default.
    /// `names`: setting keys, also unknown ones, which are looked up in the storage; empty asks for all
    /// settings. Returns: key and value of each, ordered by key; a key with neither a stored value nor a default is
    /// left out and logged at level 3. Locks: none. A value found for an unknown key is written to the cache without
    /// the mutex, so reading unknown keys is safe only while no other thread uses the handler.
    virtual std::map<std::string, std::string> getSettings(const std::vector<std::string>& names) = 0;

    /// Gives the setting `name` the new `value`, hands it to its owner and, when that makes a change, updates the
    /// cache, sends the event, records the metrics and calls the observers of that setting. `name`: a setting key; an
    /// unknown one is stored under its own text. `value`: any string. "orliaLocale" takes the JSON text of an array
    /// with at least one non-empty string; JSON of another kind ends the process. "captionsEnabled" and
    /// "doNotDisturbEnabled" cannot be written. Returns: true when the call was treated as a change; false when the
    /// value is the same, malformed, not writable or was not stored (logged except for an unchanged stored value). The
    /// entitlement status answers true also when it was not stored, and a refusal by the voice SDK never makes it
    /// false. Locks: the cache's mutex for the look-up and the update of the cache only.
    virtual bool setSetting(const std::string& name, const std::string& value) = 0;

    /// Is a SetSettings request for `settingDBId` not older than the newest one accepted? Records `timestamp` if so.
    /// `timestamp`: in any unit, as long as the senders agree; equal time stamps are accepted. All unknown keys share
    /// one record.
    /// Returns: false when a strictly newer time stamp is on record, which then stays.
    /// Threads: the transport's only; the record has no lock.
    virtual bool isRequestValid(std::string & settingDBId, long timestamp) = 0;

    /// Reads do-not-disturb, captions on/off, locale, time zone and the hands-free switch from their owners into the
    /// cache. The always-on modes are returned as last known.
    /// Returns: a copy of the whole cache, ordered by key.
    /// Locks: holds the cache's mutex throughout, the calls to voice SDK and device information included.
    virtual std::map<std::string, std::string> getCurrentSettingsMap() = 0;

    void notifyHandsfreeStateChanged(bool enabled) override = 0;

    /// Has `observer` told of the primary locale each time the locale list is written. There is no way to remove it: it
    /// lives until the handler is destroyed.
    /// A null observer is logged at level 2 and ignored, as by the four operations below; one that is already there
    /// stays there once. An observer added while a change is being announced hears of the next one. Locks: the cache's
    /// mutex.
    virtual void addOrliaLocaleObserver(std::shared_ptr<VessaNativeCommon::OrliaLocaleObserverInterface> observer) = 0;

    /// Has `observer` told of each new friendly name until it is removed.
    virtual void addFriendlyNameObserver(
        std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface> observer) = 0;

    /// Releases `observer`; one that was never added is ignored. A change that is being announced still reaches it.
    virtual void removeFriendlyNameObserver(
        std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface> observer) = 0;

    /// Has `observer` told of each new entitlement status until it is removed.
    virtual void addEntitlementStatusObserver(std::shared_ptr<teskVessa::NativeBridgeInterface> observer) = 0;

    /// Releases `observer`, like `removeFriendlyNameObserver`.
    virtual void removeEntitlementStatusObserver(std::shared_ptr<teskVessa::NativeBridgeInterface> observer) = 0;

    /// Writes a locale list and a time zone that older software left in the storage through `setSetting`, and removes
    /// each that was accepted. A refused one, also one that the voice SDK already has, stays and is tried again by the
    /// next call.
    /// Errors: only logged. A stored locale that is JSON but no array ends the process, see `setSetting`.
    /// Threads: the host's. Locks: what `setSetting` takes.
    virtual void migrateExistingDeviceSettings() = 0;

    ~SettingsHandlerInterface() override = default;
};

}  // namespace SettingsHandler
