#include "BridgeFixture.h"

namespace SettingsMqttTest {

namespace {

SettingsClient::Answer refusedBecause(const std::string& reason) {
    return SettingsMqtt::refusal(reason, "no");
}

}  // namespace

TEST_F(BridgeTest, SubscribesToTheCommandsOfTheDeviceAndItsGroupsOnly) {
    options.groups = {"lobby"};
    start();
    connect();
    EXPECT_EQ(broker->subscribed, (Lines{"settings/tv/set/+", "settings/tv/desired/+", "settings/all/set/+",
                                         "settings/group/lobby/set/+", "settings/group/lobby/desired/+"}));
}

TEST_F(BridgeTest, PublishesAllStatesAndThenThatItIsThere) {
    bridge->hostConnected();
    bridge->brokerConnected();
    EXPECT_EQ(published(),
              (Lines{"*settings/tv/state/name ", "*settings/tv/state/size small", "*settings/tv/availability online"}));
}

TEST_F(BridgeTest, EmptiesTheTopicsOfSettingsThatItDoesNotOfferWithItsFirstConnectionOnly) {
    connect();
    bridge->brokerLost();
    bridge->brokerConnected();
    EXPECT_EQ(published(), (Lines{"*settings/tv/state/size small", "*settings/tv/availability online"}));
}

TEST_F(BridgeTest, PublishesAChangeAsStateAndEvent) {
    connect();
    change("size", "large", "remote");
    EXPECT_EQ(published(),
              (Lines{"*settings/tv/state/size large",
                     R"(settings/tv/event {"key":"size","from":"small","to":"large","sequence":1,"timestamp":7,)"
                     R"("origin":"page","client":"remote"})"}));
}

TEST_F(BridgeTest, PublishesChangesAlsoBeforeABusyHostIsReadAnew) {
    connect();
    bridge->hostLost();
    host->isBusy = true;
    EXPECT_THROW(bridge->hostConnected(), SettingsClient::RequestRefused);
    acknowledge();
    published();
    change("size", "large");
    EXPECT_EQ(published().front(), "*settings/tv/state/size large");
}

TEST_F(BridgeTest, SaysNothingOfPersonalSettings) {
    connect();
    change("name", "Ada's");
    bridge->reread({});
    receive("settings/tv/set/name", "Bob's");
    EXPECT_EQ(published(), (Lines{R"(settings/tv/outcome {"key":"name","outcome":"refused","reason":"not-offered",)"
                                  R"("message":"this personal setting is not published by this device"})"}));
    EXPECT_TRUE(host->requests.empty());
}

TEST_F(BridgeTest, OffersAPersonalSettingThatIsIncluded) {
    options.included = {"name"};
    start();
    host->values["name"] = "Kitchen";
    bridge->hostConnected();
    bridge->brokerConnected();
    EXPECT_EQ(published().front(), "*settings/tv/state/name Kitchen");
}

TEST_F(BridgeTest, SaysWhenAnIncludedSettingIsNone) {
    Lines log;
    options.included = {"name", "nmae"};
    options.log = [&](int, const std::string& text) { log.push_back(text); };
    start();
    connect();
    EXPECT_EQ(log, (Lines{"--include: the host has no setting nmae"}));
}

TEST_F(BridgeTest, LeavesNothingOfAPersonalSettingAfterALogOut) {
    options.included = {"name"};
    start();
    connect();
    bridge->brokerLost();
    change("name", "Ada's");
    host->values["name"] = "TV";
    bridge->reread({"name"});
    bridge->brokerConnected();
    EXPECT_EQ(published(),
              (Lines{"*settings/tv/state/name ", "*settings/tv/state/size small", "*settings/tv/availability online"}));
}

TEST_F(BridgeTest, PublishesAValueThatIsToBeReadAgain) {
    connect();
    host->values["size"] = "large";
    bridge->reread({"size"});
    bridge->reread({"size"});
    EXPECT_EQ(published(), (Lines{"*settings/tv/state/size large"}));
}

TEST_F(BridgeTest, SaysThatTheSettingsAreGoneWithTheHost) {
    connect();
    bridge->hostLost();
    bridge->hostLost();
    bridge->hostConnected();
    EXPECT_EQ(published(), (Lines{"*settings/tv/availability offline", "*settings/tv/availability online"}));
}

TEST_F(BridgeTest, SaysThatItGoes) {
    connect();
    bridge->hostLost();
    EXPECT_EQ(published(), (Lines{"*settings/tv/availability offline"}));
    const auto will = SettingsMqtt::Topics("tv").availability(false);
    EXPECT_EQ(will.topic + " " + will.payload, "settings/tv/availability offline");
    EXPECT_TRUE(will.retained);
}

TEST_F(BridgeTest, CarriesACommandOut) {
    connect();
    receive("settings/tv/set/size", "large");
    receive("settings/all/set/size", R"({"value":"large","id":"7"})");
    EXPECT_EQ(host->requests, (Lines{"size=large", "size=large"}));
    EXPECT_EQ(published(),
              (Lines{R"(settings/tv/outcome {"key":"size","outcome":"changed","value":"large"})",
                     R"(settings/tv/outcome {"key":"size","outcome":"unchanged","value":"large","id":"7"})"}));
}

TEST_F(BridgeTest, AnswersARepeatedCommandWithAnIdAgainWithoutCarryingItOut) {
    connect();
    const std::string command = R"({"value":"large","id":"7"})";
    receive("settings/tv/set/size", command);
    receive("settings/tv/set/size", "small");
    receive("settings/tv/set/size", command);
    EXPECT_EQ(host->requests, (Lines{"size=large", "size=small"}));
    const std::string first = R"(settings/tv/outcome {"key":"size","outcome":"changed","value":"large","id":"7"})";
    EXPECT_EQ(published(),
              (Lines{first, R"(settings/tv/outcome {"key":"size","outcome":"changed","value":"small"})", first}));
}

TEST_F(BridgeTest, ForgetsTheOldestOfManyCommands) {
    connect();
    for (int number = 0; number <= 32; ++number) {
        receive("settings/tv/set/size", R"({"value":"large","id":")" + std::to_string(number) + "\"}");
    }
    host->requests.clear();
    receive("settings/tv/set/size", R"({"value":"large","id":"1"})");
    EXPECT_TRUE(host->requests.empty());
    receive("settings/tv/set/size", R"({"value":"large","id":"0"})");
    EXPECT_EQ(host->requests, (Lines{"size=large"}));
}

