#include <fstream>

#include <gtest/gtest.h>

#include "FakeHost.h"
#include "Utils/Rapidjson.h"
#include "support/TemporaryDirectory.h"

using namespace SettingsCtlTests;

namespace {

using Words = std::vector<std::string>;

class SettingsCtlLoad : public testing::Test {
protected:
    /// Writes FILE. Returns: its name.
    std::string write(const std::string& text) const {
        std::string file = folder / "settings.json";
        std::ofstream(file) << text;
        return file;
    }

    TestSupport::ChildProcess start(const std::string& text, const Words& options = {}) const {
        Words arguments{"load", write(text)};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return host.start(arguments);
    }

    const TestSupport::TemporaryDirectory folder;
    const FakeHost host;
};

/// The requests of a batch.
struct Batch {
    /// "KEY=VALUE" each.
    Words pairs;
    Words messageIds;
};

Batch parse(const std::string& frame) {
    rapidjson::Document document;
    document.Parse(frame.c_str());
    Batch batch;
    for (const auto& request : document["batch"].GetArray()) {
        EXPECT_EQ(request["type"].GetInt(), 24);
        EXPECT_TRUE(request["answer"].GetBool());
        batch.pairs.push_back(std::string(request["payload"]["settingDBId"].GetString()) + "=" +
                              request["payload"]["to"].GetString());
        batch.messageIds.emplace_back(request["messageId"].GetString());
    }
    return batch;
}

/// Answers all requests: the value was the same already.
void replyUnchanged(const Peer& client, const Batch& batch) {
    for (std::size_t index = 0; index < batch.pairs.size(); ++index) {
        const std::string& pair = batch.pairs[index];
        const std::size_t equals = pair.find('=');
        client.sendLine(R"({"type":24,"messageId":")" + batch.messageIds[index] +
                        R"(","payload":{"outcome":"unchanged","settingDBId":")" + pair.substr(0, equals) +
                        R"(","value":")" + pair.substr(equals + 1) + "\"}}");
    }
}

constexpr const char* notTheDevice =
    "settingsctl: 'captionsEnabled' was refused: only the device can change it: use 'settingsctl device captions "
    "on|off'\n";
constexpr const char* notALocaleList =
    "settingsctl: 'orliaLocale' was refused: it must be a JSON array with at least one locale, for example "
    "[\"en-US\"]\n";

}  // namespace

TEST_F(SettingsCtlLoad, SendsOneBatchAndPrintsTheResultOfEachKey) {
    auto program = start(R"({"timezone":"Europe/Paris","deviceName":"Den","friendlyName":"TV"})");
    Peer client = host.accept();
    greet(client, program);
    EXPECT_EQ(parse(client.receiveLine()).pairs, (Words{"deviceName=Den", "friendlyName=TV", "timezone=Europe/Paris"}));
    client.sendLine(event("deviceName", "TV", "Den"));
    client.sendLine(changeAnswer(program, 1, R"({"outcome":"changed","settingDBId":"deviceName","value":"Den"})"));
    client.sendLine(changeAnswer(program, 2, R"({"outcome":"unchanged","settingDBId":"friendlyName","value":"TV"})"));
    client.sendLine(changeAnswer(program, 3,
                                 R"({"outcome":"refused","reason":"not-stored","message":"the disk is full",)"
                                 R"("settingDBId":"timezone","value":"UTC"})"));
    replyToFence(client);
    EXPECT_TRUE(client.clientCloses());
    expectEnd(program, 1, "deviceName: 'TV' -> 'Den'\nfriendlyName: unchanged\n",
              "settingsctl: 'timezone' was refused: the disk is full; see the host's log\n");
}

TEST_F(SettingsCtlLoad, ReportsWhatItCannotSendAndDoesTheRest) {
    auto program = start(R"({"DeviceName":"Den","handsFreeEnabled":true,"timezone":null,"deviceName":"Den"})");
    Peer client = host.accept();
    greet(client, program);
    const Batch batch = parse(client.receiveLine());
    EXPECT_EQ(batch.pairs, Words{"deviceName=Den"});
    replyUnchanged(client, batch);
    replyToFence(client);
    expectEnd(program, 1, "deviceName: unchanged\n",
              "settingsctl: unknown key 'DeviceName'; did you mean 'deviceName'? --any-key accepts any key\n"
              "settingsctl: 'handsFreeEnabled' was refused: its value must be a string\n"
              "settingsctl: 'timezone' was refused: its value must be a string\n");
}

