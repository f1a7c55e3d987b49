#include <chrono>

#include <gtest/gtest.h>

#include "FakeHost.h"
#include "Utils/Rapidjson.h"
#include "Wire/Catalogue.h"

using namespace SettingsCtlTests;

namespace {

std::int64_t millisecondsSinceEpoch() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::int64_t timestampOf(const std::string& request) {
    rapidjson::Document document;
    document.Parse(request.c_str());
    return document["timestamp"].GetInt64();
}

/// What the host sends: both replies, and frames before them.
struct HostScript {
    std::string oldSettings = "{}";
    std::vector<std::string> framesBefore;
    std::vector<std::string> framesBetween;
    std::string newSettings = "{}";
};

struct Outcome {
    TestSupport::Finished end;
    std::string request;
};

/// Runs `set deviceName Den`, or with other arguments, against a host that sends `script`.
Outcome runSet(const HostScript& script, std::vector<std::string> arguments = {"set", "deviceName", "Den"}) {
    const FakeHost host;
    auto program = host.start(std::move(arguments));
    Peer client = host.accept();
    const std::string query = client.receiveLine();
    const std::string keys = query.substr(query.find('['), query.find(']') + 1 - query.find('['));
    EXPECT_EQ(query, getRequest(program, 1, keys));
    for (const auto& frame : script.framesBefore) {
        client.sendLine(frame);
    }
    client.sendLine(getReply(program, 1, script.oldSettings));
    std::string request = client.receiveLine();
    EXPECT_EQ(client.receiveLine(), getRequest(program, 3, keys));
    for (const auto& frame : script.framesBetween) {
        client.sendLine(frame);
    }
    client.sendLine(getReply(program, 3, script.newSettings));
    EXPECT_TRUE(client.clientCloses());
    return {finish(program), std::move(request)};
}

void expectEnd(const Outcome& outcome, int status, const std::string& output, const std::string& errors) {
    EXPECT_EQ(outcome.end.output, output);
    EXPECT_EQ(outcome.end.errors, errors);
    EXPECT_EQ(outcome.end.status, status);
}

}  // namespace

TEST(SettingsCtlSet, ReadsSetsAndReadsAgainOnOneConnection) {
    const FakeHost host;
    auto program = host.start({"set", "deviceName", "Den"});
    Peer client = host.accept();
    EXPECT_EQ(client.receiveLine(), getRequest(program, 1, R"(["deviceName"])"));
    const std::int64_t before = millisecondsSinceEpoch();
    client.sendLine(getReply(program, 1, R"({"deviceName":"TV"})"));
    const std::string request = client.receiveLine();
    const std::int64_t timestamp = timestampOf(request);
    EXPECT_GE(timestamp, before);
    EXPECT_LE(timestamp, millisecondsSinceEpoch());
    EXPECT_EQ(request, R"({"type":24,"messageId":")" + messageId(program, 2) + R"(","timestamp":)" +
                           std::to_string(timestamp) + R"(,"payload":{"settingDBId":"deviceName","to":"Den"}})");
    EXPECT_EQ(client.receiveLine(), getRequest(program, 3, R"(["deviceName"])"));
    client.sendLine(event("deviceName", "TV", "Den"));
    client.sendLine(getReply(program, 3, R"({"deviceName":"Den"})"));
    EXPECT_TRUE(client.clientCloses());
    SettingsCtlTests::expectEnd(program, 0, "deviceName: 'TV' -> 'Den'\n", "");
}

TEST(SettingsCtlSet, PrintsTheChangeOfTheEvent) {
    const Outcome outcome = runSet(
        {R"({"deviceName":"old"})", {}, {event("deviceName", "the event has it", "Den")}, R"({"deviceName":"Den"})"});
    expectEnd(outcome, 0, "deviceName: 'the event has it' -> 'Den'\n", "");
}

TEST(SettingsCtlSet, PrintsUnchangedWithoutAnEventForTheSameValue) {
    expectEnd(runSet({R"({"deviceName":"Den"})", {}, {}, R"({"deviceName":"Den"})"}), 0, "deviceName: unchanged\n", "");
}

TEST(SettingsCtlSet, ReportsARefusalWithoutAnEventForAnotherValue) {
    expectEnd(runSet({R"({"deviceName":"TV"})", {}, {}, R"({"deviceName":"TV"})"}), 1, "",
              "settingsctl: 'deviceName' was refused: the host did not accept it or has seen a newer request; see the "
              "host's log\n");
}

