#include <csignal>
#include <filesystem>

#include <gtest/gtest.h>

#include "FakeHost.h"
#include "Output.h"
#include "RunningHost.h"
#include "support/Files.h"
#include "support/RegularExpression.h"
#include "support/Sanitizers.h"
#include "support/TemporaryDirectory.h"
#include "wire/Schemas.h"

using namespace SettingsCtlTests;

namespace {

using Words = std::vector<std::string>;

/// What a host tells of something that passed.
std::string copyOf(long timestamp, const std::string& direction, const std::string& listener, const std::string& client,
                   const std::string& what) {
    return R"({"trace":{"timestamp":)" + std::to_string(timestamp) + R"(,"direction":")" + direction + R"(","door":")" +
           listener + R"(","client":)" + client + "," + what + "}}";
}

class SettingsCtlRecord : public testing::Test {
protected:
    std::string file() const { return files / "recorded.jsonl"; }

    /// The lines of the file after `copies` of a host, which then ends. `world`: its world.
    Words recorded(const Words& copies, const Words& options = {}, const std::string& world = R"({"world":1})") const {
        const FakeHost host;
        Words arguments{"record", file()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        auto program = host.start(arguments);
        {
            Peer client = host.acceptAtDevice();
            EXPECT_EQ(client.receiveLine(), R"({"command":"trace","enabled":true,"connections":true})");
            EXPECT_EQ(client.receiveLine(), R"({"command":"save","withValues":true})");
            client.sendLine(R"({"ok":true})");
            // In the world already.
            client.sendLine(copyOf(900, "in", "socket", "1", R"("text":"{}")"));
            client.sendLine(R"({"world":)" + world + R"(,"leftOut":[]})");
            for (const auto& copy : copies) {
                client.sendLine(copy);
            }
        }
        expectEnd(program, 3, "",
                  "settingsctl: recording " + host.devicePath() + "\nsettingsctl: the host at " + host.devicePath() +
                      " closed the connection\n");
        return TestSupport::linesOf(file());
    }

    /// The same without the first line.
    Words stepsOf(const Words& copies, const Words& options = {}) const {
        Words lines = recorded(copies, options);
        lines.erase(lines.begin());
        return lines;
    }

    const TestSupport::TemporaryDirectory files;
};

}  // namespace

TEST_F(SettingsCtlRecord, WritesAStepForAllThatPasses) {
    EXPECT_EQ(stepsOf({copyOf(1000, "in", "socket", "7", R"("text":"{\"type\": 18,\n \"x\":1.0}")"),
                       copyOf(1005, "out", "all", "null", R"("text":"{\"notice\":{\"reread\":[]}}")"),
                       copyOf(1010, "in", "page", "8", R"("text":"[7")"),
                       copyOf(1010, "out", "page", "8", R"("closed":true)"),
                       copyOf(500, "in", "device", "9", R"("text":"{\"command\":\"fly\"}")"),
                       copyOf(1020, "in", "socket", "7", R"("closed":true)"),
                       copyOf(1020, "in", "socket", "10", R"("closed":true)")}),
              (Words{R"({"time": 0, "at": "socket-7", "sent": {"type": 18,  "x":1.0}})",
                     R"({"time": 5, "at": "all", "received": {"notice":{"reread":[]}}})",
                     R"({"time": 10, "at": "page-8", "sentText": "[x"})",
                     R"({"time": 10, "at": "page-8", "closedByHost": true})",
                     R"({"time": 10, "at": "device-9", "sent": {"command":"fly"}})",
                     R"({"time": 20, "at": "socket-7", "closed": true})",
                     R"({"time": 20, "at": "device-9", "closedByHost": true})"}));
}

TEST_F(SettingsCtlRecord, RecordsWhatPassedBeforeItIsInterrupted) {
    const FakeHost host;
    auto program = host.start({"record", file()});
    Peer client = host.acceptAtDevice();
    client.receiveLine();
    client.receiveLine();
    client.sendLine("{\"ok\":true}\n{\"world\":{},\"leftOut\":[]}");
    EXPECT_EQ(program.errors().readLine(), "settingsctl: recording " + host.devicePath());
    program.sendSignal(SIGTERM);
    EXPECT_EQ(client.receiveLine(), R"({"command":"trace","enabled":false})");
    client.sendLine(copyOf(0, "out", "all", "null", R"("text":"{}")") + "\n{\"ok\":true}");
    EXPECT_EQ(finish(program).status, 0);
    EXPECT_EQ(TestSupport::linesOf(file()).back(), R"({"time": 0, "at": "all", "received": {}})");
}

TEST_F(SettingsCtlRecord, LeavesOutWhatHasTheKeyOfThePages) {
    EXPECT_EQ(stepsOf({copyOf(0, "in", "socket", "7", R"("text":"{\"messageId\":\"m\",\"page\":{}}")"),
                       copyOf(0, "in", "socket", "7", R"("closed":true)")}),
              Words{});
}

TEST_F(SettingsCtlRecord, ReplacesPersonalValuesByTheSameTextEachTime) {
    const auto sent = [](const std::string& frame) {
        return copyOf(0, "in", "socket", "1", R"("text":)" + SettingsCtl::jsonString(frame));
    };
    const Words copies{sent(R"({"payload":{"settingDBId":"deviceName","from":"TV","to":"Ann"}})"),
                       sent(R"({"batch":[{"type":24,"payload":{"settingDBId":"friendlyName","to":"Bea"}}]})"),
                       sent(R"({"payload":{"settings":{"deviceName":"Bea","friendlyName":"","timezone":"Ann"}}})"),
                       sent(R"({"command":"setting","key":"companionDevice","value":"[\"Ann\"]"})"),
                       sent(R"({"payload":{"settingDBId":"timezone","to":"Ann"}})"),
                       sent(R"(["Ann\"",7])"),
                       sent(R"({"deviceName":"Ann)")};
    const std::string world = R"({"world":1,"settings":{"deviceName":"Ann"}})";
    Words lines = recorded(copies, {}, world);
    ASSERT_EQ(lines.size(), 9U);
    const std::string header = R"(\{"scenario": 1, "title": "Recorded [-0-9T:.+]+", "world": )"
                               R"(\{"world":1,"settings":\{"deviceName":"personal-1"\}\}\})";
    EXPECT_FALSE(TestSupport::matchOf(lines[0], header).empty()) << lines[0];
    const std::string begin = R"({"time": 0, "at": "socket-1", "sent)";
    const Words expected{
        R"(": {"payload":{"settingDBId":"deviceName","from":"TV","to":"personal-1"}}})",
        R"(": {"batch":[{"type":24,"payload":{"settingDBId":"friendlyName","to":"personal-2"}}]}})",
        R"(": {"payload":{"settings":{"deviceName":"personal-2","friendlyName":"","timezone":"Ann"}}}})",
        R"(": {"command":"setting","key":"companionDevice","value":"personal-3"}})",
        R"(": {"payload":{"settingDBId":"timezone","to":"Ann"}}})",
        R"(Text": "[\"x\",7]"})",
        R"(Text": "{\"xxxxxxxxxx\":\"xxx"})"};
    for (std::size_t index = 0; index < expected.size(); ++index) {
        EXPECT_EQ(lines[index + 1], begin + expected[index]);
    }
    lines = recorded(copies, {"--with-values"}, world);
    EXPECT_NE(lines[0].find(R"("world": {"world":1,"settings":{"deviceName":"Ann"}}})"), std::string::npos) << lines[0];
    EXPECT_EQ(lines[1], begin + R"(": {"payload":{"settingDBId":"deviceName","from":"TV","to":"Ann"}}})");
    EXPECT_EQ(lines[7], begin + R"(Text": "{\"deviceName\":\"Ann"})");
}