TEST_F(SettingsCtlLoad, AcceptsAnyKeyWhenTold) {
    auto program = start(R"({"ownKey":"own value"})", {"--any-key"});
    Peer client = host.accept();
    greet(client, program);
    const Batch batch = parse(client.receiveLine());
    EXPECT_EQ(batch.pairs, Words{"ownKey=own value"});
    replyUnchanged(client, batch);
    replyToFence(client);
    expectEnd(program, 0, "ownKey: unchanged\n", "");
}

TEST_F(SettingsCtlLoad, WarnsOfAValueThatIsNotListed) {
    auto program = start(R"({"captionsFontSize":"FONT_HUGE"})");
    Peer client = host.accept();
    greet(client, program);
    replyUnchanged(client, parse(client.receiveLine()));
    replyToFence(client);
    const TestSupport::Finished end = finish(program);
    EXPECT_EQ(end.output, "captionsFontSize: unchanged\n");
    EXPECT_EQ(end.errors.rfind("settingsctl: 'FONT_HUGE' is not a listed value of 'captionsFontSize': FONT_SMALL, ", 0),
              0U)
        << end.errors;
    EXPECT_EQ(end.status, 0);
}

TEST_F(SettingsCtlLoad, SendsSeveralBatchesOfMoreThan64Settings) {
    std::string text = "{";
    std::string lines;
    for (int number = 100; number < 230; ++number) {
        const std::string key = "key" + std::to_string(number);
        text.append(text.size() > 1 ? "," : "").append("\"").append(key).append(R"(":"v")");
        lines.append(key).append(": unchanged\n");
    }
    auto program = start(text + "}", {"--any-key"});
    Peer client = host.accept();
    greet(client, program);
    for (const std::size_t size : {64U, 64U, 2U}) {
        const Batch batch = parse(client.receiveLine());
        EXPECT_EQ(batch.pairs.size(), size);
        replyUnchanged(client, batch);
        if (batch.pairs.front() == "key100=v") {
            replyToFence(client);
        }
    }
    expectEnd(program, 0, lines, "");
}

TEST_F(SettingsCtlLoad, SendsSeveralBatchesOfMoreThanAFrame) {
    const std::string large(40000, 'v');
    auto program = start(R"({"deviceName":")" + large + R"(","friendlyName":")" + large + "\"}");
    Peer client = host.accept();
    greet(client, program);
    for (const std::string key : {"deviceName", "friendlyName"}) {
        const std::string frame = client.receiveLine();
        EXPECT_LE(frame.size(), 65536U);
        const Batch batch = parse(frame);
        EXPECT_EQ(batch.pairs, Words{std::string(key).append("=").append(large)});
        replyUnchanged(client, batch);
        if (key == "deviceName") {
            replyToFence(client);
        }
    }
    expectEnd(program, 0, "deviceName: unchanged\nfriendlyName: unchanged\n", "");
}

TEST_F(SettingsCtlLoad, TakesTheLastOfMembersWithOneName) {
    auto program = start(R"({"deviceName":"Den","deviceName":"Attic"})");
    Peer client = host.accept();
    greet(client, program);
    EXPECT_EQ(parse(client.receiveLine()).pairs, Words{"deviceName=Attic"});
}

TEST_F(SettingsCtlLoad, PrintsWhatWouldChangeOnly) {
    auto program = start(R"({"deviceName":"Den","friendlyName":"TV","captionsEnabled":"true","orliaLocale":"en-US"})",
                         {"--dry-run"});
    Peer client = host.accept();
    greet(client, program);
    EXPECT_EQ(client.receiveLine(),
              getRequest(program, 1, R"(["captionsEnabled","deviceName","friendlyName","orliaLocale"])"));
    client.sendLine(getReply(program, 1, R"({"deviceName":"TV","friendlyName":"TV","captionsEnabled":"true"})"));
    EXPECT_TRUE(client.clientCloses()) << "nothing is set";
    expectEnd(program, 1, "deviceName: 'TV' -> 'Den'\n", std::string(notTheDevice) + notALocaleList);
}

