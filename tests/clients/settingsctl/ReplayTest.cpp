#include <chrono>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "RunningHost.h"
#include "support/Files.h"
#include "support/Sanitizers.h"
#include "support/TemporaryDirectory.h"
#include "wire/Schemas.h"

using namespace SettingsCtlTests;

namespace {

using Words = std::vector<std::string>;

const std::string title = R"({"scenario": 1, "title": "A test"})";
const std::string hello =
    R"({"time": 0, "at": "socket-1", "sent": {"messageId": "h1", "hello": {"client": "remote"}}})";
const std::string greeting =
    R"({"time": 0, "at": "socket-1", "received": {"messageId": "h1", "hello": {"version": "1.1.0", "run": "R1", "sequence": 7}}})";

std::string setName(const std::string& at, const std::string& value, int time = 0) {
    return R"({"time": )" + std::to_string(time) + R"(, "at": ")" + at +
           R"(", "sent": {"type": 24, "timestamp": 1700000000000, "payload": {"settingDBId": "deviceName", "to": ")" +
           value + R"("}}})";
}

/// The same at socket-1, with the client's name.
std::string setNameAs(const std::string& client, const std::string& value) {
    return R"({"time": 0, "at": "socket-1", "sent": {"type": 24, "client": ")" + client +
           R"(", "timestamp": 1700000000000, "payload": {"settingDBId": "deviceName", "to": ")" + value + R"("}}})";
}

/// The event of a change of the name by the client "remote".
std::string named(const std::string& at, const std::string& from, const std::string& to, int sequence) {
    return R"({"time": 0, "at": ")" + at + R"(", "received": {"timestamp": 5, "type": 25, "messageId": "host-9-)" +
           std::to_string(sequence) + R"(", "sequence": )" + std::to_string(sequence) +
           R"(, "origin": "socket", "client": "remote", "payload": {"settingDBId": "deviceName", "from": ")" + from +
           R"(", "to": ")" + to + R"("}}})";
}

/// Scenarios, replayed with a host of the test or of the replay.
class SettingsCtlReplay : public testing::Test {
protected:
    std::string write(const Words& lines) const {
        std::string file = files / "scenario.jsonl";
        std::ofstream output(file);
        for (const auto& line : lines) {
            output << line << "\n";
        }
        return file;
    }

    TestSupport::Finished replay(const Words& lines, Words options = {"--speed", "max"}) const {
        options.insert(options.begin(), {SETTINGSCTL_PROGRAM, "replay", write(lines)});
        return TestSupport::run(options, {{"TMPDIR", (files / "temporary")}, {"XDG_RUNTIME_DIR", "/nowhere"}});
    }

    /// With a host of the replay's own.
    TestSupport::Finished replayAlone(const Words& lines, Words options = {"--speed", "max"}) const {
        std::filesystem::create_directory(files / "temporary");
        options.emplace_back("--start-host");
        return replay(lines, std::move(options));
    }

    TestSupport::Finished replayWith(const RunningHost& host, const Words& lines) const {
        return replay(lines, {"--speed", "max", "--socket", host.socketPath()});
    }

    void expectDifference(const TestSupport::Finished& end, const std::string& difference) const {
        EXPECT_EQ(end.output, (files / "scenario.jsonl") + ":" + difference);
        EXPECT_EQ(end.errors, "");
        EXPECT_EQ(end.status, 1);
    }

    static void expectPlayed(const TestSupport::Finished& end, const std::string& output) {
        EXPECT_EQ(end.output, output);
        EXPECT_EQ(end.errors, "");
        EXPECT_EQ(end.status, 0);
    }

    const TestSupport::TemporaryDirectory files;
};

/// The host of a replay is a program as it is shipped.
class SettingsCtlReplayAlone : public SettingsCtlReplay {
protected:
    void SetUp() override {
        if (TestSupport::sanitized) {
            GTEST_SKIP() << "the sandbox of the host refuses what the runtime of a sanitizer needs";
        }
    }
};

}  // namespace