TEST_F(SettingsCtlRecord, ReportsAHostThatRecordsNothingAndAFileThatCannotBeWritten) {
    const FakeHost host;
    auto program = host.start({"record", file()});
    {
        Peer client = host.acceptAtDevice();
        client.sendLine(refusal("unknown-command", "no"));
        expectEnd(program, 1, "", "settingsctl: the host refused the request: no (unknown-command)\n");
    }
    EXPECT_FALSE(std::filesystem::exists(file()));
    for (const auto& [name, reason] :
         {std::pair{"/nowhere/f", "No such file or directory"}, {"/dev/full", "No space left on device"}}) {
        auto full = host.start({"record", name});
        Peer client = host.acceptAtDevice();
        client.sendLine("{\"ok\":true}\n{\"world\":{},\"leftOut\":[]}");
        expectEnd(full, 1, "", "settingsctl: cannot write '" + std::string(name) + "': " + reason + "\n");
    }
}

TEST_F(SettingsCtlRecord, WritesWhatReplayTakes) {
    const RunningHost host;
    host.run({"set", "deviceName", "Ann"});
    auto recording = host.start({"record", file()});
    EXPECT_EQ(recording.errors().readLine(), "settingsctl: recording " + host.devicePath());
    // One that listens, and two that change.
    auto watching = host.start({"watch"});
    EXPECT_EQ(watching.errors().readLine(), "settingsctl: watching " + host.socketPath());
    host.run({"set", "deviceName", "Bea", "captionsFontSize", "FONT_LARGE"});
    host.run({"device", "fault", "storage-full"});
    EXPECT_EQ(host.run({"set", "deviceName", "Cid"}).status, 1);
    host.run({"device", "captions", "on"});
    // The event cuts the connection of the watching client, which comes again and resumes.
    host.run({"device", "fault", "storage-full", "off"});
    host.run({"device", "fault", "events-dropped"});
    host.run({"device", "setting", "friendlyName", "Bea"});
    for (auto line = watching.output().readLine(); line != "friendlyName: 'TV' -> 'Bea'";) {
        ASSERT_TRUE(line) << "the watching client did not come again";
        line = watching.output().readLine();
    }
    recording.sendSignal(SIGINT);
    EXPECT_EQ(recording.wait(), 0);
    EXPECT_EQ(TestSupport::modeOf(file()), 0600U);
    for (const auto& line : TestSupport::linesOf(file())) {
        EXPECT_EQ(WireTests::Schemas::ofTheWire().faultOf("scenario", line), std::nullopt) << line;
    }
    const std::string text = TestSupport::contentOf(file());
    for (const auto* const name : {"Ann", "Bea", "Cid"}) {
        EXPECT_EQ(text.find(name), std::string::npos) << text;
    }
    if (!TestSupport::sanitized) {
        const auto replay = [&](const std::string& scenario) {
            return TestSupport::run({SETTINGSCTL_PROGRAM, "replay", "--start-host", "--speed", "max", scenario});
        };
        const auto end = replay(file());
        EXPECT_EQ(end.output.substr(end.output.find(' ')), " frames as expected\n") << end.output << text;
        EXPECT_EQ(end.errors, "");
    }
}
