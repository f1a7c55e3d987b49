#include <chrono>

#include <gtest/gtest.h>

#include "FakeHost.h"

using namespace SettingsCtlTests;

namespace {

/// An event as the history tells it. `client`: the member, if the event has it.
std::string pastEvent(int sequence, const std::string& from, const std::string& to, const std::string& origin,
                      const std::string& client = "") {
    return R"({"type":25,"messageId":"host-)" + std::to_string(sequence) + R"(","timestamp":)" +
           std::to_string(1766000000000 + 1000L * sequence) + R"(,"sequence":)" + std::to_string(sequence) +
           R"(,"origin":")" + origin + "\"" + (client.empty() ? "" : R"(,"client":")" + client + "\"") +
           R"(,"payload":{"settingDBId":"deviceName","from":")" + from + R"(","to":")" + to + R"("}})";
}

const std::string bySomebody = pastEvent(1, "TV", "Den", "socket");
const std::string byName = pastEvent(2, "Den", "At\\u001btic", "page", "kitchen-\\u009bremote");
const std::string byTheDevice = pastEvent(3, "At\\u001btic", "TV", "device");

std::string eventsReply(const TestSupport::ChildProcess& program, int number, const std::string& events) {
    return queryFrame(program, number, "history", R"({"events":[)" + events + "]}");
}

/// Runs the program against a host with three events. `asked`: the body of the request.
TestSupport::Finished runHistory(std::vector<std::string> arguments, const std::string& asked = "{}") {
    arguments.insert(arguments.begin(), "history");
    const FakeHost host;
    auto program = host.start(std::move(arguments));
    Peer client = host.accept();
    greet(client, program);
    EXPECT_EQ(client.receiveLine(), queryFrame(program, 1, "history", asked));
    client.sendLine(eventsReply(program, 1, bySomebody + "," + byName + "," + byTheDevice));
    EXPECT_TRUE(client.clientCloses());
    return finish(program);
}

/// Answers `undo` until it has sent its change. Returns: that request.
std::string replyToUndo(Peer& client, const TestSupport::ChildProcess& program, const std::string& events) {
    greet(client, program);
    EXPECT_EQ(client.receiveLine(), queryFrame(program, 1, "history", R"({"settingDBId":"deviceName","limit":1})"));
    client.sendLine(eventsReply(program, 1, events));
    return events.empty() ? "" : client.receiveLine();
}

/// The request without its time stamp.
std::string withoutTimestamp(const std::string& request) {
    const std::size_t begin = request.find("\"timestamp\"");
    return begin == std::string::npos ? request
                                      : request.substr(0, begin) + request.substr(request.find(',', begin) + 1);
}

std::string setRequest(const TestSupport::ChildProcess& program, int number, const std::string& key,
                       const std::string& value) {
    return R"({"type":24,"messageId":")" + messageId(program, number) +
           R"(","answer":true,"payload":{"settingDBId":")" + key + R"(","to":")" + value + R"("}})";
}

class SettingsCtlHistory : public testing::Test {
protected:
    SettingsCtlHistory() { ::setenv("TZ", "UTC", 1); }
};

}  // namespace

TEST_F(SettingsCtlHistory, PrintsTimeChangeClientAndOrigin) {
    const TestSupport::Finished end = runHistory({});
    EXPECT_EQ(end.output,
              "2025-12-17 19:33:21 deviceName: 'TV' -> 'Den' (socket)\n"
              "2025-12-17 19:33:22 deviceName: 'Den' -> 'At\\x1btic' (kitchen-\\u009bremote, page)\n"
              "2025-12-17 19:33:23 deviceName: 'At\\x1btic' -> 'TV' (device)\n");
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.status, 0);
}

TEST_F(SettingsCtlHistory, AsksForTheEventsOfOneKey) {
    EXPECT_EQ(runHistory({"deviceName"}, R"({"settingDBId":"deviceName"})").status, 0);
    EXPECT_EQ(runHistory({"--any-key", "ownKey"}, R"({"settingDBId":"ownKey"})").status, 0);
}

TEST_F(SettingsCtlHistory, PrintsTimesInTheUsersTimeZone) {
    ::setenv("TZ", "Asia/Tokyo", 1);
    EXPECT_EQ(runHistory({}).output.substr(0, 20), "2025-12-18 04:33:21 ");
}

