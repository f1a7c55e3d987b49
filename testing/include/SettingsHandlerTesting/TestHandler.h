#pragma once

#include <functional>
#include <memory>
#include <string>

#include "SettingsHandler/SettingsHandler.h"
#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeDeviceLayer.h"
#include "SettingsHandlerTesting/FakeMetrics.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/FakeTransport.h"
#include "SettingsHandlerTesting/Journal.h"

namespace SettingsHandlerTesting {

/// A handler with fakes as collaborators, initialised, with an empty journal:
///
///     TestHandler handler;
///     handler->setSetting("deviceName", "Den");
///     EXPECT_EQ(handler.storage.stored("deviceName"), "Den");
///
/// Options: the fakes and their options; and what is arranged before the handler is made, for example your own
/// collaborators in place of the fakes:
///
///     TestHandler handler([&](TestHandler& around) {
///         around.storage.put("deviceName", "Den");
///         around.used.sdkBridge = myBridge;
///     });
///
/// `BasicTestHandler<MyHandler>` does the same for a derived handler, such as
/// `SettingsHandlerKit::CheckedSettingsHandler`.
///
/// Threads: those of the fakes and the handler; construct and destroy it on one thread.
///
/// Differences from a service: it does not call `migrateExistingDeviceSettings` and adds no observers. Log lines and
/// the metrics cache are in the journal only while a `PlatformRecording` exists, see `platform/PlatformDoubles.h`.
template <typename Handler = SettingsHandler::SettingsHandler>
class BasicTestHandler {
public:
    /// Runs before the handler is made.
    using Arrangement = std::function<void(BasicTestHandler&)>;

    /// Calls `arrange`, then makes and initialises the handler.
    explicit BasicTestHandler(const Arrangement& arrange = {}) {
        sdkBridge->handsOn = [this](const std::string& settingDBId, const std::string& value) {
            handOn(settingDBId, value);
        };
        if (arrange) {
            arrange(*this);
        }
        handler = std::make_shared<Handler>(used.transport, *used.storage, used.metrics, used.sdkBridge, used.appLaunch,
                                            used.deviceInfo);
        handler->initializeSettings();
        deviceLayer.subscribe(handler, handler);
        journal.take();
    }

    BasicTestHandler(const BasicTestHandler&) = delete;
    BasicTestHandler& operator=(const BasicTestHandler&) = delete;

    /// The handler.
    Handler* operator->() const { return handler.get(); }

    /// The collaborators, their journal and the device layer.
    /// @{
    Journal journal;
    std::shared_ptr<FakeTransport> transport = std::make_shared<FakeTransport>(journal);
    FakeStorage storage{journal};
    std::shared_ptr<FakeMetrics> metrics = std::make_shared<FakeMetrics>(journal);
    std::shared_ptr<FakeSdkBridge> sdkBridge = std::make_shared<FakeSdkBridge>(journal);
    std::shared_ptr<FakeAppLaunch> appLaunch = std::make_shared<FakeAppLaunch>(journal);
    std::shared_ptr<FakeDeviceInfo> deviceInfo = std::make_shared<FakeDeviceInfo>(journal);
    FakeDeviceLayer deviceLayer{deviceInfo};
    /// @}

    /// The collaborators that the handler is made with: the fakes, unless the arrangement replaces them.
    struct Collaborators {
        /// The arguments of the handler's constructor.
        /// @{
        std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> transport;
        SDKWrapper::StorageManagerInterface* storage;
        std::shared_ptr<Metrics::MetricsDelegateInterface> metrics;
        std::shared_ptr<teskVessa::SDKBridgeInterface> sdkBridge;
        std::shared_ptr<DeviceAbstractionLayer::AppLaunch> appLaunch;
        std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> deviceInfo;
        /// @}
    };
    /// Change them in the arrangement only.
    Collaborators used{transport, &storage, metrics, sdkBridge, appLaunch, deviceInfo};

    /// The handler, to be shared.
    std::shared_ptr<Handler> handler;

private:
    /// As on a device: values that are passed to the voice SDK reach the owner that the handler reads them from.
    void handOn(const std::string& settingDBId, const std::string& value) {
        if (settingDBId == "friendlyName") {
            storage.put(settingDBId, value);
        } else if (settingDBId == "handsFreeEnabled") {
            deviceInfo->switchMode(handsFreeMode, value == "true");
        } else if (settingDBId == "handsFreeAlwaysOnEnabled") {
            deviceInfo->switchMode(alwaysOnVoiceMode, value == "true");
        } else if (settingDBId == "pttAlwaysOnEnabled") {
            deviceInfo->switchMode(alwaysOnPttMode, value == "true");
        }
    }
};

/// With the handler itself.
using TestHandler = BasicTestHandler<>;

}  // namespace SettingsHandlerTesting
