#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/kit/FakeStateStore.h"
#include "SettingsHandlerTesting/kit/FakeValueObserver.h"
#include "Utils/Rapidjson.h"
#include "kit/support/LogRecording.h"
#include "simulation/DeviceCommands.h"

namespace SettingsHost {

using namespace SettingsHandlerKit;

namespace {

/// Does with notifications what the handler does, as far as these commands show it.
class Follower : public DeviceAbstractionLayer::DeviceInfoObserverInterface,
                 public DeviceAbstractionLayer::HandsfreeStateObserverInterface {
public:
    explicit Follower(SimulatedSdkBridge& bridge) : sdk(bridge) {}
    std::vector<std::string> notified;
    /// Of the next system settings.
    Outcome outcome;
    void notifyLocaleChange(std::string locale) override { sdk.setLocales({locale}); }
    void notifyLocaleChange(std::vector<std::string> locales) override { sdk.setLocales(locales); }
    void notifyTimezoneChange(std::string timezone) override { sdk.setTimezone(timezone); }
    void notifyNetworkConnectionChanged(std::string) override {}
    void notifyMicrophoneAvailabilityChanged(std::string) override {}
    void notifyAudioGuidanceChanged(bool) override {}
    void notifyDeviceModeChanged(std::string) override {}
    void notifySystemSettingChanged(std::string name, std::string value) override {
        notified.push_back(name + "=" + value);
    }
    void notifyHandsfreeStateChanged(bool enabled) override { notified.emplace_back(enabled ? "on" : "off"); }

private:
    SimulatedSdkBridge& sdk;
};

const std::string ok = R"({"ok":true})";

}  // namespace

class DeviceCommandsTest : public ::testing::Test {
protected:
    DeviceCommandsTest() { device->subscribe(observer, observer); }

    std::string execute(const std::string& frame) {
        rapidjson::Document request;
        request.Parse(frame.c_str());
        return commands.execute(request);
    }

    std::string codeOf(const std::string& frame) {
        rapidjson::Document answer;
        answer.Parse(execute(frame).c_str());
        return answer.HasMember("error") ? answer["error"]["code"].GetString() : "no error";
    }

