#include <chrono>

#include <gtest/gtest.h>

#include "FakeHost.h"
#include "Utils/Rapidjson.h"

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

constexpr const char* changed = R"({"outcome":"changed","settingDBId":"deviceName","value":"Den"})";

/// Runs `set deviceName Den`, or with other arguments, against a host that sends `events` and answers with `payload`.
struct SetRun {
    explicit SetRun(const std::string& payload, const std::vector<std::string>& events = {},
                    std::vector<std::string> arguments = {"set", "deviceName", "Den"}) {
        const FakeHost host;
        auto program = host.start(std::move(arguments));
        Peer client = host.accept();
        greet(client, program);
        request = client.receiveLine();
        for (const auto& frame : events) {
            client.sendLine(frame);
        }
        client.sendLine(changeAnswer(program, 1, payload));
        replyToFence(client);
        EXPECT_TRUE(client.clientCloses());
        end = finish(program);
    }
    void expectEnd(int status, const std::string& output, const std::string& errors) const {
        EXPECT_EQ(end.output, output);
        EXPECT_EQ(end.errors, errors);
        EXPECT_EQ(end.status, status);
    }

    std::string request;
    TestSupport::Finished end;
};

std::string refusedFor(const std::string& reason, const std::string& members = "") {
    return R"({"outcome":"refused","reason":")" + reason + R"(","message":"the host's words","settingDBId":"k")" +
           members + "}";
}

}  // namespace

TEST(SettingsCtlSet, AsksForAnAnswer) {
    const FakeHost host;
    const std::int64_t before = millisecondsSinceEpoch();
    auto program = host.start({"set", "deviceName", "Den"});
    Peer client = host.accept();
    greet(client, program);
    const std::string request = client.receiveLine();
    const std::int64_t timestamp = timestampOf(request);
    EXPECT_GE(timestamp, before);
    EXPECT_LE(timestamp, millisecondsSinceEpoch());
    EXPECT_EQ(request, setRequest(program, 1, std::to_string(timestamp), "deviceName", "Den"));
    client.sendLine(event("deviceName", "TV", "Den"));
    client.sendLine(changeAnswer(program, 1, changed));
    replyToFence(client);
    EXPECT_TRUE(client.clientCloses());
    expectEnd(program, 0, "deviceName: 'TV' -> 'Den'\n", "");
}

TEST(SettingsCtlSet, PrintsUnchanged) {
    SetRun(R"({"outcome":"unchanged","settingDBId":"deviceName","value":"Den"})")
        .expectEnd(0, "deviceName: unchanged\n", "");
}

TEST(SettingsCtlSet, WarnsWhenTheOwnerStoresAnotherValue) {
    SetRun(R"({"outcome":"changed","settingDBId":"handsFreeEnabled","value":"false"})",
           {event("handsFreeEnabled", "false", "TRUE")}, {"set", "handsFreeEnabled", "TRUE"})
        .expectEnd(0, "handsFreeEnabled: 'false' -> 'TRUE'\n", "settingsctl: changed, but the host reports 'false'\n");
}

TEST(SettingsCtlSet, WarnsWhenTheVoiceSdkRefusesTheValue) {
    SetRun(R"({"outcome":"changed","settingDBId":"friendlyName","value":"Den","applied":false})",
           {event("friendlyName", "TV", "Den")}, {"set", "friendlyName", "Den"})
        .expectEnd(0, "friendlyName: 'TV' -> 'Den'\n", "settingsctl: changed, but the voice SDK refused the value\n");
}

TEST(SettingsCtlSet, WarnsOfAValueThatTheCatalogueDoesNotList) {
    SetRun(R"({"outcome":"changed","settingDBId":"captionsFontSize","value":"HUGE"})",
           {event("captionsFontSize", "FONT_SMALL", "HUGE")}, {"set", "captionsFontSize", "HUGE"})
        .expectEnd(0, "captionsFontSize: 'FONT_SMALL' -> 'HUGE'\n",
                   "settingsctl: 'HUGE' is not a listed value of 'captionsFontSize': FONT_SMALL, FONT_MEDIUM, "
                   "FONT_LARGE, FONT_EXTRA_LARGE\n");
    SetRun(R"({"outcome":"unchanged","value":"FONT_LARGE"})", {}, {"set", "captionsFontSize", "FONT_LARGE"})
        .expectEnd(0, "captionsFontSize: unchanged\n", "");
}

