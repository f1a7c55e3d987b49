#include <array>

#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/JsonText.h"
#include "SettingsHandlerTesting/contracts/DeviceInfoContract.h"
#include "SettingsHandlerTesting/contracts/SdkBridgeContract.h"
#include "SettingsHandlerTesting/contracts/TransportContract.h"
#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "SettingsHandlerTesting/kit/FakeStateStore.h"
#include "SettingsHandlerTesting/kit/FakeValueObserver.h"
#include "kit/support/LogRecording.h"
#include "kit/support/TrafficRecording.h"
#include "server/protocol/MessageHub.h"
#include "simulation/SimulatedDevice.h"
#include "simulation/SimulatedSdkBridge.h"

/// The host's own collaborators keep the contracts that every implementer can run. They belong to the host's one
/// thread, so none offers itself to others.
namespace SettingsHandlerTesting {

struct SimulatedDeviceMaker {
    Journal journal;
    FakeStateStore state{journal};
    SettingsHost::SimulatedDevice device{state, std::make_shared<FakeValueObserver>(journal)};

    DeviceAbstractionLayer::OrliaDeviceInfoInterface& deviceInfo() { return device; }
    void switchMode(const std::string& mode, bool on) {
        using Mode = SettingsHost::SimulatedDevice::Mode;
        static const std::map<std::string, Mode> modes{{"currentHandsFreeStatus", Mode::HANDS_FREE},
                                                       {"currentAlwaysOnVoiceMode", Mode::ALWAYS_ON_VOICE},
                                                       {"currentAlwaysOnPTTMode", Mode::ALWAYS_ON_PTT}};
        EXPECT_TRUE(device.setMode(modes.at(mode), on));
    }
};
INSTANTIATE_TYPED_TEST_SUITE_P(SimulatedDevice, DeviceInfoContract, SimulatedDeviceMaker, NumberedNames);

struct SimulatedSdkBridgeMaker {
    Journal journal;
    FakeStorage fakeStorage{journal};
    FakeStateStore state{journal};
    std::shared_ptr<FakeValueObserver> values = std::make_shared<FakeValueObserver>(journal);
    std::shared_ptr<SettingsHost::SimulatedDevice> device =
        std::make_shared<SettingsHost::SimulatedDevice>(state, values);
    SettingsHost::SimulatedSdkBridge sdk{state, fakeStorage, device, values};

    teskVessa::SDKBridgeInterface& bridge() { return sdk; }
    void refuseWrites(bool refuse) { state.refusesWrites = fakeStorage.refusesWrites = refuse; }
    void switchCaptions(bool on) { EXPECT_TRUE(sdk.setCaptionsEnabled(on)); }
    void switchDoNotDisturb(bool on) { EXPECT_TRUE(sdk.setDoNotDisturbEnabled(on)); }
    DeviceAbstractionLayer::OrliaDeviceInfoInterface& deviceInfo() { return *device; }
    SDKWrapper::StorageManagerInterface& storage() { return fakeStorage; }
};
INSTANTIATE_TYPED_TEST_SUITE_P(SimulatedSdkBridge, SdkBridgeContract, SimulatedSdkBridgeMaker, NumberedNames);

struct MessageHubMaker {
    SettingsHostTests::LogRecording log;
    SettingsHandlerKit::MessageHub hub{std::make_shared<SettingsHandlerKit::TrafficRecording>()};
    std::array<std::shared_ptr<FakeClient>, 2> clients{std::make_shared<FakeClient>(), std::make_shared<FakeClient>()};

    MessageHubMaker() {
        for (const auto& client : clients) {
            hub.connected(client);
        }
    }
    CommunicationHandler::CommunicationHandlerInterface& transport() { return hub; }
    void send(int client, int /*messageType*/, const std::string& text) { hub.received(of(client), text); }
    std::vector<ReceivedMessage> take(int client) {
        std::vector<ReceivedMessage> messages;
        for (const auto& text : of(client)->take()) {
            rapidjson::Document frame;
            frame.Parse(text.c_str(), text.size());
            if (!frame.HasMember("error")) {
                const auto kind = frame.HasMember("sequence") ? ReceivedMessage::EVENT : ReceivedMessage::REPLY;
                messages.push_back(
                    {kind, frame["type"].GetInt(), frame["messageId"].GetString(), jsonText(frame["payload"])});
            }
        }
        return messages;
    }

private:
    const std::shared_ptr<FakeClient>& of(int client) const { return clients.at(static_cast<std::size_t>(client)); }
};
INSTANTIATE_TYPED_TEST_SUITE_P(MessageHub, TransportContract, MessageHubMaker, NumberedNames);

}  // namespace SettingsHandlerTesting