TEST_F(SettingsCtlLoad, PrintsTheResultsAsJson) {
    for (const Words& options : {Words{"--json"}, Words{"--json", "--dry-run"}}) {
        const bool dryRun = options.size() > 1;
        auto program = start(R"({"deviceName":"Den"})", options);
        Peer client = host.accept();
        greet(client, program);
        client.receiveLine();
        client.sendLine(event("deviceName", "TV", "Den"));
        client.sendLine(
            dryRun ? getReply(program, 1, R"({"deviceName":"TV"})")
                   : changeAnswer(program, 1, R"({"outcome":"changed","settingDBId":"deviceName","value":"Den"})"));
        if (!dryRun) {
            replyToFence(client);
        }
        expectEnd(program, 0, "{\"from\":\"TV\",\"key\":\"deviceName\",\"result\":\"changed\",\"to\":\"Den\"}\n", "");
    }
}

TEST_F(SettingsCtlLoad, NeedsNoHostForAnEmptyObject) {
    const TestSupport::Finished end =
        TestSupport::run({SETTINGSCTL_PROGRAM, "--socket", "/nowhere/settings.sock", "load", write("{}")});
    EXPECT_EQ(end.output + end.errors, "");
    EXPECT_EQ(end.status, 0);
}

TEST_F(SettingsCtlLoad, ReportsAFileThatHoldsNoObject) {
    for (const std::string& text :
         {std::string(), std::string("[]"), std::string("deviceName=Den"), std::string(R"({"deviceName":"Den")"),
          std::string(R"({"deviceName":"Den"} x)"), std::string("{\"deviceName\":\"\xff\"}"), std::string("{}\0", 3),
          R"({"deviceName":)" + std::string(32, '[') + std::string(32, ']') + "}"}) {
        const std::string file = write(text);
        const TestSupport::Finished end = TestSupport::run({SETTINGSCTL_PROGRAM, "load", file});
        EXPECT_EQ(end.errors, "settingsctl: '" + file + "' is not a JSON object, or is nested too deeply\n");
        EXPECT_EQ(end.status, 1) << text;
    }
}

TEST_F(SettingsCtlLoad, ReportsAFileThatCannotBeRead) {
    const std::string folderName = folder.path().string();
    for (const auto& [file, reason] :
         {std::pair<std::string, std::string>{folder / "none", "No such file or directory"},
          {folderName, "Is a directory"}}) {
        const TestSupport::Finished end = TestSupport::run({SETTINGSCTL_PROGRAM, "load", file});
        EXPECT_EQ(end.errors,
                  std::string("settingsctl: cannot read '").append(file).append("': ").append(reason).append("\n"));
        EXPECT_EQ(end.status, 2);
    }
}

TEST_F(SettingsCtlLoad, ReadsStandardInput) {
    const std::string file = write(R"({"deviceName":"Den"})");
    const std::string command = std::string("exec ") + SETTINGSCTL_PROGRAM + R"( --socket "$0" load - < "$1")";
    TestSupport::ChildProcess program({"sh", "-c", command, host.settingsPath(), file});
    Peer client = host.accept();
    greet(client, program);
    EXPECT_EQ(parse(client.receiveLine()).pairs, Words{"deviceName=Den"});
}

TEST(SettingsCtlDump, PrintsTheSettingsThatAnyoneMaySet) {
    const std::string settings =
        R"({"timezone":"UTC","captionsEnabled":"true","deviceName":"\"\u001b\\","ownKey":"v","orliaLocale":"[\"en-US\"]"})";
    const std::string object =
        "{\n"
        "  \"deviceName\": \"\\\"\\u001B\\\\\",\n"
        "  \"orliaLocale\": \"[\\\"en-US\\\"]\",\n"
        "  \"timezone\": \"UTC\"\n"
        "}\n";
    const std::string line = R"({"deviceName":"\"\u001B\\","orliaLocale":"[\"en-US\"]","timezone":"UTC"})"
                             "\n";
    const std::pair<Words, std::string> runs[] = {
        {{"dump"}, object}, {{"dump", "--json"}, line}, {{"dump", "--quiet"}, ""}};
    for (const auto& [arguments, output] : runs) {
        const FakeHost host;
        auto program = host.start(arguments);
        Peer client = host.accept();
        greet(client, program);
        EXPECT_EQ(client.receiveLine(), getRequest(program, 1, "[]"));
        client.sendLine(getReply(program, 1, settings));
        EXPECT_TRUE(client.clientCloses());
        expectEnd(program, 0, output, "");
    }
}

TEST(SettingsCtlDump, PrintsAnEmptyObjectWithoutValues) {
    const FakeHost host;
    auto program = host.start({"dump"});
    Peer client = host.accept();
    greet(client, program);
    client.receiveLine();
    client.sendLine(getReply(program, 1, "{}"));
    expectEnd(program, 0, "{}\n", "");
}
