#include <set>

#include <gtest/gtest.h>

#include "FakeHost.h"
#include "Wire/Catalogue.h"

using namespace SettingsCtlTests;

namespace {

/// Replies to the first request of the program, which asks for `keys`, with `settings`.
void replyToGet(const FakeHost& host, const TestSupport::ChildProcess& program, const std::string& keys,
                const std::string& settings) {
    Peer client = host.accept();
    greet(client, program);
    EXPECT_EQ(client.receiveLine(), getRequest(program, 1, keys));
    client.sendLine(getReply(program, 1, settings));
    EXPECT_TRUE(client.clientCloses());
}

constexpr const char* twoSettings = R"({"timezone":"Europe/Paris","deviceName":"Living room"})";

}  // namespace

TEST(SettingsCtlGet, RequestsAllSettingsAndPrintsThemByKey) {
    const FakeHost host;
    auto program = host.start({"get"});
    replyToGet(host, program, "[]", twoSettings);
    expectEnd(program, 0, "deviceName=Living room\ntimezone=Europe/Paris\n", "");
}

TEST(SettingsCtlGet, RequestsTheGivenKeysUnchanged) {
    const FakeHost host;
    auto program = host.start({"get", "timezone", "deviceName", "timezone"});
    replyToGet(host, program, R"(["timezone","deviceName","timezone"])", twoSettings);
    expectEnd(program, 0, "deviceName=Living room\ntimezone=Europe/Paris\n", "");
}

TEST(SettingsCtlGet, AcceptsKeysNamedLikeVerbs) {
    const FakeHost host;
    auto program = host.start({"get", "--any-key", "list", "", "{}"});
    replyToGet(host, program, R"(["list","","{}"])", R"({"list":"1","":"2","{}":"3"})");
    expectEnd(program, 0, "=2\nlist=1\n{}=3\n", "");
}

TEST(SettingsCtlGet, PrintsBareValues) {
    const FakeHost host;
    auto program = host.start({"get", "--value"});
    replyToGet(host, program, "[]", twoSettings);
    expectEnd(program, 0, "Living room\nEurope/Paris\n", "");
}

TEST(SettingsCtlGet, PrintsOneJsonObject) {
    const FakeHost host;
    auto program = host.start({"--json", "get"});
    replyToGet(host, program, "[]", twoSettings);
    expectEnd(program, 0, "{\"deviceName\":\"Living room\",\"timezone\":\"Europe/Paris\"}\n", "");
}

TEST(SettingsCtlGet, PrintsNothingWhenQuiet) {
    const FakeHost host;
    auto program = host.start({"get", "--quiet", "deviceName"});
    replyToGet(host, program, R"(["deviceName"])", twoSettings);
    expectEnd(program, 0, "", "");
}

TEST(SettingsCtlGet, FailsForAKeyWithoutAValueAfterPrintingTheOthers) {
    const FakeHost host;
    auto program = host.start({"get", "--any-key", "a\n", "deviceName", "b"});
    replyToGet(host, program, R"(["a\n","deviceName","b"])", R"({"deviceName":"TV"})");
    expectEnd(program, 1, "deviceName=TV\n", "settingsctl: 'a\\n' has no value\nsettingsctl: 'b' has no value\n");
}

TEST(SettingsCtlGet, FailsForAKeyWithoutAValueInJson) {
    const FakeHost host;
    auto program = host.start({"get", "--any-key", "--json", "b"});
    replyToGet(host, program, R"(["b"])", "{}");
    expectEnd(program, 1, "{}\n", "settingsctl: 'b' has no value\n");
}

TEST(SettingsCtlGet, EscapesControlCharactersInText) {
    const FakeHost host;
    auto program = host.start({"get"});
    replyToGet(host, program, "[]", "{\"k\\u001b\":\"a\\nb\\u0000\x7f\xc2\x9b\"}");
    expectEnd(program, 0, "k\\x1b=a\\nb\\x00\\x7f\\u009b\n", "");
}

TEST(SettingsCtlGet, KeepsControlCharactersInJson) {
    const FakeHost host;
    auto program = host.start({"get", "--json"});
    replyToGet(host, program, "[]", "{\"k\\u001b\":\"a\\nb\\u0000\x7f\xc2\x9b\"}");
    expectEnd(program, 0, "{\"k\\u001B\":\"a\\nb\\u0000\x7f\xc2\x9b\"}\n", "");
}

TEST(SettingsCtlGet, PrintsHugeValues) {
    const FakeHost host;
    auto program = host.start({"get", "--value"});
    Peer client = host.accept();
    const std::string value(1000000, 'v');
    client.sendLine(getReply(program, 1, R"({"k":")" + value + "\"}"));
    expectEnd(program, 0, value + "\n", "");
}

