#include "BridgeFixture.h"

namespace SettingsMqttTest {

namespace {

const std::string device = R"("device":{"identifiers":["settings-tv"],"name":"Television tv","sw_version":"1.2"}})";

std::string topicsOf(const std::string& key) {
    return R"("unique_id":"settings-tv-)" + key + R"(","state_topic":"settings/tv/state/)" + key +
           R"(","availability_topic":"settings/tv/availability",)";
}

std::string discovered(SettingsClient::Setting shown, const std::string& setBy = "anyone") {
    shown.setBy = setBy;
    const auto message = SettingsMqtt::discoveryOf(shown, SettingsMqtt::Topics("tv"), "1.2");
    EXPECT_TRUE(message.retained);
    return message.topic + " " + message.payload;
}

}  // namespace

TEST(Discovery, ShowsASwitch) {
    EXPECT_EQ(discovered(setting("handsFreeEnabled", "switch")),
              R"(homeassistant/switch/settings-tv/handsFreeEnabled/config {"name":"Hands free enabled",)" +
                  topicsOf("handsFreeEnabled") + R"("command_topic":"settings/tv/set/handsFreeEnabled","qos":1,)" +
                  R"("payload_on":"true","payload_off":"false",)" + device);
}

TEST(Discovery, ShowsASelection) {
    auto size = setting("size", "choice");
    size.values = {"small", "large"};
    EXPECT_EQ(discovered(size), R"(homeassistant/select/settings-tv/size/config {"name":"Size",)" + topicsOf("size") +
                                    R"("command_topic":"settings/tv/set/size","qos":1,"options":["small","large"],)" +
                                    device);
}

TEST(Discovery, ShowsATextForAllOtherKinds) {
    for (const std::string kind : {"text", "locales", "timezone", "list", "unheard-of"}) {
        EXPECT_EQ(discovered(setting("zone", kind)),
                  R"(homeassistant/text/settings-tv/zone/config {"name":"Zone",)" + topicsOf("zone") +
                      R"("command_topic":"settings/tv/set/zone","qos":1,"max":255,)" + device);
    }
}

TEST(Discovery, ShowsWithoutCommandsWhatOnlyTheDeviceChanges) {
    EXPECT_EQ(discovered(setting("captions", "switch"), "device"),
              R"(homeassistant/binary_sensor/settings-tv/captions/config {"name":"Captions",)" + topicsOf("captions") +
                  R"("payload_on":"true","payload_off":"false",)" + device);
    EXPECT_EQ(discovered(setting("size", "choice"), "device"),
              R"(homeassistant/sensor/settings-tv/size/config {"name":"Size",)" + topicsOf("size") + device);
}

TEST_F(BridgeTest, PublishesDiscoveryBeforeTheStateAndRemovesWhatItDoesNotOffer) {
    options.homeAssistant = true;
    start();
    bridge->hostConnected();
    bridge->brokerConnected();
    auto lines = published();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0], "*homeassistant/text/settings-tv/name/config ");
    EXPECT_EQ(lines[1], "*settings/tv/state/name ");
    EXPECT_EQ(lines[2].rfind("*homeassistant/select/settings-tv/size/config {", 0), 0U);
    EXPECT_EQ(lines[3], "*settings/tv/state/size small");
}

TEST(Topics, NamesAreSafeInTopics) {
    for (const std::string& name : Lines{"tv", "A.b_c-9", std::string(64, 'x')}) {
        EXPECT_TRUE(SettingsMqtt::isTopicName(name)) << name;
    }
    for (const std::string& name : Lines{"", "a/b", "+", "#", "a b", "\x01", "\xc3\xa4", std::string(65, 'x')}) {
        EXPECT_FALSE(SettingsMqtt::isTopicName(name)) << name;
    }
}

}  // namespace SettingsMqttTest