TEST(SettingsCtlSet, ReportsTheReasonOfARefusal) {
    const auto errorsFor = [](const std::string& key, const std::string& payload) {
        const SetRun run(payload, {}, {"set", key, "v"});
        EXPECT_EQ(run.end.status, 1);
        EXPECT_EQ(run.end.output, "");
        return run.end.errors;
    };
    const std::string refused = "settingsctl: 'deviceName' was refused: ";
    EXPECT_EQ(errorsFor("deviceName", refusedFor("incomplete")), refused + "the host's words\n");
    EXPECT_EQ(errorsFor("deviceName", refusedFor("not-stored")), refused + "the host's words; see the host's log\n");
    EXPECT_EQ(errorsFor("deviceName", refusedFor("stale", R"(,"newest":9)")),
              refused +
                  "the host has seen a request with a newer time stamp; use 'settingsctl set --force' to set "
                  "it anyway\n");
    EXPECT_EQ(errorsFor("orliaLocale", refusedFor("wrong-form")),
              "settingsctl: 'orliaLocale' was refused: it must be a JSON array with at least one locale, for example "
              "[\"en-US\"]\n");
    EXPECT_EQ(errorsFor("deviceName", refusedFor("later")), refused + "the host's words\n");
}

TEST(SettingsCtlSet, NamesTheVerbOfTheDeviceForASettingThatOnlyTheDeviceSets) {
    const auto errorsFor = [](const std::string& key) {
        return SetRun(refusedFor("read-only"), {}, {"set", key, "v"}).end.errors;
    };
    EXPECT_EQ(errorsFor("captionsEnabled"),
              "settingsctl: 'captionsEnabled' was refused: only the device can change it: use 'settingsctl device "
              "captions on|off'\n");
    EXPECT_EQ(errorsFor("doNotDisturbEnabled"),
              "settingsctl: 'doNotDisturbEnabled' was refused: only the device can change it: use 'settingsctl device "
              "do-not-disturb on|off'\n");
}

TEST(SettingsCtlSet, WithForceSetsAStaleValueOnceMoreWithANewerTimeStamp) {
    for (const auto& [newest, newer] :
         {std::pair("9000000000000000", "9000000000000001"), std::pair("9223372036854775807", "9223372036854775807")}) {
        const FakeHost host;
        auto program = host.start({"set", "--force", "deviceName", "Den"});
        Peer client = host.accept();
        greet(client, program);
        client.receiveLine();
        client.sendLine(changeAnswer(program, 1, refusedFor("stale", std::string(R"(,"newest":)") + newest)));
        replyToFence(client);
        EXPECT_EQ(client.receiveLine(), setRequest(program, 3, newer, "deviceName", "Den"));
        client.sendLine(event("deviceName", "TV", "Den"));
        client.sendLine(changeAnswer(program, 3, changed));
        expectEnd(program, 0, "deviceName: 'TV' -> 'Den'\n", "");
    }
}

TEST(SettingsCtlSet, WithForceSendsNothingMoreThatIsNotStale) {
    const SetRun run(refusedFor("not-stored"), {}, {"set", "--force", "deviceName", "Den"});
    EXPECT_EQ(run.end.status, 1);
}

TEST(SettingsCtlSet, SendsSeveralPairsAsOneBatch) {
    const FakeHost host;
    auto program = host.start({"set", "deviceName", "Den", "captionsEnabled", "true", "friendlyName", "[a,b]"});
    Peer client = host.accept();
    greet(client, program);
    const std::string batch = client.receiveLine();
    const std::size_t first = std::string(R"({"batch":[)").size();
    const std::string time = std::to_string(timestampOf(batch.substr(first, batch.find("}},{") + 2 - first)));
    EXPECT_EQ(batch, R"({"batch":[)" + setRequest(program, 1, time, "deviceName", "Den") + "," +
                         setRequest(program, 2, time, "captionsEnabled", "true") + "," +
                         setRequest(program, 3, time, "friendlyName", "[a,b]") + "]}");
    client.sendLine(event("deviceName", "TV", "Den"));
    client.sendLine(changeAnswer(program, 1, changed));
    client.sendLine(changeAnswer(program, 2, refusedFor("read-only")));
    client.sendLine(changeAnswer(program, 3, R"({"outcome":"unchanged","value":"[a,b]"})"));
    replyToFence(client);
    expectEnd(program, 1, "deviceName: 'TV' -> 'Den'\nfriendlyName: unchanged\n",
              "settingsctl: 'captionsEnabled' was refused: only the device can change it: use 'settingsctl device "
              "captions on|off'\n");
}