TEST_F(BridgeTest, PublishesTheReasonOfTheHost) {
    connect();
    host->answers = {refusedBecause("wrong-form")};
    receive("settings/tv/set/size", "large");
    EXPECT_EQ(published(), (Lines{R"(settings/tv/outcome {"key":"size","outcome":"refused","reason":"wrong-form",)"
                                  R"("message":"no"})"}));
}

TEST_F(BridgeTest, SaysWhenTheVoiceSdkDidNotApplyAValue) {
    connect();
    SettingsClient::Answer answer;
    answer.outcome = SettingsClient::Outcome::CHANGED;
    answer.value = "large";
    answer.applied = false;
    host->answers = {answer};
    receive("settings/tv/set/size", "large");
    EXPECT_EQ(published(), (Lines{R"(settings/tv/outcome {"key":"size","outcome":"changed","value":"large",)"
                                  R"("applied":false})"}));
}

TEST_F(BridgeTest, GivesACommandATimeThatIsNotStale) {
    connect();
    auto stale = refusedBecause("stale");
    stale.newest = 2300000000000;
    host->answers = {stale};
    receive("settings/tv/set/size", "large");
    EXPECT_EQ(host->requests, (Lines{"size=large", "size=large at 2300000000001"}));
    EXPECT_EQ(published(), (Lines{R"(settings/tv/outcome {"key":"size","outcome":"changed","value":"large"})"}));
}

