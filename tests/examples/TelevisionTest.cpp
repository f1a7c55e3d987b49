#include <memory>

#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/contracts/DeviceInfoContract.h"
#include "SettingsHandlerTesting/contracts/SdkBridgeContract.h"
#include "SettingsHandlerTesting/kit/FakeStateStore.h"
#include "SettingsHandlerTesting/kit/FakeValueObserver.h"
#include "VoiceSdk.h"

/// The collaborators of examples/television keep the contracts, as those who begin with them expect.
namespace SettingsHandlerTesting {

struct TelevisionMaker {
    Journal journal;
    FakeStateStore state{journal};
    FakeStorage fakeStorage{journal};
    std::shared_ptr<Device> device = std::make_shared<Device>(state);
    VoiceSdk sdk{state, fakeStorage, device, std::make_shared<FakeValueObserver>(journal)};

    teskVessa::SDKBridgeInterface& bridge() { return sdk; }
    void refuseWrites(bool refuse) { state.refusesWrites = fakeStorage.refusesWrites = refuse; }
    DeviceAbstractionLayer::OrliaDeviceInfoInterface& deviceInfo() { return *device; }
    void switchMode(const std::string& mode, bool on) { EXPECT_TRUE(device->setMode(mode, on)); }
    SDKWrapper::StorageManagerInterface& storage() { return fakeStorage; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(ExampleVoiceSdk, SdkBridgeContract, TelevisionMaker, NumberedNames);
INSTANTIATE_TYPED_TEST_SUITE_P(ExampleDevice, DeviceInfoContract, TelevisionMaker, NumberedNames);

TEST(ExampleDevice, ReadsItsStateAgain) {
    TelevisionMaker television;
    EXPECT_TRUE(television.device->setMode("currentHandsFreeStatus", true));
    television.state.values["currentHandsFreeStatus"] = "off";
    television.device->readState();
    EXPECT_EQ(television.device->getDeviceInfo()["currentHandsFreeStatus"], "off");
}

TEST(ExampleVoiceSdk, ReportsWhatTheSdkTookAndNothingElse) {
    TelevisionMaker television;
    television.journal.take();
    television.sdk.setTimezone("Europe/Rome");
    television.state.refusesWrites = true;
    television.sdk.setLocales({"en-US"});
    EXPECT_EQ(television.journal.take(),
              (std::vector<std::string>{"state.save(timezone, Europe/Rome)", "values.valueChanged(timezone)",
                                        R"(state.save(orliaLocale, ["en-US"]))"}));
}

}  // namespace SettingsHandlerTesting