TEST(SettingsCtlSet, WithForceSendsWhatIsStaleOfABatchOnceMore) {
    const FakeHost host;
    auto program = host.start({"set", "--force", "deviceName", "Den", "friendlyName", "A", "timezone", "B"});
    Peer client = host.accept();
    greet(client, program);
    client.receiveLine();
    client.sendLine(changeAnswer(program, 1, R"({"outcome":"unchanged","value":"Den"})"));
    client.sendLine(changeAnswer(program, 2, refusedFor("stale", R"(,"newest":8)")));
    client.sendLine(changeAnswer(program, 3, refusedFor("stale", R"(,"newest":9)")));
    replyToFence(client);
    EXPECT_EQ(client.receiveLine(), R"({"batch":[)" + setRequest(program, 5, "9", "friendlyName", "A") + "," +
                                        setRequest(program, 6, "10", "timezone", "B") + "]}");
    client.sendLine(event("friendlyName", "x", "A"));
    client.sendLine(changeAnswer(program, 5, R"({"outcome":"changed","value":"A"})"));
    client.sendLine(changeAnswer(program, 6, R"({"outcome":"unchanged","value":"B"})"));
    expectEnd(program, 0, "deviceName: unchanged\nfriendlyName: 'x' -> 'A'\ntimezone: unchanged\n", "");
}

TEST(SettingsCtlSet, NeedsAValueForEachKey) {
    const FakeHost host;
    auto program = host.start({"set", "deviceName", "Den", "friendlyName"});
    expectEnd(program, 2, "", "settingsctl: 'friendlyName' has no VALUE\n");
}

TEST(SettingsCtlSet, TakesAsManyPairsAsABatch) {
    const FakeHost host;
    std::vector<std::string> arguments{"set"};
    for (int pair = 0; pair < 64; ++pair) {
        arguments.insert(arguments.end(), {"deviceName", "Den"});
    }
    auto program = host.start(arguments);
    Peer client = host.accept();
    greet(client, program);
    const std::string batch = client.receiveLine();
    EXPECT_NE(batch.find(messageId(program, 64)), std::string::npos);
    client.sendLine(refusal("busy", "no room"));
    replyToFence(client);
    EXPECT_EQ(finish(program).status, 1);
    arguments.insert(arguments.end(), {"deviceName", "Den"});
    auto tooMany = host.start(arguments);
    EXPECT_EQ(finish(tooMany).status, 2);
}

TEST(SettingsCtlSet, RefusesAnUnknownKeyBeforeItConnects) {
    const FakeHost host;
    auto program = host.start({"set", "deviceName", "Den", "devicename", "Den"});
    expectEnd(program, 2, "",
              "settingsctl: unknown key 'devicename'; did you mean 'deviceName'? --any-key accepts any key\n");
}

TEST(SettingsCtlSet, WorksWithAHostOfVersion1) {
    const FakeHost host;
    auto program = host.start({"set", "deviceName", "Den"});
    Peer client = host.accept();
    client.receiveLine();
    client.sendLine(refusal("unknown-type", "no such type"));
    client.receiveLine();
    client.sendLine(event("deviceName", "TV", "Den"));
    replyToFence(client);
    EXPECT_EQ(client.receiveLine(), getRequest(program, 3, R"(["deviceName"])"));
    client.sendLine(getReply(program, 3, R"({"deviceName":"Den"})"));
    expectEnd(program, 0, "deviceName: 'TV' -> 'Den'\n", "");
}

TEST(SettingsCtlSet, ReportsThatAHostOfVersion1HasNoBatches) {
    const FakeHost host;
    auto program = host.start({"set", "deviceName", "Den", "friendlyName", "Den"});
    Peer client = host.accept();
    client.receiveLine();
    client.sendLine(refusal("unknown-type", "no such type"));
    expectEnd(program, 1, "",
              "settingsctl: the host at " + host.settingsPath() + " is of version 1.0 and has no batches\n");
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
    const auto expectSent = [](const SetRun& run, const std::string& json) {
        EXPECT_EQ(run.request.substr(run.request.find("\"payload\"")),
                  R"("payload":{"settingDBId":"k","to":")" + json + "\"}}");
        EXPECT_EQ(run.end.output, "k: unchanged\n");
    };
    const std::string unchanged = R"({"outcome":"unchanged"})";
    for (const auto& [value, json] : values) {
        expectSent(SetRun(unchanged, {}, {"set", "--any-key", "k", value}), json);
    }
    expectSent(SetRun(unchanged, {}, {"set", "--any-key", "k", "--", "--json"}), "--json");
}

