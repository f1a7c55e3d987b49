#include <algorithm>
#include <cstdlib>
#include <optional>
#include <sstream>

#include <gtest/gtest.h>
#include <unistd.h>

#include "RunningHost.h"
#include "Terminal.h"

using namespace SettingsCtlTests;

namespace {

using Words = std::vector<std::string>;

/// Control and U.
constexpr const char* killLine = "\x15";

struct Shell {
    const char* name;
    std::vector<std::string> command;
    std::map<std::string, std::string> environment;

    friend void PrintTo(const Shell& shell, std::ostream* out) { *out << shell.name; }
};

/// An interactive shell in a terminal, with the completion loaded, beside a running host.
class SettingsCtlCompletion : public testing::TestWithParam<Shell> {
protected:
    void SetUp() override {
        const std::string program = GetParam().command.front();
        if (TestSupport::run({"sh", "-c", "command -v " + program}).status != 0) {
            GTEST_SKIP() << program << " is not installed";
        }
    }

    std::map<std::string, std::string> environment(const std::string& runtimeFolder) const {
        auto variables = GetParam().environment;
        variables["COMPLETIONS"] = COMPLETION_FOLDER;
        variables["XDG_RUNTIME_DIR"] = runtimeFolder;
        variables["PATH"] = PROGRAM_FOLDER ":" + std::string(std::getenv("PATH"));
        variables["TERM"] = "dumb";
        return variables;
    }

    /// What the shell offers when the tabulator key is pressed after `typed`.
    static Words offersAfter(const std::string& typed, Terminal& terminal) {
        terminal.type(typed + "\t");
        terminal.readUntil("<offers>\r\n");
        std::istringstream lines(terminal.readUntil("</offers>"));
        Words words;
        for (std::string line; std::getline(lines, line);) {
            words.push_back(line.substr(0, line.find('\r')));
        }
        terminal.type(killLine);
        return words;
    }
    Words offersAfter(const std::string& typed) {
        if (!withHost) {
            withHost.emplace(GetParam().command, environment(host.runtimeFolder()));
            withHost->readUntil("<prompt>");
        }
        return offersAfter(typed, *withHost);
    }
    static bool systemHasAHost() { return ::access("/run/settings-host", F_OK) == 0; }
    Words offersWithoutHostAfter(const std::string& typed) {
        if (!withoutHost) {
            withoutHost.emplace(GetParam().command, environment("/nowhere"));
            withoutHost->readUntil("<prompt>");
        }
        return offersAfter(typed, *withoutHost);
    }

    const RunningHost host;
    std::optional<Terminal> withHost;
    std::optional<Terminal> withoutHost;
};

const Words verbs{"get", "set", "watch", "list", "selected", "page", "open-settings", "logout", "device"};
const Words deviceVerbs{"show", "locale", "locales", "timezone", "handsfree", "setting", "captions", "do-not-disturb"};
const Words keys{"captionsEnabled",
                 "captionsFontSize",
                 "captionsStyles",
                 "companionDevice",
                 "deviceName",
                 "doNotDisturbEnabled",
                 "friendlyName",
                 "handsFreeAlwaysOnDiscovered",
                 "handsFreeAlwaysOnEnabled",
                 "handsFreeEnabled",
                 "orliaLocale",
                 "pttAlwaysOnDiscovered",
                 "pttAlwaysOnEnabled",
                 "timezone",
                 "tovanEntitlementStatus"};

}  // namespace

TEST_P(SettingsCtlCompletion, OffersVerbs) {
    EXPECT_EQ(offersAfter("settingsctl "), verbs);
    EXPECT_EQ(offersAfter("settingsctl --quiet s"), (Words{"set", "selected"}));
    EXPECT_EQ(offersAfter("settingsctl device "), deviceVerbs);
    EXPECT_EQ(offersAfter("settingsctl device loca"), (Words{"locale", "locales"}));
}

TEST_P(SettingsCtlCompletion, OffersTheKeysOfAllSettings) {
    EXPECT_EQ(offersAfter("settingsctl get "), keys);
    EXPECT_EQ(offersAfter("settingsctl get timezone captions"),
              (Words{"captionsEnabled", "captionsFontSize", "captionsStyles"}));
    EXPECT_EQ(offersAfter("settingsctl set --json "), keys);
    EXPECT_EQ(offersAfter("settingsctl device setting f"), Words{"friendlyName"});
}

TEST_P(SettingsCtlCompletion, AsksTheHostThatTheCommandLineNames) {
    const std::string socket = host.socketPath();
    const Words current{"America/Vancouver"};
    EXPECT_EQ(offersWithoutHostAfter("settingsctl --socket " + socket + " set timezone "), current);
    EXPECT_EQ(offersWithoutHostAfter("settingsctl --socket=" + socket + " set timezone "), current);
    EXPECT_EQ(offersAfter("settingsctl --socket /nowhere/settings.sock set timezone "), Words{});
}