    SettingsHostTests::LogRecording log;
    SettingsHandlerTesting::Journal journal;
    SettingsHandlerTesting::FakeStorage storage{journal};
    SettingsHandlerTesting::FakeStateStore state{journal};
    std::shared_ptr<SettingsHandlerTesting::FakeValueObserver> values =
        std::make_shared<SettingsHandlerTesting::FakeValueObserver>(journal);
    std::shared_ptr<SimulatedDevice> device = std::make_shared<SimulatedDevice>(state, values);
    std::shared_ptr<SimulatedSdkBridge> sdk = std::make_shared<SimulatedSdkBridge>(state, storage, device, values);
    std::shared_ptr<SimulatedAppLaunch> launcher = std::make_shared<SimulatedAppLaunch>();
    std::shared_ptr<Follower> observer = std::make_shared<Follower>(*sdk);
    std::shared_ptr<Faults> faults = std::make_shared<Faults>();
    DeviceCommands commands{device,   sdk,
                            launcher, [this] { return observer->outcome; },
                            faults,   [](bool withValues) { return std::string(withValues ? "all" : "some"); }};
};

TEST_F(DeviceCommandsTest, ShowPrintsTheWholeState) {
    EXPECT_EQ(execute(R"({"command":"show"})"),
              R"({"device":{"captionsEnabled":"false","currentAlwaysOnPTTMode":"off","currentAlwaysOnVoiceMode":"off",)"
              R"("currentHandsFreeStatus":"off","doNotDisturbEnabled":"false","locales":"[\"en-US\"]",)"
              R"("timezone":"America/Vancouver"}})");
    launcher->launchApp("settings", "");
    EXPECT_NE(execute(R"({"command":"show"})").find(R"("lastLaunchedApp":"settings")"), std::string::npos);
}

TEST_F(DeviceCommandsTest, EachCommandReachesItsOwner) {
    EXPECT_EQ(execute(R"({"command":"locale","value":"fr-FR"})"), ok);
    EXPECT_EQ(sdk->getLocales(), std::vector<std::string>{"fr-FR"});
    EXPECT_EQ(execute(R"({"command":"locales","values":["a","b"]})"), ok);
    EXPECT_EQ(sdk->getLocales(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(execute(R"({"command":"timezone","value":"Europe/Paris"})"), ok);
    EXPECT_EQ(sdk->getTimezone(), "Europe/Paris");
    EXPECT_EQ(execute(R"({"command":"captions","enabled":true})"), ok);
    EXPECT_TRUE(sdk->isCaptionsEnabled());
    EXPECT_EQ(execute(R"({"command":"doNotDisturb","enabled":true})"), ok);
    EXPECT_TRUE(sdk->isDoNotDisturbEnabled());
    EXPECT_EQ(execute(R"({"command":"handsfree","enabled":true})"), ok);
    EXPECT_EQ(device->getDeviceInfo().at("currentHandsFreeStatus"), "on");
    observer->outcome.kind = Outcome::Kind::CHANGED;
    EXPECT_EQ(execute(R"({"command":"setting","key":"deviceName","value":"a\u0000b"})"), ok);
    EXPECT_EQ(observer->notified, (std::vector<std::string>{"on", std::string("deviceName=a\0b", 14)}));
}

TEST_F(DeviceCommandsTest, RefusesWrongArguments) {
    for (const auto* frame : {R"({"command":"locale"})", R"({"command":"locale","value":""})",
                              R"({"command":"locale","value":5})", R"({"command":"locales","values":[]})",
                              R"({"command":"locales","values":["a",5]})", R"({"command":"locales","values":["a",""]})",
                              R"({"command":"locales","values":"a"})", R"({"command":"timezone"})",
                              R"({"command":"timezone","value":""})", R"({"command":"captions","enabled":"on"})",
                              R"({"command":"doNotDisturb"})", R"({"command":"handsfree","enabled":1})",
                              R"({"command":"setting","key":"k"})", R"({"command":"setting","value":"v"})"}) {
        EXPECT_EQ(codeOf(frame), "bad-argument") << frame;
    }
    EXPECT_EQ(sdk->getLocales(), std::vector<std::string>{"en-US"});
    EXPECT_EQ(sdk->getTimezone(), "America/Vancouver");
    EXPECT_TRUE(observer->notified.empty());
}

TEST_F(DeviceCommandsTest, RefusesUnknownCommands) {
    for (const auto* frame : {"{}", R"({"command":"Show"})", R"({"command":5})"}) {
        EXPECT_EQ(codeOf(frame), "unknown-command") << frame;
    }
}

TEST_F(DeviceCommandsTest, ReportsWhatTheHandlerDidWithASetting) {
    const auto reply = [&](const Outcome& outcome, const std::string& key = "deviceName") {
        observer->outcome = outcome;
        return execute(R"({"command":"setting","key":")" + key + R"(","value":"Den"})");
    };
    const auto refused = [](Outcome::Reason reason) {
        Outcome outcome;
        outcome.kind = Outcome::Kind::REFUSED;
        outcome.reason = reason;
        return outcome;
    };
    Outcome changed;
    changed.kind = Outcome::Kind::CHANGED;
    EXPECT_EQ(reply(changed), ok);
    Outcome unchanged;
    unchanged.kind = Outcome::Kind::UNCHANGED;
    EXPECT_EQ(reply(unchanged), R"({"ok":true,"changed":false})");
    Outcome rejected = refused(Outcome::Reason::WRONG_FORM);
    rejected.rejected = true;
    EXPECT_EQ(reply(rejected),
              R"({"error":{"code":"not-passed-on","message":"the value must be a JSON array of at most 32 levels"}})");
    EXPECT_EQ(
        reply(refused(Outcome::Reason::READ_ONLY), "captionsEnabled"),
        R"({"error":{"code":"read-only","message":"nothing changed: 'captionsEnabled' is set only with the command )"
        R"(\"captions\""}})");
    EXPECT_EQ(
        reply(refused(Outcome::Reason::READ_ONLY), "doNotDisturbEnabled"),
        R"({"error":{"code":"read-only","message":"nothing changed: 'doNotDisturbEnabled' is set only with the command )"
        R"(\"doNotDisturb\""}})");
    EXPECT_EQ(
        reply(refused(Outcome::Reason::WRONG_FORM)),
        R"({"error":{"code":"wrong-form","message":"nothing changed: the value must be a JSON array with at least one locale"}})");
    EXPECT_EQ(reply(refused(Outcome::Reason::NOT_STORED)),
              R"({"error":{"code":"not-stored","message":"nothing changed: the storage refused the value; see the )"
              R"(host's log"}})");
    EXPECT_EQ(observer->notified.size(), 7U);
}

TEST_F(DeviceCommandsTest, ReportsWhenTheStateCouldNotBeSaved) {
    state.refusesWrites = true;
    for (const auto* frame :
         {R"({"command":"locale","value":"fr-FR"})", R"({"command":"locales","values":["a"]})",
          R"({"command":"timezone","value":"x"})", R"({"command":"handsfree","enabled":true})",
          R"({"command":"captions","enabled":true})", R"({"command":"doNotDisturb","enabled":true})"}) {
        EXPECT_EQ(codeOf(frame), "not-written") << frame;
    }
}

}  // namespace SettingsHost