TEST(SettingsCtlSet, AcceptsOnlyAnEventOfItsKeyAndValueAfterItsRequest) {
    const std::string mine = event("deviceName", "TV", "Den");
    const HostScript script{R"({"deviceName":"TV"})",
                            {mine},
                            {event("friendlyName", "TV", "Den"), event("deviceName", "TV", "Attic"),
                             R"({"notice":{"reread":["deviceName"]}})"},
                            R"({"deviceName":"Attic"})"};
    EXPECT_EQ(runSet(script).end.status, 1);
}

TEST(SettingsCtlSet, SucceedsWhenAnotherClientSetsTheValueAgain) {
    const HostScript script{R"({"deviceName":"TV"})",
                            {},
                            {event("deviceName", "TV", "Den"), event("deviceName", "Den", "Attic")},
                            R"({"deviceName":"Attic"})"};
    expectEnd(runSet(script), 0, "deviceName: 'TV' -> 'Den'\n", "settingsctl: accepted, but read back as 'Attic'\n");
}

TEST(SettingsCtlSet, WarnsWhenTheOwnerStoresAnotherValue) {
    const HostScript script{R"({"handsFreeEnabled":"false"})",
                            {},
                            {event("handsFreeEnabled", "false", "TRUE")},
                            R"({"handsFreeEnabled":"false"})"};
    expectEnd(runSet(script, {"set", "handsFreeEnabled", "TRUE"}), 0, "handsFreeEnabled: 'false' -> 'TRUE'\n",
              "settingsctl: accepted, but read back as 'false'\n");
}

TEST(SettingsCtlSet, IsNeverOlderThanTheNewestEvent) {
    const std::string future = "4102444800000";
    const HostScript script{
        R"({"deviceName":"TV"})", {event("timezone", "a", "b", future)}, {}, R"({"deviceName":"Den"})"};
    EXPECT_EQ(timestampOf(runSet(script).request), 4102444800000);
}

TEST(SettingsCtlSet, NamesTheVerbOfTheDeviceForASettingThatOnlyTheDeviceSets) {
    const auto errorsFor = [](const std::string& key) {
        const Outcome outcome = runSet({}, {"set", key, "no such value"});
        EXPECT_EQ(outcome.end.status, 1) << key;
        return outcome.end.errors;
    };
    EXPECT_EQ(errorsFor("captionsEnabled"),
              "settingsctl: 'captionsEnabled' was refused: only the device can change it: use 'settingsctl device "
              "captions on|off'\n");
    EXPECT_EQ(errorsFor("doNotDisturbEnabled"),
              "settingsctl: 'doNotDisturbEnabled' was refused: only the device can change it: use 'settingsctl device "
              "do-not-disturb on|off'\n");
    for (const auto& setting : Wire::catalogue()) {
        const bool namesTheDevice = errorsFor(setting.key).find("'settingsctl device ") != std::string::npos;
        EXPECT_EQ(namesTheDevice, setting.setByDeviceOnly) << setting.key;
    }
}

TEST(SettingsCtlSet, NamesTheFormOfALocale) {
    const std::string settings = R"({"orliaLocale":"[\"en-US\"]"})";
    expectEnd(runSet({settings, {}, {}, settings}, {"set", "orliaLocale", "fr-FR"}), 1, "",
              "settingsctl: 'orliaLocale' was refused: it must be a JSON array with at least one locale, for example "
              "[\"en-US\"]\n");
}

TEST(SettingsCtlSet, SendsAnyValueUnchanged) {
    const std::pair<std::string, std::string> values[] = {{R"(["fr-FR","en-US"])", R"([\"fr-FR\",\"en-US\"])"},
                                                          {"[a,b]", "[a,b]"},
                                                          {"{}", "{}"},
                                                          {"", ""},
                                                          {"list", "list"},
                                                          {"a=b,c", "a=b,c"},
                                                          {"-5", "-5"},
                                                          {"'\"\\ %s\n", R"('\"\\ %s\n)"},
                                                          {"K\xc3\xbc"
                                                           "che",
                                                           "K\xc3\xbc"
                                                           "che"},
                                                          {std::string(120000, 'v'), std::string(120000, 'v')}};
    for (const auto& [value, json] : values) {
        const Outcome outcome = runSet({"{}", {}, {}, R"({"k":")" + json + "\"}"}, {"set", "k", value});
        EXPECT_EQ(outcome.request.substr(outcome.request.find("\"payload\"")),
                  R"("payload":{"settingDBId":"k","to":")" + json + "\"}}");
        EXPECT_EQ(outcome.end.output, "k: unchanged\n");
    }
    const Outcome option = runSet({}, {"set", "k", "--", "--json"});
    EXPECT_EQ(option.request.substr(option.request.find("\"payload\"")),
              R"("payload":{"settingDBId":"k","to":"--json"}})");
}

