#include "SettingsHandlerKit/CheckedSettingsHandler.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <stdexcept>
#include <utility>

#include "CommunicationHandler/MessageType.h"
#include "SettingsHandler/SettingsNames.h"
#include "SettingsHandlerKit/Logging.h"
#include "VessaLogger/Log.h"
#include "handler/CheckedCollaborators.h"
#include "handler/LegacyLocale.h"
#include "handler/LocaleGuard.h"
#include "handler/NewestTimestamps.h"
#include "handler/Outcomes.h"
#include "handler/SetRequest.h"
#include "handler/StorageBounds.h"
#include "handler/ThreadRecords.h"

namespace SettingsHandlerKit {

namespace {

constexpr const char* mustBeArray = "must be a JSON array of at most 32 levels";

template <typename Collaborator>
std::shared_ptr<Collaborator> required(std::shared_ptr<Collaborator> collaborator, const char* name, const char* type) {
    if (!collaborator) {
        throw std::invalid_argument(std::string("CheckedSettingsHandler: ") + name + " is null; pass a " + type);
    }
    return collaborator;
}

}  // namespace

/// Everything that the handler adds, and what it passes to the base class. The base class shares it, so that it
/// outlives the last use of the storage.
struct CheckedSettingsHandler::Parts {
    Parts(std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> realTransport,
          SDKWrapper::StorageManagerInterface& theStorage,
          std::shared_ptr<Metrics::MetricsDelegateInterface> metricsDelegate,
          std::shared_ptr<teskVessa::SDKBridgeInterface> realBridge,
          std::shared_ptr<DeviceAbstractionLayer::AppLaunch> appLaunch,
          std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> deviceInfo, Options options)
        : bounds(std::move(options.hasRoomFor)),
          transport(required(std::move(realTransport), "transport",
                             "CommunicationHandler::CommunicationHandlerInterface that delivers the requests"),
                    records,
                    [this](int type, const std::string& text, const CheckedTransport::RequestHandler& pass) {
                        handle(type, text, pass);
                    }),
          realStorage(theStorage),
          storage(theStorage, records, bounds),
          metrics(required(std::move(metricsDelegate), "metrics",
                           "Metrics::MetricsDelegateInterface; its operations may do nothing")),
          bridge(required(std::move(realBridge), "bridge", "teskVessa::SDKBridgeInterface to the voice SDK"), records),
          launcher(required(std::move(appLaunch), "launcher",
                            "DeviceAbstractionLayer::AppLaunch; its launchApp may return false")),
          info(required(std::move(deviceInfo), "info",
                        "DeviceAbstractionLayer::OrliaDeviceInfoInterface; its map may be empty")) {}

    void handle(int type, const std::string& text, const CheckedTransport::RequestHandler& pass);
    void passOn(ThreadRecords::Scope& scope, const std::string& text, const CheckedTransport::RequestHandler& pass);
    void boundCache();