TEST_F(SettingsCtlHistory, PrintsTheFramesAsJson) {
    EXPECT_EQ(runHistory({"--json"}).output, bySomebody + "\n" +
                                                 R"({"type":25,"messageId":"host-2","timestamp":1766000002000,)"
                                                 R"("sequence":2,"origin":"page","client":"kitchen-)"
                                                 "\xc2\x9b"
                                                 R"(remote","payload":{"settingDBId":"deviceName","from":"Den",)"
                                                 R"("to":"At\u001Btic"}})"
                                                 "\n" +
                                                 R"({"type":25,"messageId":"host-3","timestamp":1766000003000,)"
                                                 R"("sequence":3,"origin":"device","payload":)"
                                                 R"({"settingDBId":"deviceName","from":"At\u001Btic","to":"TV"}})"
                                                 "\n");
}

TEST_F(SettingsCtlHistory, PrintsTheNewValuesAlone) {
    EXPECT_EQ(runHistory({"--value"}).output, "Den\nAt\\x1btic\nTV\n");
}

TEST_F(SettingsCtlHistory, PrintsNothingWhenQuiet) {
    EXPECT_EQ(runHistory({"--quiet"}).output, "");
}

TEST(SettingsCtlUndo, SetsTheValueBeforeTheNewestChange) {
    const FakeHost host;
    auto program = host.start({"undo", "deviceName"});
    Peer client = host.accept();
    const std::string request = replyToUndo(client, program, bySomebody);
    EXPECT_EQ(withoutTimestamp(request), setRequest(program, 2, "deviceName", "TV"));
    client.sendLine(event("deviceName", "Den", "TV"));
    client.sendLine(changeAnswer(program, 2, R"({"outcome":"changed","settingDBId":"deviceName","value":"TV"})"));
    replyToFence(client);
    EXPECT_TRUE(client.clientCloses());
    expectEnd(program, 0, "deviceName: 'Den' -> 'TV'\n", "");
}

TEST(SettingsCtlUndo, ReportsThatNoChangeIsKnown) {
    const FakeHost host;
    auto program = host.start({"undo", "deviceName"});
    Peer client = host.accept();
    replyToUndo(client, program, "");
    EXPECT_TRUE(client.clientCloses()) << "nothing is set";
    expectEnd(program, 1, "", "settingsctl: cannot undo 'deviceName': the host has no record of a change\n");
}

TEST(SettingsCtlUndo, ReportsARefusal) {
    const FakeHost host;
    auto program = host.start({"undo", "deviceName", "--json"});
    Peer client = host.accept();
    replyToUndo(client, program, bySomebody);
    client.sendLine(changeAnswer(program, 2,
                                 R"({"outcome":"refused","reason":"not-stored","message":"the disk is full",)"
                                 R"("settingDBId":"deviceName","value":"Den"})"));
    replyToFence(client);
    expectEnd(program, 1,
              R"({"from":"Den","key":"deviceName","reason":"not-stored","result":"refused","to":"TV"})"
              "\n",
              "settingsctl: 'deviceName' was refused: the disk is full; see the host's log\n");
}

TEST(SettingsCtlReset, SetsTheDefault) {
    const FakeHost host;
    auto program = host.start({"reset", "captionsFontSize"});
    Peer client = host.accept();
    greet(client, program);
    EXPECT_EQ(withoutTimestamp(client.receiveLine()), setRequest(program, 1, "captionsFontSize", "FONT_MEDIUM"));
    client.sendLine(
        changeAnswer(program, 1, R"({"outcome":"unchanged","settingDBId":"captionsFontSize","value":"FONT_MEDIUM"})"));
    replyToFence(client);
    EXPECT_TRUE(client.clientCloses());
    expectEnd(program, 0, "captionsFontSize: unchanged\n", "");
}

TEST(SettingsCtlReset, ReportsASettingWithoutDefaultWithoutAskingTheHost) {
    for (const std::string key : {"timezone", "captionsEnabled", "tovanEntitlementStatus"}) {
        const TestSupport::Finished end =
            TestSupport::run({SETTINGSCTL_PROGRAM, "--socket", "/nowhere/settings.sock", "reset", key});
        EXPECT_EQ(end.errors, "settingsctl: '" + key + "' has no default\n");
        EXPECT_EQ(end.status, 1);
    }
}