TEST(SettingsCtlSet, EscapesControlCharactersInText) {
    const HostScript script{"{}", {}, {event("k", "\\u001b[31m", "a\\nb")}, R"({"k":"\u009b"})"};
    expectEnd(runSet(script, {"set", "k", "a\nb"}), 0, "k: '\\x1b[31m' -> 'a\\nb'\n",
              "settingsctl: accepted, but read back as '\\u009b'\n");
}

TEST(SettingsCtlSet, PrintsTheResultAsJson) {
    const std::vector<std::string> arguments{"set", "--json", "deviceName", "Den"};
    const std::string old = R"({"deviceName":"TV"})";
    const std::string wanted = R"({"deviceName":"Den"})";
    expectEnd(runSet({old, {}, {event("deviceName", "TV", "Den")}, wanted}, arguments), 0,
              "{\"from\":\"TV\",\"key\":\"deviceName\",\"result\":\"changed\",\"to\":\"Den\"}\n", "");
    expectEnd(runSet({wanted, {}, {}, wanted}, arguments), 0,
              "{\"from\":\"Den\",\"key\":\"deviceName\",\"result\":\"unchanged\",\"to\":\"Den\"}\n", "");
    expectEnd(runSet({old, {}, {}, old}, arguments), 1,
              "{\"from\":\"TV\",\"key\":\"deviceName\",\"result\":\"refused\",\"to\":\"Den\"}\n",
              "settingsctl: 'deviceName' was refused: the host did not accept it or has seen a newer request; see the "
              "host's log\n");
}

TEST(SettingsCtlSet, PrintsNoResultWhenQuiet) {
    const std::vector<std::string> arguments{"set", "--quiet", "deviceName", "Den"};
    expectEnd(runSet({"{}", {}, {event("deviceName", "TV", "Den")}, R"({"deviceName":"other"})"}, arguments), 0, "",
              "");
}

TEST(SettingsCtlSet, ReportsARefusalFrame) {
    const FakeHost host;
    auto program = host.start({"set", "deviceName", "Den"});
    Peer client = host.accept();
    client.receiveLine();
    client.sendLine(getReply(program, 1, "{}"));
    client.receiveLine();
    client.receiveLine();
    client.sendLine(R"({"error":{"code":"too-large","message":"the frame is larger than 64 KiB"}})");
    SettingsCtlTests::expectEnd(
        program, 1, "", "settingsctl: the host refused the request: the frame is larger than 64 KiB (too-large)\n");
}

/// The message types of the requests that have no reply.
constexpr int openSettings = 19;
constexpr int logOut = 22;

class SettingsCtlRequest : public testing::TestWithParam<int> {
protected:
    static std::string verb() { return GetParam() == openSettings ? "open-settings" : "logout"; }
};

TEST_P(SettingsCtlRequest, IsServedWhenTheNextRequestHasItsReply) {
    const FakeHost host;
    auto program = host.start({verb()});
    Peer client = host.accept();
    EXPECT_EQ(client.receiveLine(), bareRequest(GetParam(), program, 1));
    EXPECT_EQ(client.receiveLine(), bareRequest(18, program, 2));
    client.sendLine(R"({"notice":{"reread":["deviceName"]}})");
    client.sendLine(R"({"type":18,"messageId":")" + messageId(program, 2) + R"(","payload":{}})");
    EXPECT_TRUE(client.clientCloses());
    SettingsCtlTests::expectEnd(program, 0, "", "");
}

TEST_P(SettingsCtlRequest, PrintsJsonWhenServed) {
    const FakeHost host;
    auto program = host.start({verb(), "--json"});
    Peer client = host.accept();
    client.sendLine(R"({"type":18,"messageId":")" + messageId(program, 2) + R"(","payload":{}})");
    SettingsCtlTests::expectEnd(program, 0, "{\"ok\":true}\n", "");
}

TEST_P(SettingsCtlRequest, MayBeRefused) {
    const FakeHost host;
    auto program = host.start({verb()});
    Peer client = host.accept();
    client.sendLine(R"({"error":{"code":"unknown-type","message":"no such type"}})");
    SettingsCtlTests::expectEnd(program, 1, "",
                                "settingsctl: the host refused the request: no such type (unknown-type)\n");
}

INSTANTIATE_TEST_SUITE_P(Verb, SettingsCtlRequest, testing::Values(openSettings, logOut), [](const auto& suite) {
    return std::string(suite.param == openSettings ? "OpenSettings" : "LogOut");
});