TEST_F(SettingsCtlReplay, RefusesAMalformedFileWithItsLine) {
    const std::string wrongStep =
        R"(needs "time" and "at", and one of "sent", "received", "sentText", "receivedText", "closed", )"
        R"("closedByHost" and "did")";
    const std::vector<std::pair<Words, std::string>> wrong{
        {{}, "0: a scenario has a first line with its title, and steps"},
        {{title}, "1: a scenario has a first line with its title, and steps"},
        {{"scenario"}, "1: is not a JSON object"},
        {{R"({"scenario": 2, "title": ""})"}, "1: \"scenario\" must be 1"},
        {{R"({"scenario": 1})"}, "1: \"title\" must be a string"},
        {{R"({"scenario": 1, "title": "", "description": 1})"}, "1: \"description\" must be a string"},
        {{R"({"scenario": 1, "title": "", "wrold": {}})"}, "1: has an unknown member \"wrold\""},
        {{R"({"scenario": 1, "title": "", "world": 1})"}, "1: \"world\" must be an object"},
        {{title, "", "{\"a\":\"\xff\"}"}, "3: is not a JSON object"},
        {{title, hello, "[]"}, "3: is not a JSON object"},
        {{title, R"({"time": 0, "at": "socket-1"})"}, "2: " + wrongStep},
        {{title, R"({"time": 0, "at": "socket-1", "sent": {}, "received": {}})"}, "2: " + wrongStep},
        {{title, R"({"time": 0, "at": "socket-1", "time": 0})"}, "2: " + wrongStep},
        {{title, R"({"time": 0, "at": "socket-1", "sendt": {}})"}, "2: has an unknown member \"sendt\""},
        {{title, R"({"time": -1, "at": "socket-1", "sent": {}})"}, "2: \"time\" must be a number of milliseconds"},
        {{title, R"({"time": 0, "at": "socket-1", "sent": "hello"})"},
         R"(2: "sent" must be an object; for other text there is "sentText")"},
        {{title, R"({"time": 0, "at": "socket-1", "receivedText": {}})"}, "2: \"receivedText\" must be a string"},
        {{title, R"({"time": 0, "at": "socket", "sent": {}})"},
         R"(2: "at" must be "socket-N", "page-N", "device-N", "all" or "host")"},
        {{title, R"({"time": 0, "at": "page-01", "sent": {}})"},
         R"(2: "at" must be "socket-N", "page-N", "device-N", "all" or "host")"},
        {{title, R"({"time": 0, "at": "all", "sent": {}})"}, "2: \"all\" is for what is received"},
        {{title, R"({"time": 0, "at": "host", "sent": {}})"}, R"(2: "did" is for "host" alone, and "host" for "did")"},
        {{title, R"({"time": 0, "at": "host", "did": "rest"})"}, R"(2: "did" must be "kill", "stop" or "start")"},
        {{title, R"({"time": 0, "at": "host", "did": "start"})"}, "2: the host is already running"},
        {{title, R"({"time": 0, "at": "host", "did": "kill"})", hello}, "3: the host is not running at this step"},
        {{title, R"({"time": 0, "at": "socket-1", "closed": false})"}, "2: \"closed\" must be true"},
        {{title, hello, R"({"time": 0, "at": "socket-2", "closed": true})"}, "3: \"socket-2\" is not open here"},
        {{title, hello, R"({"time": 0, "at": "host", "did": "kill"})", R"({"time": 0, "at": "host", "did": "start"})",
          R"({"time": 0, "at": "socket-1", "closed": true})"},
         "5: \"socket-1\" is not open here"},
        {{title, setName("socket-1", "Den", 5), hello}, "3: \"time\" goes back"}};
    for (const auto& [lines, message] : wrong) {
        const auto end = replay(lines);
        EXPECT_EQ(end.errors, "settingsctl: " + (files / "scenario.jsonl") + ":" + message + "\n");
        EXPECT_EQ(end.output, "");
        EXPECT_EQ(end.status, 1);
    }
}

TEST_F(SettingsCtlReplay, NeedsAHostOfItsOwnForAWorldAndForStepsOfTheHost) {
    const std::string message =
        ": a scenario with a world or steps of the host needs a host of its own: --start-host\n";
    const std::string file = "settingsctl: " + (files / "scenario.jsonl");
    const auto world = replay({R"({"scenario": 1, "title": "", "world": {"world": 1}})", hello});
    EXPECT_EQ(world.errors, file + ":1" + message);
    EXPECT_EQ(world.status, 1);
    EXPECT_EQ(replay({title, hello, R"({"time": 0, "at": "host", "did": "kill"})"}).errors, file + ":3" + message);
    EXPECT_EQ(replay({title, hello}).status, 3) << "there is no host";
}