TEST(SettingsCtlGet, AssemblesAReplySentByteByByte) {
    const FakeHost host;
    auto program = host.start({"get"});
    Peer client = host.accept();
    client.receiveLine();
    for (const char byte : getReply(program, 1, "{\"k\":\"\xc3\xbc\"}") + "\n") {
        client.send(std::string(1, byte));
    }
    expectEnd(program, 0, "k=\xc3\xbc\n", "");
}

TEST(SettingsCtlGet, SkipsOtherFrames) {
    const FakeHost host;
    auto program = host.start({"get"});
    Peer client = host.accept();
    client.receiveLine();
    client.sendLine(event("deviceName", "a", "b"));
    client.sendLine(R"({"notice":{"reread":["timezone"]}})");
    client.sendLine(R"({"type":7,"messageId":"another","payload":{"settings":{"k":"theirs"}}})");
    client.sendLine(R"({"type":99,"new":"kind of frame"})");
    client.sendLine(getReply(program, 1, R"({"k":"ours"})"));
    expectEnd(program, 0, "k=ours\n", "");
}

TEST(SettingsCtlGet, ReportsARefusal) {
    const FakeHost host;
    auto program = host.start({"get"});
    Peer client = host.accept();
    greet(client, program);
    client.receiveLine();
    client.sendLine(R"({"error":{"code":"too-large","message":"larger than\n64 KiB"}})");
    expectEnd(program, 1, "", "settingsctl: the host refused the request: larger than\\n64 KiB (too-large)\n");
}

TEST(SettingsCtlGet, FailsWhenItsOutputCannotBeWritten) {
    const FakeHost host;
    TestSupport::ChildProcess program(
        {"sh", "-c", "exec " SETTINGSCTL_PROGRAM " --socket \"$0\" get > /dev/full", host.settingsPath()});
    replyToGet(host, program, "[]", twoSettings);
    expectEnd(program, 1, "", "settingsctl: cannot write to standard output: No space left on device\n");
}

TEST(SettingsCtlGet, PrintsDifferentValuesDifferently) {
    const FakeHost host;
    auto program = host.start({"get"});
    replyToGet(host, program, "[]", R"({"a":"\n","b":"\\n","c":"\\\n","d\\x1b":"\u001b"})");
    expectEnd(program, 0, "a=\\n\nb=\\\\n\nc=\\\\\\n\nd\\\\x1b=\\x1b\n", "");
}

namespace {

TestSupport::Finished runList(std::vector<std::string> options) {
    options.insert(options.begin(), {SETTINGSCTL_PROGRAM, "list"});
    return TestSupport::run(options, {{"XDG_RUNTIME_DIR", "/nowhere"}});
}

}  // namespace

TEST(SettingsCtlList, PrintsTheKeysOfAllSettingsInOrderWithoutAHost) {
    std::set<std::string> keys;
    for (const auto& setting : Wire::catalogue()) {
        keys.insert(setting.key);
    }
    std::string lines;
    std::string json;
    for (const auto& key : keys) {
        lines += key + "\n";
        json += (json.empty() ? "[\"" : ",\"") + key + "\"";
    }
    const auto text = runList({});
    EXPECT_EQ(text.output, lines);
    EXPECT_EQ(text.output.rfind("captionsEnabled\ncaptionsFontSize\n", 0), 0U) << text.output;
    EXPECT_EQ(text.errors, "");
    EXPECT_EQ(text.status, 0);
    const auto array = runList({"--json"});
    EXPECT_EQ(array.output, json + "]\n");
    EXPECT_EQ(array.status, 0);
}

TEST(SettingsCtlList, PrintsNothingWhenQuiet) {
    const auto end = runList({"--quiet"});
    EXPECT_EQ(end.output + end.errors, "");
    EXPECT_EQ(end.status, 0);
}

class SettingsCtlSelected : public testing::TestWithParam<bool> {
protected:
    void expect(std::vector<std::string> arguments, const std::string& output) {
        const FakeHost host;
        auto program = host.start(std::move(arguments));
        Peer client = host.accept();
        greet(client, program);
        EXPECT_EQ(client.receiveLine(), bareRequest(18, program, 1));
        client.sendLine(R"({"type":18,"messageId":")" + messageId(program, 1) +
                        R"(","payload":{"isOrliaSelectedAsVA":)" + (GetParam() ? "true" : "false") + "}}");
        expectEnd(program, 0, output, "");
    }
};

TEST_P(SettingsCtlSelected, PrintsTheReply) {
    expect({"selected"}, GetParam() ? "true\n" : "false\n");
}

TEST_P(SettingsCtlSelected, PrintsTheReplyAsJson) {
    expect({"selected", "--json"},
           GetParam() ? "{\"isOrliaSelectedAsVA\":true}\n" : "{\"isOrliaSelectedAsVA\":false}\n");
}

INSTANTIATE_TEST_SUITE_P(Answer, SettingsCtlSelected, testing::Bool(), testing::PrintToStringParamName());
