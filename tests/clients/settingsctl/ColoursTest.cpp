#include <gtest/gtest.h>

#include "FakeHost.h"
#include "Output.h"
#include "RunningHost.h"
#include "Terminal.h"

using namespace SettingsCtlTests;

namespace {

/// What `get deviceName` shows in a terminal.
std::string shownIn(const RunningHost& host, std::map<std::string, std::string> environment,
                    std::vector<std::string> arguments = {"get", "deviceName"}) {
    environment["XDG_RUNTIME_DIR"] = host.runtimeFolder();
    arguments.insert(arguments.begin(), SETTINGSCTL_PROGRAM);
    Terminal terminal(arguments, environment);
    return terminal.readUntil("\r\n");
}

}  // namespace

TEST(SettingsCtlColours, AreForATerminalUnlessRefused) {
    const RunningHost host;
    const std::string plain = "deviceName=TV";
    EXPECT_EQ(shownIn(host, {{"TERM", "xterm"}, {"NO_COLOR", ""}}), "\x1b[1mdeviceName\x1b[0m=TV");
    EXPECT_EQ(shownIn(host, {{"TERM", "xterm"}, {"NO_COLOR", "1"}}), plain);
    EXPECT_EQ(shownIn(host, {{"TERM", "dumb"}, {"NO_COLOR", ""}}), plain);
    EXPECT_EQ(shownIn(host, {{"TERM", "xterm"}, {"NO_COLOR", ""}}, {"get", "deviceName", "--json"}),
              R"({"deviceName":"TV"})");
    EXPECT_EQ(host.run({"get", "deviceName"}).output, plain + "\n") << "a pipe";
    EXPECT_EQ(shownIn(host, {{"TERM", "xterm"}, {"NO_COLOR", ""}}, {"set", "deviceName", "Den"}),
              "\x1b[1mdeviceName\x1b[0m: \x1b[31m'TV'\x1b[0m -> \x1b[32m'Den'\x1b[0m");
    const std::string change = shownIn(host, {{"TERM", "xterm"}, {"NO_COLOR", ""}}, {"history"});
    EXPECT_EQ(change.rfind("\x1b[2m2", 0), 0U) << change;
    EXPECT_NE(change.find("\x1b[2m (settingsctl, socket)\x1b[0m"), std::string::npos) << change;
    EXPECT_EQ(shownIn(host, {{"TERM", "xterm"}, {"NO_COLOR", ""}}, {"doctor"}).rfind("\x1b[32mok   \x1b[0m host: ", 0),
              0U);
}

TEST(SettingsCtlColours, LetNoValueControlTheTerminal) {
    SettingsCtl::OutputStyle style;
    style.colours = true;
    EXPECT_EQ(SettingsCtl::changeLine(style, "k\x1b[2J", "\x1b[0m", "v"),
              "\x1b[1mk\\x1b[2J\x1b[0m: \x1b[31m'\\x1b[0m'\x1b[0m -> \x1b[32m'v'\x1b[0m");
}
