#include <array>

#include "SettingsHandlerTesting/TestHandler.h"
#include "SettingsHandlerTesting/contracts/DeviceInfoContract.h"
#include "SettingsHandlerTesting/contracts/SdkBridgeContract.h"
#include "SettingsHandlerTesting/contracts/StorageContract.h"
#include "SettingsHandlerTesting/contracts/TransportContract.h"

/// The fakes fulfil the contracts of what they replace.
namespace SettingsHandlerTesting {

struct FakeStorageMaker {
    static constexpr bool anyThread = true;
    Journal journal;
    FakeStorage fake{journal};
    SDKWrapper::StorageManagerInterface& storage() { return fake; }
    void failWrites(bool fail) { fake.refusesWrites = fail; }
};
INSTANTIATE_TYPED_TEST_SUITE_P(FakeStorage, StorageContract, FakeStorageMaker, NumberedNames);

struct FakeDeviceInfoMaker {
    static constexpr bool anyThread = true;
    Journal journal;
    FakeDeviceInfo fake{journal};
    FakeDeviceInfoMaker() {
        for (const auto* mode : {handsFreeMode, alwaysOnVoiceMode, alwaysOnPttMode}) {
            fake.switchMode(mode, false);
        }
    }
    DeviceAbstractionLayer::OrliaDeviceInfoInterface& deviceInfo() { return fake; }
    void switchMode(const std::string& mode, bool on) { fake.switchMode(mode, on); }
};
INSTANTIATE_TYPED_TEST_SUITE_P(FakeDeviceInfo, DeviceInfoContract, FakeDeviceInfoMaker, NumberedNames);

/// The bridge as `TestHandler` connects it.
struct FakeSdkBridgeMaker {
    static constexpr bool anyThread = true;
    TestHandler handler;
    teskVessa::SDKBridgeInterface& bridge() { return *handler.sdkBridge; }
    void refuseWrites(bool refuse) {
        auto& sdk = *handler.sdkBridge;
        sdk.refusesSettings = sdk.refusesTimezone = sdk.refusesLocales = sdk.refusesHandsFree = refuse;
    }
    void switchCaptions(bool on) { handler.sdkBridge->captionsEnabled = on; }
    void switchDoNotDisturb(bool on) { handler.sdkBridge->doNotDisturbEnabled = on; }
    DeviceAbstractionLayer::OrliaDeviceInfoInterface& deviceInfo() { return *handler.deviceInfo; }
    SDKWrapper::StorageManagerInterface& storage() { return handler.storage; }
};
INSTANTIATE_TYPED_TEST_SUITE_P(FakeSdkBridge, SdkBridgeContract, FakeSdkBridgeMaker, NumberedNames);

/// Adds two clients to the transport, which has none.
struct FakeTransportMaker {
    static constexpr bool anyThread = true;
    Journal journal;
    FakeTransport fake{journal};
    CommunicationHandler::CommunicationHandlerInterface& transport() { return fake; }
    void send(int client, int messageType, const std::string& text) {
        handOut(client);
        if (fake.handles(messageType)) {
            fake.deliver(messageType, text);
        }
        handOut(client);
    }
    std::vector<ReceivedMessage> take(int client) {
        handOut(client);
        return std::exchange(inboxes.at(static_cast<std::size_t>(client)), {});
    }

private:
    void handOut(int requester) {
        for (const auto& message : fake.takeSent()) {
            const auto kind = message.isReply() ? ReceivedMessage::REPLY : ReceivedMessage::EVENT;
            for (int client = 0; client < 2; ++client) {
                if (!message.isReply() || client == requester) {
                    inboxes.at(static_cast<std::size_t>(client))
                        .push_back({kind, message.type, message.messageId, message.payload});
                }
            }
        }
    }

    std::array<std::vector<ReceivedMessage>, 2> inboxes;
};
INSTANTIATE_TYPED_TEST_SUITE_P(FakeTransport, TransportContract, FakeTransportMaker, NumberedNames);

}  // namespace SettingsHandlerTesting