TEST_F(SettingsCtlReplay, ComparesWhatDependsOnTheRunByItsKind) {
    const RunningHost host;
    // The second time ids, times and sequence numbers are others.
    for (int run = 0; run < 2; ++run) {
        const Words lines{
            title, hello, greeting, R"({"time": 0, "at": "socket-2", "sent": {"type": 18, "messageId": "m1"}})",
            R"({"time": 0, "at": "socket-2", "received": {"messageId": "m1", "payload": {"isOrliaSelectedAsVA": true}, "type": 18}})",
            setName("socket-1", "Den"), named("all", "TV", "Den", 8), setName("socket-1", "TV"),
            named("all", "Den", "TV", 9),
            R"({"time": 0, "at": "socket-2", "sent": {"messageId": "h2", "hello": {"resume": {"run": "R1", "sequence": 8}}}})",
            named("socket-2", "Den", "TV", 9),
            R"({"time": 0, "at": "socket-2", "received": {"messageId": "h2", "hello": {"version": "1.1.0", "run": "R1", "sequence": 9, "missed": false, "reread": []}}})",
            R"({"time": 0, "at": "socket-2", "closed": true})",
            // Nobody else is told.
            setName("socket-1", "Den"), named("all", "TV", "Den", 10), setName("socket-1", "TV"),
            named("socket-1", "Den", "TV", 11)};
        expectPlayed(replayWith(host, lines), "10 frames as expected\n");
    }
}

TEST_F(SettingsCtlReplay, SendsFramesToTheLastCharacter) {
    const RunningHost host;
    const std::string text = R"({ "type":24,"timestamp":1700000000000,"x":0.10000000000000000000,"payload":)"
                             R"({"settingDBId":"captionsFontSize","to":"A\u0042","to":"C"} })";
    const std::string event =
        R"({"time": 0, "at": "socket-1", "received": {"type": 25, "messageId": "e", "timestamp": 1,)"
        R"("sequence": 1, "origin": "socket", "payload": {"settingDBId": "captionsFontSize",)"
        R"("from": "FONT_MEDIUM", "to": "AB"}}})";
    const std::string refusal = R"({"time": 0, "at": "socket-1", "received": {"error": {"code": "not-json",)"
                                R"("message": "the frame is not JSON"}}})";
    expectPlayed(
        replayWith(host,
                   {title, R"({"schema": {"sent": {}}, "time": 0, "at": "socket-1", "\u0073ent" : )" + text + " }",
                    event, R"({"time": 0, "at": "socket-1", "sentText": "[7"})", refusal}),
        "2 frames as expected\n");
}

TEST_F(SettingsCtlReplay, TellsTheFirstDifference) {
    const RunningHost host;
    const auto end = replayWith(
        host,
        {title,
         R"({"time": 0, "at": "socket-1", "sent": {"type": 7, "messageId": "m1", "payload": {"settings": ["deviceName", "timezone"]}}})",
         R"({"time": 0, "at": "socket-1", "received": {"type": 7, "messageId": "m1", "payload": {"settings": {"deviceName": "Den\u0085", "timezone": 1}}}})"});
    expectDifference(
        end,
        "3: socket-1 received a different frame, at /payload/settings/deviceName\n"
        R"(expected: {"type":7,"messageId":"m1","payload":{"settings":{"deviceName":"Den\u0085","timezone":1}}})"
        "\n"
        R"(got:      {"type":7,"messageId":"m1","payload":{"settings":{"deviceName":"TV","timezone":"America/Vancouver"}}})"
        "\n");
}

TEST_F(SettingsCtlReplay, TellsWhatWouldNotBeTheSameRun) {
    const RunningHost host;
    const auto again = [&](const std::string& run, const std::string& sequence) {
        return replayWith(
                   host,
                   {title, hello, greeting,
                    R"({"time": 0, "at": "socket-1", "sent": {"messageId": "h2", "hello": {}}})",
                    R"({"time": 0, "at": "socket-1", "received": {"messageId": "h2", "hello": {"version": "1.1.0", "run": ")" +
                        run + R"(", "sequence": )" + sequence + "}}}"})
            .output;
    };
    EXPECT_EQ(again("R1", "7"), "2 frames as expected\n");
    EXPECT_NE(again("R2", "7").find(":5: socket-1 received a different frame, at /hello/run\n"), std::string::npos);
    EXPECT_NE(again("R1", "8").find(":5: socket-1 received a different frame, at /hello/sequence\n"),
              std::string::npos);
    const Words lost{title, setNameAs("remote", "Den"), named("socket-1", "TV", "Den", 6), hello, greeting};
    EXPECT_NE(replayWith(host, lost).output.find(":5: socket-1 received a different frame, at /hello/sequence\n"),
              std::string::npos);
}