TEST_F(BridgeTest, RefusesACommandWithoutHost) {
    connect();
    host->isGone = true;
    const std::string command = R"({"value":"large","id":"7"})";
    receive("settings/tv/set/size", command);
    receive("settings/tv/set/size", command);
    const std::string outcome = R"(settings/tv/outcome {"key":"size","outcome":"refused","reason":"unavailable",)"
                                R"("message":"the settings of the device are not available","id":"7"})";
    EXPECT_EQ(published(), (Lines{"*settings/tv/availability offline", outcome, outcome}));
    // Without waiting for it a second time.
    EXPECT_EQ(host->requests.size(), 1U);
    host->isGone = false;
    bridge->hostConnected();
    receive("settings/tv/set/size", command);
    EXPECT_EQ(host->requests.size(), 2U);
}

TEST_F(BridgeTest, RefusesARetainedCommand) {
    connect();
    receive("settings/tv/set/size", "large", true);
    EXPECT_TRUE(host->requests.empty());
    EXPECT_EQ(published(), (Lines{R"(settings/tv/outcome {"key":"size","outcome":"refused","reason":"retained",)"
                                  R"("message":"a retained set is not carried out; use desired"})"}));
}

TEST_F(BridgeTest, IgnoresEmptyMessagesAndOtherTopics) {
    connect();
    receive("settings/tv/set/size", "");
    receive("settings/tv/set/size/more", "large");
    receive("settings/other/set/size", "large");
    receive("settings/group/lobby/set/size", "large");
    receive("settings/tv/state/size", "large");
    EXPECT_TRUE(host->requests.empty());
    EXPECT_TRUE(published().empty());
}

TEST_F(BridgeTest, RefusesHostileCommandsWithAnOutcome) {
    connect();
    const std::string top = "settings/tv/set/";
    receive(top + "size", std::string(65537, 'a'));
    receive(top + "size", "\xff\xfe");
    receive(top + "size", std::string("a\0b", 3));
    receive(top + "size", "{");
    receive(top + "size", R"({"value":1})");
    receive(top + "size", R"({"value":"a","id":")" + std::string(129, 'x') + "\"}");
    receive(top + "size", R"({"value":"\ud800"})");
    receive(top + "+", "large");
    receive(top + "#\x01\xff", "large");
    EXPECT_TRUE(host->requests.empty());
    const std::string outcome = R"(settings/tv/outcome {"key":"size","outcome":"refused","reason":)";
    const std::string noText = outcome + R"("bad-payload","message":"the payload is not UTF-8 text"})";
    const std::string noObject = outcome + R"("bad-payload","message":"the payload is not a JSON object"})";
    const std::string unknown =
        R"(","outcome":"refused","reason":"unknown-key","message":"there is no setting with this key"})";
    EXPECT_EQ(published(),
              (Lines{outcome + R"("too-large","message":"the payload has more than 65536 bytes"})", noText, noText,
                     noObject, outcome + R"("bad-payload","message":"the payload has no string \"value\""})",
                     outcome + R"("bad-payload","message":"\"id\" has more than 128 bytes"})", noObject,
                     R"(settings/tv/outcome {"key":"+)" + unknown,
                     "settings/tv/outcome {\"key\":\"#\\u0001\xef\xbf\xbd" + unknown}));
}

TEST_F(BridgeTest, SendsTheNewestEventOfEachKeyAfterALostConnection) {
    connect();
    bridge->brokerLost();
    change("size", "large");
    change("size", "small");
    change("size", "large");
    bridge->brokerConnected();
    EXPECT_EQ(published(),
              (Lines{"*settings/tv/state/size large", "*settings/tv/availability online",
                     R"(settings/tv/event {"key":"size","from":"small","to":"large","sequence":3,"timestamp":7,)"
                     R"("origin":"page"})"}));
}

TEST_F(BridgeTest, TakesTheSettingsOfAnotherHost) {
    connect();
    bridge->hostLost();
    host->settings.push_back(setting("colour", "text"));
    host->values["colour"] = "red";
    bridge->hostConnected();
    EXPECT_EQ(published(), (Lines{"*settings/tv/availability offline", "*settings/tv/state/colour red",
                                  "*settings/tv/availability online"}));
}

}  // namespace SettingsMqttTest