TEST(SettingsCtlSet, EscapesControlCharactersInText) {
    SetRun(R"({"outcome":"changed","value":"\u009b"})", {event("k", "\\u001b[31m", "a\\nb")},
           {"set", "--any-key", "k", "a\nb"})
        .expectEnd(0, "k: '\\x1b[31m' -> 'a\\nb'\n", "settingsctl: changed, but the host reports '\\u009b'\n");
}

TEST(SettingsCtlSet, PrintsTheResultAsJson) {
    const std::vector<std::string> arguments{"set", "--json", "deviceName", "Den"};
    SetRun(changed, {event("deviceName", "TV", "Den")}, arguments)
        .expectEnd(0, "{\"from\":\"TV\",\"key\":\"deviceName\",\"result\":\"changed\",\"to\":\"Den\"}\n", "");
    SetRun(R"({"outcome":"unchanged"})", {}, arguments)
        .expectEnd(0, "{\"from\":\"Den\",\"key\":\"deviceName\",\"result\":\"unchanged\",\"to\":\"Den\"}\n", "");
    SetRun(refusedFor("incomplete", R"(,"value":"TV")"), {}, arguments)
        .expectEnd(1,
                   "{\"from\":\"TV\",\"key\":\"deviceName\",\"reason\":\"incomplete\",\"result\":\"refused\",\"to\":"
                   "\"Den\"}\n",
                   "settingsctl: 'deviceName' was refused: the host's words\n");
}

TEST(SettingsCtlSet, PrintsNoResultWhenQuiet) {
    SetRun(R"({"outcome":"changed","value":"other"})", {event("deviceName", "TV", "Den")},
           {"set", "--quiet", "deviceName", "Den"})
        .expectEnd(0, "", "");
}

TEST(SettingsCtlSet, ReportsARefusalFrame) {
    const FakeHost host;
    auto program = host.start({"set", "deviceName", "Den"});
    Peer client = host.accept();
    greet(client, program);
    client.receiveLine();
    client.sendLine(refusal("too-large", "the frame is larger than 64 KiB"));
    replyToFence(client);
    expectEnd(program, 1, "", "settingsctl: 'deviceName' was refused: the frame is larger than 64 KiB\n");
}

/// The message types of the requests that have no reply.
constexpr int openSettingsRequest = 19;
constexpr int logOutRequest = 22;

class SettingsCtlRequest : public testing::TestWithParam<int> {
protected:
    static std::string verb() { return GetParam() == openSettingsRequest ? "open-settings" : "logout"; }
};

TEST_P(SettingsCtlRequest, AsksForAnAnswer) {
    const FakeHost host;
    auto program = host.start({verb()});
    Peer client = host.accept();
    greet(client, program);
    const std::string type = R"({"type":)" + std::to_string(GetParam());
    EXPECT_EQ(client.receiveLine(), type + R"(,"messageId":")" + messageId(program, 1) + R"(","answer":true})");
    client.sendLine(R"({"notice":{"reread":["deviceName"]}})");
    client.sendLine(type + R"(,"messageId":")" + messageId(program, 1) + R"(","payload":{"outcome":"done"}})");
    replyToFence(client);
    EXPECT_TRUE(client.clientCloses());
    expectEnd(program, 0, "", "");
}

TEST_P(SettingsCtlRequest, IsServedWithoutAnAnswerWhenTheNextRequestHasItsReply) {
    const FakeHost host;
    auto program = host.start({verb(), "--json"});
    Peer client = host.accept();
    greet(client, program);
    client.receiveLine();
    replyToFence(client);
    expectEnd(program, 0, "{\"ok\":true}\n", "");
}

TEST_P(SettingsCtlRequest, MayBeRefused) {
    const FakeHost host;
    auto program = host.start({verb()});
    Peer client = host.accept();
    greet(client, program);
    client.receiveLine();
    client.sendLine(R"({"type":)" + std::to_string(GetParam()) + R"(,"messageId":")" + messageId(program, 1) +
                    R"(","payload":{"outcome":"refused","reason":"not-stored","message":"the disk"}})");
    replyToFence(client);
    expectEnd(program, 1, "", "settingsctl: refused: the disk\n");
}

INSTANTIATE_TEST_SUITE_P(Verb, SettingsCtlRequest, testing::Values(openSettingsRequest, logOutRequest),
                         [](const auto& suite) {
                             return std::string(suite.param == openSettingsRequest ? "OpenSettings" : "LogOut");
                         });