TEST_F(SettingsCtlReplay, TellsWhatDoesNotCome) {
    const RunningHost host;
    expectDifference(replay({title, R"({"time": 0, "at": "device-1", "received": {"ok": true}})"},
                            {"--timeout", "0.05", "--socket", host.socketPath()}),
                     "2: device-1 did not receive the expected frame\nexpected: {\"ok\": true}\n");
    expectDifference(
        replay({title, R"({"time": 0, "at": "device-1", "sent": {"command": "captions", "enabled": true}})",
                R"({"time": 0, "at": "device-1", "received": {"ok": true}})",
                R"({"time": 0, "at": "device-1", "closedByHost": true})"},
               {"--timeout", "0.05", "--socket", host.socketPath()}),
        "4: device-1: the host did not close the connection\n");
}

TEST_F(SettingsCtlReplay, TellsWhatTheScenarioDoesNotHave) {
    const RunningHost host;
    const std::string isSelected = R"({"time": 0, "at": "socket-1", "sent": {"type": 18, "messageId": "m1"}})";
    const std::string difference =
        ": socket-1 received an unexpected frame\n"
        R"(got:      {"type":18,"messageId":"m1","payload":{"isOrliaSelectedAsVA":true}})"
        "\n";
    expectDifference(replayWith(host, {title, isSelected}), "2" + difference);
    expectDifference(replayWith(host, {title, isSelected, R"({"time": 0, "at": "socket-1", "closed": true})"}),
                     "3" + difference);
}

TEST_F(SettingsCtlReplay, PlaysPagesAndEndsOfConnections) {
    const RunningHost host({"--listen", "127.0.0.1:0"});
    const std::string pageHello = R"({"time": 0, "at": "page-2", "sent": {"messageId": "h1", "hello": {}}})";
    const std::string reply =
        R"({"time": 0, "at": "page-2", "received": {"messageId": "h1", "hello": {"version": "1.1.0", "run": "R", "sequence": 0}}})";
    const std::string captions = R"({"time": 0, "at": "device-1", "sent": {"command": "captions", "enabled": )";
    const std::string done = R"({"time": 0, "at": "device-1", "received": {"ok": true}})";
    const std::string reread = R"({"time": 0, "at": "all", "received": {"notice": {"reread": ["captionsEnabled"]}}})";
    const Words begin{
        title,
        pageHello,
        reply,
        captions + "true}}",
        done,
        reread,
        R"({"time": 0, "at": "device-1", "sent": {"command": "page", "newKey": true}})",
        R"({"time": 0, "at": "device-1", "received": {"page": {"address": "http://127.0.0.1:1/?key=a"}}})"};
    Words all = begin;
    all.insert(all.end(),
               {R"({"time": 0, "at": "page-2", "closedByHost": true})", captions + "false}}", done, pageHello, reply});
    expectPlayed(replayWith(host, all), "6 frames as expected\n");
    // One that the host closed is told, too.
    Words wrong = begin;
    expectDifference(replayWith(host, wrong), "8: page-2: the host has closed the connection\n");
    wrong.push_back(pageHello);
    const RunningHost another({"--listen", "127.0.0.1:0"});
    expectDifference(replayWith(another, wrong), "9: page-2: the host has closed the connection\n");
}

TEST_F(SettingsCtlReplay, KeepsThePausesOrDividesThem) {
    const RunningHost host;
    const auto timeOf = [&](const Words& options, const std::string& time) {
        Words all{"--socket", host.socketPath()};
        all.insert(all.end(), options.begin(), options.end());
        const auto begin = std::chrono::steady_clock::now();
        const auto end = replay(
            {title, R"({"time": )" + time + R"(, "at": "device-1", "sent": {"command": "locale", "value": "de-DE"}})",
             R"({"time": )" + time + R"(, "at": "device-1", "received": {"ok": true}})"},
            all);
        EXPECT_EQ(end.status, 0) << end.output << end.errors;
        return std::chrono::steady_clock::now() - begin;
    };
    EXPECT_GE(timeOf({}, "80"), std::chrono::milliseconds(80));
    EXPECT_GE(timeOf({"--speed", "50"}, "4000"), std::chrono::milliseconds(80));
    timeOf({"--speed", "max"}, "86400000");
}

TEST_F(SettingsCtlReplay, PlaysWhatThePageCopies) {
    const RunningHost host({"--listen", "127.0.0.1:0"});
    const Words copied = TestSupport::linesOf(COPIED_SCENARIO);
    for (const auto& line : copied) {
        EXPECT_EQ(WireTests::Schemas::ofTheWire().faultOf("scenario", line), std::nullopt) << line;
    }
    expectPlayed(replayWith(host, copied), "9 frames as expected\n");
}

TEST_F(SettingsCtlReplayAlone, PlaysTheEndsAndStartsOfItsHost) {
    const auto resumed = [](const std::string& from, const std::string& to, int sequence = 0) {
        return Words{
            R"({"time": 0, "at": "socket-1", "sent": {"messageId": "h2", "hello": {"resume": {"run": ")" + from +
                R"(", "sequence": 0}}}})",
            R"({"time": 0, "at": "socket-1", "received": {"messageId": "h2", "hello": {"version": "1.1.0", "run": ")" +
                to + R"(", "sequence": )" + std::to_string(sequence) + R"(, "missed": true}}})"};
    };
    const auto append = [](Words& lines, const Words& more) { lines.insert(lines.end(), more.begin(), more.end()); };
    Words lines{
        R"({"scenario": 1, "title": "Ends", "world": {"world": 1, "settings": {"deviceName": "Attic"}, "faults": {"storage-slow": 1}}})",
        hello,
        greeting,
        setName("socket-1", "Den"),
        named("socket-1", "Attic", "Den", 8),
        R"({"time": 0, "at": "host", "did": "kill"})",
        R"({"time": 0, "at": "host", "did": "start"})",
        setNameAs("remote", "Hut"),
        named("socket-1", "Den", "Hut", 3)};
    append(lines, resumed("R1", "R2", 3));
    append(lines, {R"({"time": 0, "at": "device-2", "sent": {"command": "fault", "name": "restart", "enabled": true}})",
                   R"({"time": 0, "at": "device-2", "received": {"ok": true}})",
                   R"({"time": 0, "at": "device-2", "closedByHost": true})",
                   R"({"time": 0, "at": "socket-1", "closedByHost": true})"});
    append(lines, resumed("R2", "R3"));
    append(lines, {R"({"time": 0, "at": "host", "did": "stop"})", R"({"time": 0, "at": "host", "did": "start"})"});
    append(lines, resumed("R3", "R4"));
    append(
        lines,
        {R"({"time": 0, "at": "page-1", "sent": {"type": 7, "messageId": "p1", "payload": {"settings": ["deviceName"]}}})",
         R"({"time": 0, "at": "page-1", "received": {"type": 7, "messageId": "p1", "payload": {"settings": {"deviceName": "Hut"}}}})"});
    expectPlayed(replayAlone(lines), "8 frames as expected\n");
    EXPECT_TRUE(std::filesystem::is_empty(files / "temporary"));
}

