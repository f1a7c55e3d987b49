#include <fstream>

#include <gtest/gtest.h>

#include "FakeHost.h"
#include "support/Files.h"
#include "support/TemporaryDirectory.h"

using namespace SettingsCtlTests;

namespace {

/// A verb's arguments after "device", and the frame that it sends.
struct Command {
    const char* name;
    std::vector<std::string> arguments;
    std::string frame;

    friend void PrintTo(const Command& command, std::ostream* out) { *out << command.frame; }
};

class SettingsCtlDevice : public testing::TestWithParam<Command> {
protected:
    static std::vector<std::string> arguments() {
        std::vector<std::string> all = GetParam().arguments;
        all.insert(all.begin(), "device");
        return all;
    }
};

void replyTo(const FakeHost& host, const std::string& request, const std::string& frame) {
    Peer client = host.acceptAtDevice();
    EXPECT_EQ(client.receiveLine(), request);
    client.sendLine(frame);
    EXPECT_TRUE(client.clientCloses());
}

constexpr const char* state =
    R"({"device":{"timezone":"Europe/Paris","locales":"[\"fr-FR\"]","lastLaunchedApp":"a\u001b"}})";

}  // namespace

TEST_P(SettingsCtlDevice, SucceedsWhenTheDeviceConfirms) {
    const FakeHost host;
    auto program = host.start(arguments());
    replyTo(host, GetParam().frame, R"({"ok":true})");
    expectEnd(program, 0, "", "");
}

TEST_P(SettingsCtlDevice, PrintsTheConfirmationAsJson) {
    const FakeHost host;
    auto all = arguments();
    all.insert(all.begin(), "--json");
    auto program = host.start(std::move(all));
    replyTo(host, GetParam().frame, R"({"ok":true})");
    expectEnd(program, 0, "{\"ok\":true}\n", "");
}

TEST_P(SettingsCtlDevice, ReportsARefusal) {
    const FakeHost host;
    auto program = host.start(arguments());
    replyTo(host, GetParam().frame, R"({"error":{"code":"not-written","message":"the device could not save it"}})");
    expectEnd(program, 1, "",
              "settingsctl: the host refused the request: the device could not save it (not-written)\n");
}

INSTANTIATE_TEST_SUITE_P(
    Verb, SettingsCtlDevice,
    testing::Values(
        Command{"Locale", {"locale", "fr-FR"}, R"({"command":"locale","value":"fr-FR"})"},
        Command{"Locales", {"locales", "fr-FR", "en-US"}, R"({"command":"locales","values":["fr-FR","en-US"]})"},
        Command{"OneOfLocales", {"locales", "fr-FR"}, R"({"command":"locales","values":["fr-FR"]})"},
        Command{"Timezone", {"timezone", "Europe/Paris"}, R"({"command":"timezone","value":"Europe/Paris"})"},
        Command{"HandsfreeOn", {"handsfree", "on"}, R"({"command":"handsfree","enabled":true})"},
        Command{"HandsfreeOff", {"handsfree", "off"}, R"({"command":"handsfree","enabled":false})"},
        Command{"CaptionsOn", {"captions", "on"}, R"({"command":"captions","enabled":true})"},
        Command{"DoNotDisturbOff", {"do-not-disturb", "off"}, R"({"command":"doNotDisturb","enabled":false})"},
        Command{"Setting",
                {"setting", "--any-key", "k", "[\"a\",\"b\"]"},
                R"({"command":"setting","key":"k","value":"[\"a\",\"b\"]"})"},
        Command{"Fault", {"fault", "storage-full"}, R"({"command":"fault","name":"storage-full","enabled":true})"},
        Command{"FaultOff",
                {"fault", "storage-full", "off"},
                R"({"command":"fault","name":"storage-full","enabled":false})"},
        Command{"FaultWithTime",
                {"fault", "clock-jump", "--", "-5"},
                R"({"command":"fault","name":"clock-jump","enabled":true,"value":-5})"},
        Command{"FaultWithSetting",
                {"fault", "sdk-refuses", "timezone"},
                R"({"command":"fault","name":"sdk-refuses","enabled":true,"value":"timezone"})"},
        Command{"EmptySetting", {"setting", "--any-key", "k", ""}, R"({"command":"setting","key":"k","value":""})"}),
    [](const auto& suite) { return std::string(suite.param.name); });

