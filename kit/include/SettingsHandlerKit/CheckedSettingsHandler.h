#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "SettingsHandler/SettingsHandler.h"
#include "SettingsHandlerKit/Outcome.h"

namespace SettingsHandlerKit {

/// The settings handler for a service that is reached from outside: no text that a client, a device or a storage gives
/// it ends the process, and it reports the outcome of each request. Everything else is as in the handler that it is
/// derived from.
///
///     auto handler = CheckedSettingsHandler::create(transport, storage, metrics, bridge, launcher, info);
///
/// A value of "orliaLocale" that is JSON but not an array, or an array of more than 32 levels, is rejected: logged at
/// level 3 and not passed on, a request before its time stamp is recorded. This holds for delivered requests, for
/// direct calls of the operations, for notifications of the device layer and for stored values of older software.
///
/// Memory: a GetSettings request whose values are larger than 2 MiB together, or than what `Options::hasRoomFor`
/// allows, is refused (`Outcome::Reason::BUSY`, logged at level 2, no reply). When the cache keeps more than 1 MiB of
/// values after a request, `initializeSettings` is called, as after a restart; this may change values of the voice SDK.
///
/// Threads: as for the handler.
class CheckedSettingsHandler : public SettingsHandler::SettingsHandler {
public:
    /// What is not a collaborator.
    struct Options {
        /// Called before a GetSettings request gathers more than 64 KiB: may so many bytes be gathered for one reply?
        /// Without it, as many as the handler allows. Threads: those of requests.
        std::function<bool(std::size_t)> hasRoomFor;
    };

    /// Makes a handler and logs "Initialized Settings Handler" at level 0. The arguments are those of the constructor.
    /// - Returns: never null.
    /// - Errors: as for the constructor.
    static std::shared_ptr<CheckedSettingsHandler> create(
        std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> transport,
        SDKWrapper::StorageManagerInterface& storage, std::shared_ptr<Metrics::MetricsDelegateInterface> metrics,
        std::shared_ptr<teskVessa::SDKBridgeInterface> bridge,
        std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher,
        std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info, Options options = {});

    /// Registers the five request handlers with `transport`; reads, writes and logs nothing. The handler shares the
    /// collaborators; only `storage` stays the caller's and must outlive the handler. A storage that implements
    /// `LegacyValueStorage` is used as such.
    /// - Errors: `std::invalid_argument` that names a null collaborator; exceptions of the transport's registration and
    ///   of memory allocation.
    CheckedSettingsHandler(std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> transport,
                           SDKWrapper::StorageManagerInterface& storage,
                           std::shared_ptr<Metrics::MetricsDelegateInterface> metrics,
                           std::shared_ptr<teskVessa::SDKBridgeInterface> bridge,
                           std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher,
                           std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info,
                           Options options = {});

    CheckedSettingsHandler(const CheckedSettingsHandler&) = delete;
    CheckedSettingsHandler& operator=(const CheckedSettingsHandler&) = delete;
    ~CheckedSettingsHandler() override;

    /// Returns: the outcome of the request, log-out or `setSetting` that ended last on the calling thread; one with
    /// `DONE` when there was none. Those that an observer or collaborator calls meanwhile do not count.
    /// After an exception of a collaborator: `CHANGED` or `DONE` when the owner had taken the value or the storage was
    /// cleared before it; otherwise `REFUSED`, with `NOT_STORED` for a write or a log-out.
    /// - Threads: any. The outcomes of the 16 threads that used the handler last are kept.
    Outcome outcome() const;

    /// Returns: the newest accepted time stamp of each setting that has one, by key. All unknown keys share one, whose
    /// key is empty.
    /// - Threads: those of requests.
    std::map<std::string, long> newestTimestamps() const;

    /// Rejects what would end the process: returns false.
    bool setSetting(const std::string& name, const std::string& value) override;
    /// As the handler's; `startOver` clears the record of time stamps. A derived class that has its own rule calls
    /// this one for time stamps that it accepts, so that the outcome can tell `newest`.
    bool isRequestValid(std::string& settingDBId, long timestamp) override;
    /// Rejects what would end the process, without a call of `setSetting`.
    void notifySystemSettingChanged(std::string name, std::string value) override;
    /// First `setUnusableValuesAside`, then as the handler's.
    void migrateExistingDeviceSettings() override;
    /// Sets a stored locale that would end the process aside, under the first free key of "orliaLocale.unusable",
    /// "orliaLocale.unusable.2", …, which is logged at level 3. Call it before `initializeSettings`, so that a failure
    /// stops the start early.
    /// - Errors: `std::runtime_error` when it could not be set aside. It is still stored then, and the next call tries
    ///   again.
    void setUnusableValuesAside();

    /// Begins anew, as after a restart, because owners have taken changes back: forgets the time stamps of requests,
    /// calls `initializeSettings`, tells the observers of each setting in `changed` its value (of a locale list without
    /// locales: ""), then calls `migrateExistingDeviceSettings`. Not while a request is handled. `outcome` stays.
    /// - Errors: exceptions of these operations.
    /// - Threads: that of requests.
    void startOver(const std::set<std::string>& changed);

    /// As the handler's, and checked and counted for `outcome` like a delivered request.
    ///
    /// This operation and the four below hide those of the base class. Called through a reference to the base class,
    /// they are checked only where `setSetting` is called: a request's time stamp is recorded before its value is
    /// rejected.
    void handleGetSettingsRequest(const std::string& message);
    /// Like `handleGetSettingsRequest`. Returns: false for a rejected request too.
    bool handleSetSettingRequest(const std::string& message);
    /// Like `handleGetSettingsRequest`.
    void handleIsOrliaSelectedVARequest(const std::string& message);
    /// Like `handleGetSettingsRequest`.
    void handleOpenVASettingsRequest(const std::string& message);
    /// Like `handleGetSettingsRequest`.
    void handleLogOutRequest();

private:
    struct Parts;

    explicit CheckedSettingsHandler(const std::shared_ptr<Parts>& madeParts);
    void tellObservers(const std::string& settingDBId);

    std::shared_ptr<Parts> parts;
};

}  // namespace SettingsHandlerKit