    ThreadRecords records;
    StorageBounds bounds;
    CheckedTransport transport;
    SDKWrapper::StorageManagerInterface& realStorage;
    CheckedStorage storage;
    std::shared_ptr<Metrics::MetricsDelegateInterface> metrics;
    CheckedSdkBridge bridge;
    std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher;
    std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info;
    /// As in the base class, but forgotten by `startOver`. Used on the transport's thread only.
    NewestTimestamps newest;
    /// Set before the first request comes.
    CheckedSettingsHandler* handler = nullptr;
};

/// Handles a request as one operation.
void CheckedSettingsHandler::Parts::handle(int type, const std::string& text,
                                           const CheckedTransport::RequestHandler& pass) {
    ThreadRecords::Scope scope(records, type);
    try {
        passOn(scope, text, pass);
    } catch (const ReadLimitExceeded& error) {
        scope.conclude([&](Outcome& outcome) { outcome = busyOutcome(error.what()); });
        writeLog(VessaLogger::WARNING, "refused a GetSettings request: its values exceed the memory limit");
    } catch (...) {
        if (!scope.operation.concluded) {
            scope.conclude([&](Outcome& outcome) {
                outcome = outcomeOfFailure(scope.operation, text, {transport, newest});
            });
        }
        boundCache();
        throw;
    }
    boundCache();
}

/// Passes a request to the handler, unless it would end the process.
void CheckedSettingsHandler::Parts::passOn(ThreadRecords::Scope& scope, const std::string& text,
                                           const CheckedTransport::RequestHandler& pass) {
    if (scope.operation.type == CommunicationHandler::SET_SETTINGS &&
        !isRequestTextSafeForHandler(text, transport.payloadKey)) {
        scope.conclude([&](Outcome& outcome) { outcome = outcomeOfRejection(text, {transport, newest}); });
        writeLog(VessaLogger::ERROR, std::string("rejected orliaLocale: ") + mustBeArray);
        return;
    }
    pass(text);
    if (!scope.operation.concluded) {
        scope.conclude([&](Outcome& outcome) {
            outcome = outcomeOfRequest(scope.operation, text, {transport, newest});
        });
    }
}

/// Values of unknown keys stay in the handler's cache until it is rebuilt.
void CheckedSettingsHandler::Parts::boundCache() {
    if (!bounds.requestEnded()) {
        return;
    }
    const ThreadRecords::Scope scope(records, Operation::rebuild);
    try {
        handler->initializeSettings();
    } catch (const std::exception& error) {
        writeLog(VessaLogger::ERROR, std::string("cannot rebuild the handler's cache: ") + error.what());
    }
}

std::shared_ptr<CheckedSettingsHandler> CheckedSettingsHandler::create(
    std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> transport,
    SDKWrapper::StorageManagerInterface& storage, std::shared_ptr<Metrics::MetricsDelegateInterface> metrics,
    std::shared_ptr<teskVessa::SDKBridgeInterface> bridge, std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher,
    std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info, Options options) {
    auto handler =
        std::make_shared<CheckedSettingsHandler>(std::move(transport), storage, std::move(metrics), std::move(bridge),
                                                 std::move(launcher), std::move(info), std::move(options));
    auto& log = VessaLogger::Log::instance();
    log.emitLog(VessaLogger::TRACE, std::chrono::system_clock::now(), log.getThreadId(),
                "SettingsHandler:Initialized Settings Handler", VessaLogger::NATIVE_SERVICE);
    return handler;
}

CheckedSettingsHandler::CheckedSettingsHandler(
    std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> transport,
    SDKWrapper::StorageManagerInterface& storage, std::shared_ptr<Metrics::MetricsDelegateInterface> metrics,
    std::shared_ptr<teskVessa::SDKBridgeInterface> bridge, std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher,
    std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info, Options options)
    : CheckedSettingsHandler(std::make_shared<Parts>(std::move(transport), storage, std::move(metrics),
                                                     std::move(bridge), std::move(launcher), std::move(info),
                                                     std::move(options))) {}

CheckedSettingsHandler::CheckedSettingsHandler(const std::shared_ptr<Parts>& madeParts)
    : SettingsHandler(std::shared_ptr<CheckedTransport>(madeParts, &madeParts->transport), madeParts->storage,
                      madeParts->metrics, std::shared_ptr<CheckedSdkBridge>(madeParts, &madeParts->bridge),
                      madeParts->launcher, madeParts->info),
      parts(madeParts) {
    parts->handler = this;
}

CheckedSettingsHandler::~CheckedSettingsHandler() = default;

Outcome CheckedSettingsHandler::outcome() const {
    return parts->records.outcome();
}

std::map<std::string, long> CheckedSettingsHandler::newestTimestamps() const {
    return parts->newest.all();
}

bool CheckedSettingsHandler::setSetting(const std::string& name, const std::string& value) {
    ThreadRecords::Scope scope(parts->records, Operation::write);
    if (!isSafeForHandler(name, value)) {
        scope.conclude([&](Outcome& outcome) { outcome = outcomeOfRejection(name); });
        writeLog(VessaLogger::ERROR, "rejected " + name + ": " + mustBeArray);
        return false;
    }
    try {
        const bool changed = SettingsHandler::setSetting(name, value);
        scope.conclude([&](Outcome& outcome) { setWriteOutcome(outcome, scope.operation, changed, name, value); });
        return changed;
    } catch (...) {
        scope.conclude([&](Outcome& outcome) { outcome = outcomeOfFailure(scope.operation, name); });
        throw;
    }
}

bool CheckedSettingsHandler::isRequestValid(std::string& settingDBId, long timestamp) {
    bool valid = SettingsHandler::isRequestValid(settingDBId, timestamp);
    if (!valid) {
        // The base class knows time stamps that were forgotten.
        const auto newest = parts->newest.find(settingDBId);
        valid = !newest || *newest <= timestamp;
    }
    if (valid) {
        parts->newest.record(settingDBId, timestamp);
    }
    return valid;
}

void CheckedSettingsHandler::notifySystemSettingChanged(std::string name, std::string value) {
    if (isSafeForHandler(name, value)) {
        SettingsHandler::notifySystemSettingChanged(std::move(name), std::move(value));
        return;
    }
    ThreadRecords::Scope scope(parts->records, Operation::write);
    scope.conclude([&](Outcome& outcome) { outcome = outcomeOfRejection(name); });
    writeLog(VessaLogger::ERROR, "rejected " + name + " from the device: " + mustBeArray);
}

void CheckedSettingsHandler::migrateExistingDeviceSettings() {
    setUnusableValuesAside();
    SettingsHandler::migrateExistingDeviceSettings();
}

void CheckedSettingsHandler::setUnusableValuesAside() {
    setUnusableLocaleAside(parts->realStorage);
}

void CheckedSettingsHandler::startOver(const std::set<std::string>& changed) {
    const ThreadRecords::Scope scope(parts->records, Operation::rebuild);
    parts->newest = NewestTimestamps();
    parts->bounds.wasCleared();
    initializeSettings();
    for (const auto& settingDBId : changed) {
        tellObservers(settingDBId);
    }
    migrateExistingDeviceSettings();
}

void CheckedSettingsHandler::tellObservers(const std::string& settingDBId) {
    const auto current = [&] { return getSettings({settingDBId})[settingDBId]; };
    switch (::SettingsHandler::settingTypeFromName(settingDBId)) {
        case ::SettingsHandler::ORLIA_LOCALE: {
            auto locales = parts->bridge.getLocales();
            locales.resize(std::max<std::size_t>(locales.size(), 1));
            onOrliaLocaleChange(std::move(locales));
            break;
        }
        case ::SettingsHandler::FRIENDLY_NAME:
            onFriendlyNameChanged(current());
            break;
        case ::SettingsHandler::TOVAN_ENTITLEMENT_STATUS:
            onEntitlementStatusChanged(current());
            break;
        default:
            break;
    }
}

void CheckedSettingsHandler::handleGetSettingsRequest(const std::string& message) {
    parts->handle(CommunicationHandler::GET_SETTINGS, message,
                  [this](const auto& text) { SettingsHandler::handleGetSettingsRequest(text); });
}

bool CheckedSettingsHandler::handleSetSettingRequest(const std::string& message) {
    bool changed = false;
    parts->handle(CommunicationHandler::SET_SETTINGS, message,
                  [&](const auto& text) { changed = SettingsHandler::handleSetSettingRequest(text); });
    return changed;
}

void CheckedSettingsHandler::handleIsOrliaSelectedVARequest(const std::string& message) {
    parts->handle(CommunicationHandler::IS_ORLIA_SELECTED_VA, message,
                  [this](const auto& text) { SettingsHandler::handleIsOrliaSelectedVARequest(text); });
}

void CheckedSettingsHandler::handleOpenVASettingsRequest(const std::string& message) {
    parts->handle(CommunicationHandler::OPEN_VA_SETTINGS, message,
                  [this](const auto& text) { SettingsHandler::handleOpenVASettingsRequest(text); });
}

void CheckedSettingsHandler::handleLogOutRequest() {
    parts->handle(CommunicationHandler::LOG_OUT, "",
                  [this](const auto& /*text*/) { SettingsHandler::handleLogOutRequest(); });
}

}  // namespace SettingsHandlerKit