TEST(SettingsCtlDeviceVerbs, FailWithoutTheDevicesConfirmation) {
    for (const std::string frame : {"{}", R"({"ok":false})", R"({"ok":"true"})", R"({"device":{}})"}) {
        const FakeHost host;
        auto program = host.start({"device", "captions", "on"});
        replyTo(host, R"({"command":"captions","enabled":true})", frame);
        expectEnd(program, 3, "", "settingsctl: unexpected response: not a device socket\n");
    }
}

TEST(SettingsCtlDeviceSetting, PrintsUnchangedForTheSameValue) {
    const std::string request = R"({"command":"setting","key":"k\u001B","value":"v"})";
    const std::string reply = R"({"ok":true,"changed":false})";
    const std::vector<std::pair<std::vector<std::string>, std::string>> runs{
        {{"device", "setting", "--any-key", "k\x1b", "v"}, "k\\x1b: unchanged\n"},
        {{"--json", "device", "setting", "--any-key", "k\x1b", "v"}, reply + "\n"},
        {{"--quiet", "device", "setting", "--any-key", "k\x1b", "v"}, ""}};
    for (const auto& [arguments, output] : runs) {
        const FakeHost host;
        auto program = host.start(arguments);
        replyTo(host, request, reply);
        expectEnd(program, 0, output, "");
    }
}

TEST(SettingsCtlDeviceShow, PrintsTheStateLikeGet) {
    const FakeHost host;
    auto program = host.start({"device", "show"});
    replyTo(host, R"({"command":"show"})", state);
    expectEnd(program, 0, "lastLaunchedApp=a\\x1b\nlocales=[\"fr-FR\"]\ntimezone=Europe/Paris\n", "");
}

TEST(SettingsCtlDeviceShow, PrintsBareValues) {
    const FakeHost host;
    auto program = host.start({"device", "show", "--value"});
    replyTo(host, R"({"command":"show"})", state);
    expectEnd(program, 0, "a\\x1b\n[\"fr-FR\"]\nEurope/Paris\n", "");
}

TEST(SettingsCtlDeviceShow, PrintsOneJsonObject) {
    const FakeHost host;
    auto program = host.start({"--json", "device", "show"});
    replyTo(host, R"({"command":"show"})", state);
    expectEnd(program, 0,
              R"({"lastLaunchedApp":"a\u001B","locales":"[\"fr-FR\"]","timezone":"Europe/Paris"})"
              "\n",
              "");
}

TEST(SettingsCtlDeviceShow, ReportsAMalformedReply) {
    for (const std::string frame : {"{}", R"({"ok":true})", R"({"device":{"timezone":1}})"}) {
        const FakeHost host;
        auto program = host.start({"device", "show"});
        replyTo(host, R"({"command":"show"})", frame);
        expectEnd(program, 3, "", "settingsctl: unexpected response: not a settings-host (malformed frame)\n");
    }
}

TEST(SettingsCtlDeviceFault, PrintsUnchangedForOneThatWasSo) {
    const FakeHost host;
    auto program = host.start({"device", "fault", "storage-full", "off"});
    replyTo(host, R"({"command":"fault","name":"storage-full","enabled":false})", R"({"ok":true,"changed":false})");
    expectEnd(program, 0, "storage-full: unchanged\n", "");
}