TEST_P(SettingsCtlCompletion, OffersKnownValuesAndTheCurrentOne) {
    EXPECT_EQ(offersAfter("settingsctl set handsFreeEnabled "), (Words{"true", "false"}));
    Words sizes{"FONT_SMALL", "FONT_MEDIUM", "FONT_LARGE", "FONT_EXTRA_LARGE"};
    EXPECT_EQ(offersAfter("settingsctl set captionsFontSize "), sizes);
    ASSERT_EQ(host.run({"set", "captionsFontSize", "FONT_HUGE"}).status, 0);
    sizes.emplace_back("FONT_HUGE");
    EXPECT_EQ(offersAfter("settingsctl set captionsFontSize "), sizes);
    EXPECT_EQ(offersAfter("settingsctl set captionsStyles "),
              (Words{"STYLE_WHITE_ON_BLACK", "STYLE_BLACK_ON_WHITE", "STYLE_YELLOW_ON_BLACK", "STYLE_YELLOW_ON_BLUE"}));
    EXPECT_EQ(offersAfter("settingsctl device setting timezone "), Words{"America/Vancouver"});
    EXPECT_EQ(offersAfter("settingsctl device captions "), (Words{"on", "off"}));
    EXPECT_EQ(offersAfter("settingsctl device handsfree of"), Words{"off"});
    EXPECT_EQ(offersAfter("settingsctl device do-not-disturb "), (Words{"on", "off"}));
}

TEST_P(SettingsCtlCompletion, OffersTheOptionOfPage) {
    EXPECT_EQ(offersAfter("settingsctl page --n"), Words{"--new-key"});
    EXPECT_EQ(offersAfter("settingsctl list --n"), Words{});
}

TEST_P(SettingsCtlCompletion, OffersOptions) {
    const Words offers = offersAfter("settingsctl get --");
    for (const std::string option :
         {"--socket", "--device-socket", "--json", "--value", "--quiet", "--timeout", "--version", "--help"}) {
        const auto is = [&](const std::string& offer) { return offer == option || offer == option + "="; };
        EXPECT_EQ(std::count_if(offers.begin(), offers.end(), is), 1) << option;
    }
}

TEST_P(SettingsCtlCompletion, OffersFixedWordsAndKeysAndSaysNothingWhenTheHostIsDown) {
    if (systemHasAHost()) {
        GTEST_SKIP() << "the host of this machine may answer";
    }
    EXPECT_EQ(offersWithoutHostAfter("settingsctl sel"), Words{"selected"});
    EXPECT_EQ(offersWithoutHostAfter("settingsctl get "), keys);
    EXPECT_EQ(offersWithoutHostAfter("settingsctl set deviceName "), Words{});
    EXPECT_EQ(offersWithoutHostAfter("settingsctl set pttAlwaysOnEnabled "), (Words{"true", "false"}));
}

TEST_P(SettingsCtlCompletion, OffersAtMostOptionsWhereNothingIsExpected) {
    for (const std::string typed : {"watch ", "set deviceName Den ", "device show ", "device captions on "}) {
        for (const auto& offer : offersAfter("settingsctl " + typed)) {
            EXPECT_EQ(offer.substr(0, 2), "--") << typed;
        }
    }
    EXPECT_EQ(offersAfter("settingsctl --timeout "), Words{});
}

TEST_P(SettingsCtlCompletion, DoesNotOfferAValueThatCannotBeTyped) {
    ASSERT_EQ(host.run({"set", "deviceName", "a\nb"}).status, 0);
    EXPECT_EQ(offersAfter("settingsctl set deviceName "), Words{});
}

TEST_P(SettingsCtlCompletion, TypesAValueSoThatTheShellTakesItAsOneWord) {
    ASSERT_EQ(host.run({"set", "deviceName", "Bob's \"$HOME\" `x` & [1]"}).status, 0);
    for (const std::string begin : {"Bob", "\"Bob"}) {
        Terminal terminal(GetParam().command, environment(host.runtimeFolder()));
        terminal.readUntil("<prompt>");
        terminal.type("settingsctl set deviceName " + begin + "\t");
        terminal.readUntil("</offers>");
        terminal.type("\n");
        EXPECT_NO_THROW(terminal.readUntil("deviceName: unchanged"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    In, SettingsCtlCompletion,
    testing::Values(Shell{"Bash", {"bash", "--rcfile", COMPLETION_TEST_FOLDER "/offers.bash", "-i"}, {}},
                    Shell{"Zsh", {"zsh", "-d", "-i"}, {{"ZDOTDIR", COMPLETION_TEST_FOLDER}}}),
    [](const auto& suite) { return std::string(suite.param.name); });
