#include "BridgeFixture.h"

namespace SettingsMqttTest {

namespace {

std::string desired(const std::string& value, int version) {
    return R"({"value":")" + value + R"(","version":)" + std::to_string(version) + "}";
}

std::string outcome(const std::string& rest) {
    return R"(settings/tv/outcome {"key":"size","outcome":)" + rest + "}";
}

}  // namespace

/// The rule of docs/mqtt.md, "Desired values".
class DesiredTest : public BridgeTest {
protected:
    DesiredTest() {
        options.groups = {"lobby"};
        start();
    }

    /// A new connection to the broker after the one before was lost.
    void reconnectBroker() {
        bridge->brokerLost();
        connectBroker();
    }
    /// A change by somebody else while there is no connection to the broker.
    void changeWithoutBroker(const std::string& key, const std::string& to) {
        bridge->brokerLost();
        change(key, to);
        connectBroker();
    }
    /// A new bridge takes over; the one before has stored what it knows.
    void restart() {
        stored = versions->save();
        start();
        connect();
    }

    /// What the broker delivers when it kept a desired value.
    void find(const std::string& payload) { receive("settings/tv/desired/size", payload, true); }

    const std::string changedSince =
        R"("refused","reason":"changed-since","message":"the setting was changed at the device in the meantime","version":)";
};

TEST_F(DesiredTest, AppliesAVersionOnce) {
    connect();
    find(desired("large", 1));
    EXPECT_EQ(published(), (Lines{outcome(R"("changed","value":"large","version":1)")}));
    change("size", "small");
    published();
    reconnectBroker();
    find(desired("large", 1));
    EXPECT_EQ(host->requests, (Lines{"size=large"}));
    EXPECT_TRUE(published().empty());
}

TEST_F(DesiredTest, RemembersVersionsOverARestart) {
    connect();
    find(desired("large", 1));
    change("size", "small");
    restart();
    find(desired("large", 1));
    EXPECT_EQ(host->requests, (Lines{"size=large"}));
    find(desired("large", 2));
    EXPECT_EQ(host->requests, (Lines{"size=large", "size=large"}));
}

TEST_F(DesiredTest, ComparesVersionsOfAKeyOverAllTopics) {
    connect();
    receive("settings/group/lobby/desired/size", desired("large", 5), true);
    receive("settings/tv/desired/size", desired("small", 4));
    EXPECT_EQ(host->requests, (Lines{"size=large"}));
    EXPECT_EQ(published(),
              (Lines{outcome(R"("changed","value":"large","version":5)"),
                     outcome(R"("refused","reason":"old-version",)"
                             R"("message":"this version or a newer one was received before","version":4)")}));
}

TEST_F(DesiredTest, TakesTheNewestValueAfterATimeWithoutConnection) {
    connect();
    reconnectBroker();
    find(desired("large", 1));
    EXPECT_EQ(host->requests, (Lines{"size=large"}));
}

TEST_F(DesiredTest, NeverOverwritesAChangeThatWasMadeWithoutConnection) {
    connect();
    changeWithoutBroker("size", "large");
    find(desired("small", 1));
    EXPECT_TRUE(host->requests.empty());
    EXPECT_EQ(published(), (Lines{outcome(changedSince + "1")}));
    // The same version is done with; the next one comes after the change.
    find(desired("small", 1));
    receive("settings/tv/desired/size", desired("small", 2));
    EXPECT_EQ(host->requests, (Lines{"size=small"}));
}

TEST_F(DesiredTest, AppliesAValueThatIsPublishedAfterTheChange) {
    connect();
    changeWithoutBroker("size", "large");
    receive("settings/tv/desired/size", desired("small", 1));
    EXPECT_EQ(host->requests, (Lines{"size=small"}));
}

TEST_F(DesiredTest, AChangeCountsForOneConnectionOnly) {
    connect();
    changeWithoutBroker("size", "large");
    reconnectBroker();
    find(desired("small", 1));
    EXPECT_EQ(host->requests, (Lines{"size=small"}));
}

TEST_F(DesiredTest, AChangeStillCountsWhenTheConnectionWasLostBeforeTheBrokerHadEverything) {
    connect();
    bridge->brokerLost();
    change("size", "large");
    bridge->brokerConnected();
    reconnectBroker();
    find(desired("small", 1));
    EXPECT_TRUE(host->requests.empty());
}

TEST_F(DesiredTest, AChangeWhileTheBridgeDidNotRunCounts) {
    connect();
    host->values["size"] = "large";
    restart();
    find(desired("small", 1));
    EXPECT_TRUE(host->requests.empty());
}

TEST_F(DesiredTest, AChangeCountsAfterARunThatEndedBeforeTheBrokerHadEverything) {
    bridge->hostConnected();
    bridge->brokerConnected();
    host->values["size"] = "large";
    restart();
    find(desired("small", 1));
    EXPECT_TRUE(host->requests.empty());
}

TEST_F(DesiredTest, AChangeWithoutConnectionCountsAfterARestart) {
    connect();
    bridge->brokerLost();
    change("size", "large");
    change("size", "small");
    restart();
    find(desired("large", 1));
    EXPECT_TRUE(host->requests.empty());
}

TEST_F(DesiredTest, AChangeThatTheBrokerKnowsDoesNotCountAfterAPowerCut) {
    connect();
    change("size", "large");
    restart();
    find(desired("small", 1));
    EXPECT_EQ(host->requests, (Lines{"size=small"}));
}

TEST_F(DesiredTest, AChangeByTheBridgeDoesNotCount) {
    connect();
    bridge->brokerLost();
    bridge->brokerConnected();
    find(desired("large", 1));
    change("size", "large", "settings-mqtt");
    restart();
    find(desired("small", 2));
    EXPECT_EQ(host->requests, (Lines{"size=large", "size=small"}));
}

TEST_F(DesiredTest, ANewDeviceTakesTheValue) {
    host->values["size"] = "medium";
    connect();
    find(desired("large", 1));
    EXPECT_EQ(host->requests, (Lines{"size=large"}));
}

TEST_F(DesiredTest, AValueWaitsForTheHost) {
    connect();
    bridge->hostLost();
    find(desired("large", 1));
    receive("settings/group/lobby/desired/size", desired("huge", 3), true);
    find(desired("small", 2));
    EXPECT_TRUE(host->requests.empty());
    bridge->hostConnected();
    EXPECT_EQ(host->requests, (Lines{"size=huge"}));
}

TEST_F(DesiredTest, AValueWaitsWhenTheHostGoesMeanwhile) {
    connect();
    host->isGone = true;
    find(desired("large", 1));
    EXPECT_EQ(published(), (Lines{"*settings/tv/availability offline"}));
    host->isGone = false;
    bridge->hostConnected();
    EXPECT_EQ(host->requests, (Lines{"size=large", "size=large"}));
    EXPECT_EQ(host->values["size"], "large");
}

TEST_F(DesiredTest, IsTriedAgainWhenItWasNotStored) {
    connect();
    host->answers = {SettingsMqtt::refusal("not-stored", "no")};
    find(desired("large", 1));
    find(desired("large", 1));
    EXPECT_EQ(host->requests, (Lines{"size=large", "size=large"}));
    find(desired("large", 1));
    EXPECT_EQ(host->requests.size(), 2U);
}

TEST_F(DesiredTest, IsTriedAgainWhenTheHostWasBusy) {
    connect();
    host->answers = {SettingsMqtt::refusal("busy", "no")};
    find(desired("large", 1));
    find(desired("large", 1));
    EXPECT_EQ(host->requests, (Lines{"size=large", "size=large"}));
}

TEST_F(DesiredTest, IsTriedOnceWhenItIsRefused) {
    connect();
    host->answers = {SettingsMqtt::refusal("read-only", "no")};
    find(desired("large", 1));
    find(desired("large", 1));
    EXPECT_EQ(host->requests, (Lines{"size=large"}));
}

TEST_F(DesiredTest, RefusesWhatIsNoDesiredValue) {
    connect();
    for (const std::string version :
         {"", R"(,"version":0)", R"(,"version":"1")", R"(,"version":1.5)", R"(,"version":9007199254740992)"}) {
        find(R"({"value":"large")" + version + "}");
        EXPECT_EQ(published(), (Lines{outcome(R"("refused","reason":"bad-payload","message":)"
                                              R"("\"version\" is not an integer from 1 to 9007199254740991")")}));
    }
    find("large");
    EXPECT_EQ(published(),
              (Lines{outcome(R"("refused","reason":"bad-payload","message":"the payload is not a JSON object")")}));
    receive("settings/tv/desired/name", desired("Ada's", 1));
    EXPECT_EQ(published().size(), 1U);
    EXPECT_TRUE(host->requests.empty());
}

TEST_F(DesiredTest, VersionsAreToBeStoredAtOnceValuesLaterAndNothingTwice) {
    using Unsaved = SettingsMqtt::Versions::Unsaved;
    connect();
    EXPECT_EQ(versions->unsaved(), Unsaved::VALUES);
    versions->save();
    EXPECT_EQ(versions->unsaved(), Unsaved::NOTHING);
    find(desired("large", 1));
    change("size", "large", "settings-mqtt");
    EXPECT_EQ(versions->unsaved(), Unsaved::VERSIONS);
    EXPECT_EQ(versions->save().at("size").version, 1);
    change("size", "large");
    EXPECT_EQ(versions->unsaved(), Unsaved::NOTHING);
    change("size", "small");
    EXPECT_EQ(versions->unsaved(), Unsaved::VALUES);
    change("size", "large");
    EXPECT_EQ(versions->unsaved(), Unsaved::NOTHING);
}

}  // namespace SettingsMqttTest
