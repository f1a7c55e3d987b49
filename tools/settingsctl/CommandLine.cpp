#include "CommandLine.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <sstream>

#include <CLI/CLI.hpp>

#include "Timeout.h"
#include "Verbs.h"
#include "Version.h"
#include "Wire.h"

namespace SettingsCtl {

namespace {

/// What the chosen verb does, filled while the command line is read.
struct Choice {
    Context context;
    SocketOptions sockets;
    std::string timeout = "5";
    std::vector<std::string> keys;
    std::string key;
    std::string value;
    std::string onOff;
    bool newKey = false;
    std::function<ExitStatus()> run;
};

constexpr const char* rootFooter = R"(Examples:
  settingsctl get
  settingsctl set deviceName "Living room"
  settingsctl watch --json
  settingsctl device locale fr-FR

'settingsctl VERB --help' shows a verb's arguments and examples.
Exit status: 0 done, 1 refused, no such value or the result cannot be written, 2 wrong usage, 3 the host cannot be
reached.)";

CLI::App* addVerb(CLI::App& app, Choice& choice, const std::string& name, const std::string& description,
                  const std::string& examples, std::function<ExitStatus()> action) {
    CLI::App* const verb = app.add_subcommand(name, description);
    verb->footer("Examples:\n" + examples +
                 "\n\n'settingsctl --help' lists the options of every verb, such as --json.");
    verb->callback([&choice, action = std::move(action)] { choice.run = action; });
    return verb;
}

CLI::Option* addTexts(CLI::App& verb, const std::string& name, std::vector<std::string>& texts,
                      const std::string& description) {
    return verb.add_option(name, texts, description)->type_name("");
}

CLI::Option* addText(CLI::App& verb, const std::string& name, std::string& text, const std::string& description) {
    return verb.add_option(name, text, description)->type_name("")->required();
}

std::string validTimeout(const std::string& seconds) {
    return timeoutFrom(seconds) ? "" : "'" + seconds + "' is no time from 0.001 to 86400 seconds";
}

const char* runtimeFolder() {
    return std::getenv("XDG_RUNTIME_DIR");
}

std::string defaultSockets() {
    const auto places = settingsPlaces({}, runtimeFolder());
    return places.front().path + ", or else " + places.back().path;
}

void addOptions(CLI::App& app, Choice& choice) {
    Context& context = choice.context;
    app.add_option("--socket", choice.sockets.settings, "The host's socket, by default " + defaultSockets())
        ->type_name("PATH");
    app.add_option("--device-socket", choice.sockets.device,
                   "The simulated device's socket, by default device.sock beside the host's")
        ->type_name("PATH");
    CLI::Option* const json = app.add_flag("--json", context.style.json, "Print results as JSON");
    app.add_flag("--value", context.style.bareValues, "Print values without their keys (get, device show)")
        ->excludes(json);
    app.add_flag("--quiet", context.style.quiet, "Print no results, only tell by the exit status");
    app.add_option("--timeout", choice.timeout, "How long to wait for the host's answer")
        ->type_name("SECONDS")
        ->check(validTimeout)
        ->capture_default_str();
    app.set_version_flag("--version", versionText());
}

void addSettingsVerbs(CLI::App& app, Choice& choice) {
    const Context& context = choice.context;
    CLI::App* const getVerb =
        addVerb(app, choice, "get", "Print settings as key=value lines, all of them when no KEY is given",
                "  settingsctl get\n  settingsctl get deviceName timezone\n  settingsctl get --value deviceName",
                [&] { return get(context, choice.keys); });
    addTexts(*getVerb, "KEY", choice.keys, "Setting keys");
    CLI::App* const setVerb =
        addVerb(app, choice, "set", "Give a setting a new value and say what came of it",
                "  settingsctl set deviceName \"Living room\"\n  settingsctl set orliaLocale '[\"fr-FR\",\"en-US\"]'\n"
                "  settingsctl set deviceName -- --odd--\n  settingsctl set --json timezone Europe/Paris",
                [&] { return set(context, choice.key, choice.value); });
    addText(*setVerb, "KEY", choice.key, "Setting key");
    addText(*setVerb, "VALUE", choice.value, "New value");
    addVerb(app, choice, "watch", "Print every change until interrupted",
            "  settingsctl watch\n  settingsctl watch --json", [&] { return watch(context); });
    addVerb(app, choice, "list", "Print the keys of all settings, one a line",
            "  settingsctl list\n  settingsctl list --json", [&] { return list(context); });
    addVerb(app, choice, "selected", "Print whether this assistant is the selected one", "  settingsctl selected",
            [&] { return selected(context); });
    CLI::App* const pageVerb =
        addVerb(app, choice, "page", "Print the address of the settings pages, with the key that opens them",
                "  settingsctl page\n  settingsctl page --new-key", [&] { return page(context, choice.newKey); });
    pageVerb->add_flag("--new-key", choice.newKey,
                       "Make a new key first: browsers that came with the old one have to come again");
    addVerb(app, choice, "open-settings", "Open the assistant's settings application on the device",
            "  settingsctl open-settings", [&] { return openSettings(context); });
    addVerb(app, choice, "logout", "Forget the user: clear the stored settings, switch the always-on modes off",
            "  settingsctl logout", [&] { return logOut(context); });
}

void addSwitches(CLI::App& device, Choice& choice) {
    for (const auto& [name, command] : {std::pair{"handsfree", "handsfree"}, std::pair{"captions", "captions"},
                                        std::pair{"do-not-disturb", "doNotDisturb"}}) {
        CLI::App* const verb =
            addVerb(device, choice, name, std::string("Switch ") + name + " on or off at the device",
                    std::string("  settingsctl device ") + name + " on", [&choice, wireName = std::string(command)] {
                        return deviceSwitch(choice.context, wireName, choice.onOff == "on");
                    });
        addText(*verb, "STATE", choice.onOff, "on or off")->check(CLI::IsMember({"on", "off"}));
    }
}

void addDeviceVerbs(CLI::App& app, Choice& choice) {
    const Context& context = choice.context;
    CLI::App* const device = app.add_subcommand("device", "Drive the simulated device");
    device->require_subcommand(0, 1);
    device->footer("Examples:\n  settingsctl device show\n  settingsctl device locale --help");
    addVerb(*device, choice, "show", "Print the state of the simulated device and voice SDK",
            "  settingsctl device show\n  settingsctl device show --json", [&] { return deviceShow(context); });
    for (const auto& [name, example] : {std::pair{"locale", "fr-FR"}, std::pair{"timezone", "Europe/Paris"}}) {
        CLI::App* const verb = addVerb(
            *device, choice, name, std::string("Change the device's ") + name,
            std::string("  settingsctl device ") + name + " " + example,
            [&choice, command = std::string(name)] { return deviceText(choice.context, command, choice.value); });
        addText(*verb, "VALUE", choice.value, std::string("For example ") + example);
    }
    CLI::App* const locales =
        addVerb(*device, choice, "locales", "Change the device's locales, the primary one first",
                "  settingsctl device locales fr-FR en-US", [&] { return deviceLocales(context, choice.keys); });
    addTexts(*locales, "LOCALE", choice.keys, "Locales, for example fr-FR")->required();
    addSwitches(*device, choice);
    CLI::App* const setting = addVerb(*device, choice, "setting", "Have the device report a system setting",
                                      "  settingsctl device setting deviceName Den",
                                      [&] { return deviceSetting(context, choice.key, choice.value); });
    addText(*setting, "KEY", choice.key, "Setting key");
    addText(*setting, "VALUE", choice.value, "New value");
}

bool isInBrackets(const std::string& text) {
    return text.size() > 1 && text.front() == '[' && text.back() == ']';
}

/// What the parser cannot check itself. Throws `Failure` (WRONG_USAGE).
void checkArguments(const CLI::App& app, const Choice& choice, const std::vector<std::string>& arguments) {
    if (!choice.run) {
        throw Failure(WRONG_USAGE, "a verb is missing, for example 'settingsctl get'; see settingsctl --help");
    }
    const auto deviceVerbIs = [&](const char* name) {
        return app.got_subcommand("device") && app.get_subcommand("device")->got_subcommand(name);
    };
    if (choice.context.style.bareValues && !app.got_subcommand("get") && !deviceVerbIs("show")) {
        throw Failure(WRONG_USAGE, "--value goes with get and device show only");
    }
    // The parser takes such a word apart where a verb takes several.
    if ((app.got_subcommand("get") || deviceVerbIs("locales")) &&
        std::any_of(arguments.begin(), arguments.end(), isInBrackets)) {
        throw Failure(WRONG_USAGE, "give the words one by one, without brackets");
    }
    if (!std::all_of(arguments.begin(), arguments.end(), isValidUtf8)) {
        throw Failure(WRONG_USAGE, "an argument is not valid UTF-8");
    }
}

std::string usageMessage(const CLI::App* /*app*/, const CLI::Error& error) {
    return "settingsctl: " + escaped(error.what()) + "; see settingsctl --help\n";
}

/// Prints what the parser ended with: the help, the version, or what is wrong.
ExitStatus endOfParsing(const CLI::App& app, const CLI::ParseError& end) {
    std::ostringstream output;
    std::ostringstream errors;
    const bool asked = app.exit(end, output, errors) == 0;
    std::fputs(errors.str().c_str(), stderr);
    print(output.str());
    return asked ? DONE : WRONG_USAGE;
}

ExitStatus parseAndRun(int argumentCount, const char* const* arguments) {
    Choice choice;
    CLI::App app("Reads, writes and watches the settings of a running settings-host.");
    app.name("settingsctl");
    // One verb at most, so that a setting key may be called like a verb; that there is one is checked below, after the
    // parser has complained about words that it does not know.
    app.require_subcommand(0, 1);
    app.fallthrough();
    app.footer(rootFooter);
    app.failure_message(usageMessage);
    addOptions(app, choice);
    addSettingsVerbs(app, choice);
    addDeviceVerbs(app, choice);
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& end) {
        return endOfParsing(app, end);
    }
    checkArguments(app, choice, {arguments + 1, arguments + argumentCount});
    choice.context.settingsSockets = settingsPlaces(choice.sockets, runtimeFolder());
    choice.context.deviceSockets = devicePlaces(choice.sockets, runtimeFolder());
    choice.context.timeout = timeoutFrom(choice.timeout).value();
    return choice.run();
}

}  // namespace

int runCommandLine(int argumentCount, const char* const* arguments) {
    try {
        return parseAndRun(argumentCount, arguments);
    } catch (const Failure& failure) {
        std::fprintf(stderr, "settingsctl: %s\n", escaped(failure.what()).c_str());
        return failure.exitStatus();
    }
}

}  // namespace SettingsCtl
