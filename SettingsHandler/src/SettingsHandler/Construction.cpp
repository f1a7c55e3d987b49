#include "CommunicationHandler/MessageType.h"
#include "Constants.h"
#include "Logging.h"
#include "SettingsHandler/SettingsHandler.h"

namespace SettingsHandler {

// NOLINTBEGIN(modernize-pass-by-value): copied, not moved, so that owners see the same reference counts at every step.
SettingsHandler::SettingsHandler(std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> transport,
                                 SDKWrapper::StorageManagerInterface& storage,
                                 std::shared_ptr<Metrics::MetricsDelegateInterface> metrics,
                                 std::shared_ptr<teskVessa::SDKBridgeInterface> bridge,
                                 std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher,
                                 std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info)
    : communicationHandler(transport),
      storageManager(storage),
      metricsDelegate(metrics),
      sdkBridge(bridge),
      appLaunch(launcher),
      deviceInfo(info) {
    transport->registerMessageHandler(CommunicationHandler::GET_SETTINGS,
                                      [this](const std::string& message) { handleGetSettingsRequest(message); });
    transport->registerMessageHandler(CommunicationHandler::IS_ORLIA_SELECTED_VA,
                                      [this](const std::string& message) { handleIsOrliaSelectedVARequest(message); });
    transport->registerMessageHandler(CommunicationHandler::OPEN_VA_SETTINGS,
                                      [this](const std::string& message) { handleOpenVASettingsRequest(message); });
    transport->registerMessageHandler(CommunicationHandler::SET_SETTINGS,
                                      [this](const std::string& message) { handleSetSettingRequest(message); });
    transport->registerMessageHandler(CommunicationHandler::LOG_OUT,
                                      [this](const std::string&) { handleLogOutRequest(); });
}

std::shared_ptr<SettingsHandler> SettingsHandler::create(
    std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> transport,
    SDKWrapper::StorageManagerInterface& storage, std::shared_ptr<Metrics::MetricsDelegateInterface> metrics,
    std::shared_ptr<teskVessa::SDKBridgeInterface> bridge, std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher,
    std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info) {
    // Intended: two allocations, so that a weak pointer does not keep the handler's memory.
    std::shared_ptr<SettingsHandler> handler(new SettingsHandler(transport, storage, metrics, bridge, launcher, info));
    logTrace(logTag, "Initialized Settings Handler");
    return handler;
}
// NOLINTEND(modernize-pass-by-value)

SettingsHandler::~SettingsHandler() = default;

}  // namespace SettingsHandler
