#include "CommandLine.h"

#include <cstdlib>
#include <functional>

#include <CLI/CLI.hpp>
#include <unistd.h>

#include "Commands.h"

namespace SettingsCtl {

namespace {

/// Where the host listens when nobody says otherwise. A variable that is unset, empty or relative names no folder.
std::string defaultSocket(const std::string& name) {
    const char* const value = std::getenv("XDG_RUNTIME_DIR");
    const std::string folder = value != nullptr && value[0] == '/'
                                   ? std::string(value) + "/settings-host"
                                   : "/tmp/settings-host-" + std::to_string(::geteuid());
    return folder + "/" + name;
}

/// What the chosen verb does, filled while the command line is read.
struct Choice {
    Context context;
    double timeoutSeconds = 5;
    std::vector<std::string> keys;
    std::string key;
    std::string value;
    std::string onOff;
    std::function<ExitStatus()> run;
};

CLI::App* addVerb(CLI::App& app, Choice& choice, const std::string& name, const std::string& description,
                  const std::string& examples, std::function<ExitStatus()> action) {
    CLI::App* const verb = app.add_subcommand(name, description);
    verb->footer("Examples:\n" + examples);
    verb->callback([&choice, action = std::move(action)] { choice.run = action; });
    return verb;
}

void addOptions(CLI::App& app, Choice& choice) {
    Context& context = choice.context;
    context.socketPath = defaultSocket("settings.sock");
    context.deviceSocketPath = defaultSocket("device.sock");
    app.add_option("--socket", context.socketPath, "The host's socket")->type_name("PATH")->capture_default_str();
    app.add_option("--device-socket", context.deviceSocketPath, "The simulated device's socket")
        ->type_name("PATH")
        ->capture_default_str();
    app.add_flag("--json", context.style.json, "Print JSON");
    app.add_flag("--value", context.style.bareValues, "Print values without their keys");
    app.add_flag("--quiet", context.style.quiet, "Print no results, only tell by the exit status");
    app.add_option("--timeout", choice.timeoutSeconds, "How long to wait for the host")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.001, 86400.0))
        ->capture_default_str();
    app.set_version_flag("--version", "settingsctl " SETTINGS_HANDLER_VERSION);
}

void addSettingsVerbs(CLI::App& app, Choice& choice) {
    const Context& context = choice.context;
    addVerb(app, choice, "get", "Print settings as key=value lines, all of them when no KEY is given",
            "  settingsctl get\n  settingsctl get deviceName timezone\n  settingsctl get --value deviceName",
            [&] { return get(context, choice.keys); })
        ->add_option("KEY", choice.keys, "Setting keys");
    CLI::App* const setVerb =
        addVerb(app, choice, "set", "Give a setting a new value and say what came of it",
                "  settingsctl set deviceName \"Living room\"\n  settingsctl set orliaLocale '[\"fr-FR\",\"en-US\"]'\n"
                "  settingsctl set deviceName -- --odd--",
                [&] { return set(context, choice.key, choice.value); });
    setVerb->add_option("KEY", choice.key, "Setting key")->required();
    setVerb->add_option("VALUE", choice.value, "New value")->required();
    addVerb(app, choice, "watch", "Print every change until interrupted",
            "  settingsctl watch\n  settingsctl watch --json", [&] { return watch(context); });
    addVerb(app, choice, "list", "Print the keys that have a value, one a line",
            "  settingsctl list\n  settingsctl list --json", [&] { return list(context); });
    addVerb(app, choice, "selected", "Print whether this assistant is the selected one", "  settingsctl selected",
            [&] { return selected(context); });
    addVerb(app, choice, "open-settings", "Open the assistant's settings application on the device",
            "  settingsctl open-settings", [&] { return openSettings(context); });
    addVerb(app, choice, "logout", "Forget the user: clear the stored settings, switch the always-on modes off",
            "  settingsctl logout", [&] { return logOut(context); });
}

void addDeviceVerbs(CLI::App& app, Choice& choice) {
    const Context& context = choice.context;
    CLI::App* const device = app.add_subcommand("device", "Drive the simulated device");
    device->require_subcommand(1);
    device->fallthrough();
    addVerb(*device, choice, "show", "Print the state of the simulated device and voice SDK",
            "  settingsctl device show\n  settingsctl device show --json", [&] { return deviceShow(context); });
    for (const auto& [name, example] : {std::pair{"locale", "fr-FR"}, std::pair{"timezone", "Europe/Paris"}}) {
        addVerb(*device, choice, name, std::string("Change the device's ") + name,
                std::string("  settingsctl device ") + name + " " + example,
                [&choice, command = std::string(name)] { return deviceText(choice.context, command, choice.value); })
            ->add_option("VALUE", choice.value, std::string("For example ") + example)
            ->required();
    }
    addVerb(*device, choice, "locales", "Change the device's locales, the primary one first",
            "  settingsctl device locales fr-FR en-US", [&] { return deviceLocales(context, choice.keys); })
        ->add_option("LOCALE", choice.keys, "Locales")
        ->required();
    for (const auto& [name, command] : {std::pair{"handsfree", "handsfree"}, std::pair{"captions", "captions"},
                                        std::pair{"do-not-disturb", "doNotDisturb"}}) {
        addVerb(*device, choice, name, std::string("Switch ") + name + " on or off at the device",
                std::string("  settingsctl device ") + name + " on",
                [&choice, wireName = std::string(command)] {
                    return deviceSwitch(choice.context, wireName, choice.onOff == "on");
                })
            ->add_option("STATE", choice.onOff, "on or off")
            ->required()
            ->check(CLI::IsMember({"on", "off"}));
    }
    CLI::App* const setting = addVerb(*device, choice, "setting", "Have the device report a system setting",
                                      "  settingsctl device setting deviceName Den",
                                      [&] { return deviceSetting(context, choice.key, choice.value); });
    setting->add_option("KEY", choice.key, "Setting key")->required();
    setting->add_option("VALUE", choice.value, "New value")->required();
}

}  // namespace

int runCommandLine(int argumentCount, const char* const* arguments) {
    Choice choice;
    CLI::App app("Reads, writes and watches the settings of a running settings-host.");
    app.name("settingsctl");
    app.require_subcommand(1);
    app.fallthrough();
    app.footer(
        "Run 'settingsctl VERB --help' for a verb's options and examples.\n\n"
        "Exit status: 0 done, 1 refused or no such value, 2 wrong usage, 3 the host cannot be reached.");
    addOptions(app, choice);
    addSettingsVerbs(app, choice);
    addDeviceVerbs(app, choice);
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& end) {
        // Help and version end here too, with status 0.
        return app.exit(end) == 0 ? DONE : WRONG_USAGE;
    }
    try {
        choice.context.timeout = std::chrono::milliseconds(static_cast<long>(choice.timeoutSeconds * 1000));
        return choice.run();
    } catch (const Failure& failure) {
        std::fprintf(stderr, "settingsctl: %s\n", escapeControlCharacters(failure.what()).c_str());
        return failure.exitStatus();
    }
}

}  // namespace SettingsCtl