TEST_F(SettingsCtlReplayAlone, WaitsForTheReplyToTheLastDeviceCommand) {
    const auto end =
        replayAlone({R"({"scenario": 1, "title": "Late", "world": {"world": 1, "faults": {"storage-slow": 200}}})",
                     R"({"time": 0, "at": "device-1", "sent": {"command": "timezone", "value": "Asia/Tokyo"}})"});
    expectDifference(end, "2: device-1 received an unexpected frame\ngot:      {\"ok\":true}\n");
}

TEST_F(SettingsCtlReplayAlone, PrintsADifferenceAsJson) {
    const auto end = replayAlone({title, setName("socket-1", "Den"), named("socket-1", "Attic", "Den", 1)},
                                 {"--json", "--speed", "max"});
    EXPECT_EQ(end.output.rfind(R"({"difference":{"expected":"{\"timestamp\":)", 0), 0U) << end.output;
    EXPECT_NE(end.output.find(R"(,"line":"3","message":"socket-1 received a different frame, at /client"}})"),
              std::string::npos)
        << end.output;
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(replayAlone({title, hello, greeting}, {"--json"}).output, "{\"replay\":{\"frames\":1}}\n");
}

TEST_F(SettingsCtlReplayAlone, TellsWhyItsHostDoesNotStart) {
    const auto end =
        replayAlone({R"({"scenario": 1, "title": "", "world": {"world": 1, "sdk": {"timezone": 1}}})", hello});
    EXPECT_EQ(end.errors.rfind("settingsctl: settings-host does not start: exit status 1: ", 0), 0U) << end.errors;
    EXPECT_NE(end.errors.find("/world.json: /sdk/timezone: must be a string\n"), std::string::npos) << end.errors;
    EXPECT_EQ(end.status, 1);
    EXPECT_TRUE(std::filesystem::is_empty(files / "temporary"));
}