TEST(SettingsCtlDeviceFaults, PrintsALineForEach) {
    const std::string reply =
        R"({"faults":[{"name":"a\u001b","on":true,"kind":"switch","description":"One."},)"
        R"({"name":"slow","on":true,"value":20,"kind":"milliseconds","description":"Two."},)"
        R"({"name":"refuses","on":true,"value":"timezone","kind":"setting","description":"Three."},)"
        R"({"name":"off","on":false,"kind":"switch","description":"Four."},)"
        R"({"name":"now","on":false,"kind":"action","once":true,"description":"Five."}]})";
    const std::vector<std::pair<std::vector<std::string>, std::string>> runs{
        {{"device", "faults"},
         "a\\x1b            on           One.\n"
         "slow             20           Two.\n"
         "refuses          timezone     Three.\n"
         "off              off          Four.\n"
         "now              once         Five.\n"},
        {{"device", "faults", "--json"}, reply + "\n"},
        {{"device", "faults", "--quiet"}, ""}};
    for (const auto& [arguments, output] : runs) {
        const FakeHost host;
        auto program = host.start(arguments);
        replyTo(host, R"({"command":"faults"})", reply);
        expectEnd(program, 0, output, "");
    }
}

TEST(SettingsCtlDeviceFaults, ReportsAMalformedReply) {
    const FakeHost host;
    auto program = host.start({"device", "faults"});
    replyTo(host, R"({"command":"faults"})", R"({"ok":true})");
    expectEnd(program, 3, "", "settingsctl: unexpected response: not a settings-host (malformed frame)\n");
}

namespace {

const std::string saved = R"({"world":{"world":1,"settings":{"a\"":"\u00e9\n"},"sdk":{},"faults":{"b":5,"c":true}},)";
const std::string savedText = R"({
    "world": 1,
    "settings": {
        "a\"": "é\n"
    },
    "sdk": {},
    "faults": {
        "b": 5,
        "c": true
    }
})"
                              "\n";

}  // namespace

TEST(SettingsCtlDeviceSave, WritesAMemberALine) {
    const TestSupport::TemporaryDirectory folder;
    const std::string file = folder / "world.json";
    std::ofstream(file) << "something longer than the world, which is replaced: " << std::string(1000, 'x');
    const FakeHost host;
    auto program = host.start({"device", "save", "--with-values", file});
    replyTo(host, R"({"command":"save","withValues":true})", saved + R"("leftOut":[]})");
    expectEnd(program, 0, "", "");
    EXPECT_EQ(TestSupport::contentOf(file), savedText);
}

TEST(SettingsCtlDeviceSave, SaysWhatIsLeftOut) {
    const FakeHost host;
    auto program = host.start({"device", "save", "-"});
    replyTo(host, R"({"command":"save","withValues":false})", saved + R"("leftOut":["deviceName","friendlyName"]})");
    expectEnd(program, 0, savedText,
              "settingsctl: omitted personal values: deviceName, friendlyName; use --with-values to include them\n");
}

TEST(SettingsCtlDeviceSave, MakesAFileForTheUserAlone) {
    const TestSupport::TemporaryDirectory folder;
    const FakeHost host;
    auto program = host.start({"device", "save", folder / "world.json"});
    replyTo(host, R"({"command":"save","withValues":false})", saved + R"("leftOut":[]})");
    expectEnd(program, 0, "", "");
    EXPECT_EQ(TestSupport::modeOf(folder / "world.json"), 0600U);
}

TEST(SettingsCtlDeviceSave, ReportsAFileThatCannotBeWritten) {
    for (const auto& [file, reason] :
         {std::pair{"/nowhere/w.json", "No such file or directory"}, {"/dev/full", "No space left on device"}}) {
        const FakeHost host;
        auto program = host.start({"device", "save", file});
        replyTo(host, R"({"command":"save","withValues":false})", saved + R"("leftOut":[]})");
        expectEnd(program, 1, "", "settingsctl: cannot write '" + std::string(file) + "': " + reason + "\n");
    }
}
