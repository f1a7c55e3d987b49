#include <gtest/gtest.h>

#include "FakeHost.h"

using namespace SettingsCtlTests;

namespace {

constexpr const char* deviceName =
    R"({"key":"deviceName","number":1,"kind":"text","default":"TV","owner":"storage","setBy":"anyone",)"
    R"("privacy":"personal","description":"Name that the television uses for itself."})";
constexpr const char* captions =
    R"({"key":"captionsEnabled","number":4,"kind":"switch","owner":"voice SDK","setBy":"device",)"
    R"("privacy":"preference","description":"Captions on or off."})";
constexpr const char* fontSize =
    R"({"key":"captionsFontSize","number":5,"kind":"choice","values":["FONT_SMALL","FONT_LARGE"],)"
    R"("owner":"storage","setBy":"anyone","privacy":"preference","description":"Text size of captions."})";

/// The frames of a host that knows three settings. `key`: empty for all.
TestSupport::Finished runExplain(const std::string& key, std::vector<std::string> options = {}) {
    options.insert(options.begin(), "explain");
    if (!key.empty()) {
        options.push_back(key);
    }
    const FakeHost host;
    auto program = host.start(options);
    Peer client = host.accept();
    greet(client, program);
    EXPECT_EQ(client.receiveLine(), queryFrame(program, 1, "catalogue"));
    client.sendLine(queryFrame(program, 1, "catalogue",
                               std::string(R"({"settings":[)") + deviceName + "," + captions + "," + fontSize + "]}"));
    EXPECT_EQ(client.receiveLine(), getRequest(program, 2, key.empty() ? "[]" : "[\"" + key + "\"]"));
    client.sendLine(
        getReply(program, 2, key == "ownKey" ? "{}" : R"({"deviceName":"A\ttic","captionsEnabled":"false"})"));
    EXPECT_EQ(client.receiveLine(),
              queryFrame(program, 3, "history", key.empty() ? "{}" : R"({"settingDBId":")" + key + "\"}"));
    const std::string changes =
        R"({"type":25,"messageId":"1","timestamp":1766000000000,"sequence":1,"origin":"page",)"
        R"("payload":{"settingDBId":"deviceName","from":"TV","to":"Den"}},)"
        R"({"type":25,"messageId":"2","timestamp":1766000001000,"sequence":2,"origin":"socket",)"
        R"("client":"kitchen-remote","payload":{"settingDBId":"deviceName","from":"Den","to":"A\ttic"}})";
    const bool isChanged = key.empty() || key == "deviceName";
    client.sendLine(queryFrame(program, 3, "history", R"({"events":[)" + (isChanged ? changes : "") + "]}"));
    EXPECT_TRUE(client.clientCloses());
    return finish(program);
}

constexpr const char* aboutDeviceName =
    "deviceName: Name that the television uses for itself.\n"
    "  value    'A\\ttic'\n"
    "  changed  2025-12-17 19:33:21 from 'Den' (kitchen-remote, socket)\n"
    "  default  'TV'\n"
    "  values   any text\n"
    "  owner    storage\n"
    "  set by   anyone\n"
    "  privacy  personal\n";
constexpr const char* aboutCaptions =
    "captionsEnabled: Captions on or off.\n"
    "  value    'false'\n"
    "  changed  unknown: the host has no record of a change\n"
    "  default  none\n"
    "  values   true, false\n"
    "  owner    voice SDK\n"
    "  set by   device only: settingsctl device captions on|off\n"
    "  privacy  preference\n";
constexpr const char* aboutFontSize =
    "captionsFontSize: Text size of captions.\n"
    "  value    none\n"
    "  changed  unknown: the host has no record of a change\n"
    "  default  none\n"
    "  values   FONT_SMALL, FONT_LARGE\n"
    "  owner    storage\n"
    "  set by   anyone\n"
    "  privacy  preference\n";

class SettingsCtlExplain : public testing::Test {
protected:
    SettingsCtlExplain() { ::setenv("TZ", "UTC", 1); }
};

}  // namespace

TEST_F(SettingsCtlExplain, PrintsWhatASettingIsAndWhoChangedItLast) {
    const TestSupport::Finished end = runExplain("deviceName");
    EXPECT_EQ(end.output, aboutDeviceName);
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.status, 0);
}

TEST_F(SettingsCtlExplain, NamesTheVerbOfASettingThatOnlyTheDeviceSets) {
    EXPECT_EQ(runExplain("captionsEnabled").output, aboutCaptions);
}

TEST_F(SettingsCtlExplain, PrintsAllSettingsOfTheHostWithoutAKey) {
    EXPECT_EQ(runExplain("").output, std::string(aboutDeviceName) + aboutCaptions + aboutFontSize);
}

TEST_F(SettingsCtlExplain, PrintsWhatIsKnownOfAnotherKey) {
    EXPECT_EQ(runExplain("ownKey", {"--any-key"}).output,
              "ownKey: Not in the catalogue.\n"
              "  value    none\n"
              "  changed  unknown: the host has no record of a change\n");
}

TEST_F(SettingsCtlExplain, PrintsOneObjectPerSettingAsJson) {
    const std::string name =
        R"({"key":"deviceName","description":"Name that the television uses for itself.","kind":"text","values":[],)"
        R"("default":"TV","owner":"storage","setBy":"anyone","privacy":"personal","value":"A\ttic",)"
        R"("changed":{"timestamp":1766000001000,"from":"Den","origin":"socket","client":"kitchen-remote"}})"
        "\n";
    EXPECT_EQ(runExplain("deviceName", {"--json"}).output, name);
    EXPECT_EQ(runExplain("", {"--json"}).output,
              name +
                  R"({"key":"captionsEnabled","description":"Captions on or off.","kind":"switch","values":[],)"
                  R"("owner":"voice SDK","setBy":"device","privacy":"preference","value":"false"})"
                  "\n"
                  R"({"key":"captionsFontSize","description":"Text size of captions.","kind":"choice",)"
                  R"("values":["FONT_SMALL","FONT_LARGE"],"owner":"storage","setBy":"anyone","privacy":"preference"})"
                  "\n");
    EXPECT_EQ(runExplain("ownKey", {"--json", "--any-key"}).output, "{\"key\":\"ownKey\"}\n");
}

TEST_F(SettingsCtlExplain, PrintsNothingWhenQuiet) {
    EXPECT_EQ(runExplain("deviceName", {"--quiet"}).output, "");
}
