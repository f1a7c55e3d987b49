#include <CLI/CLI.hpp>

#include "DeviceSwitch.h"
#include "Syntax.h"
#include "Wire/Catalogue.h"

namespace SettingsCtl {

namespace {

void addDeviceText(CLI::App& device, Invocation& invocation, const std::string& name, const std::string& what,
                   const std::string& example) {
    CLI::App* const verb =
        addVerb(device, invocation, name, "Set the device's " + what, {"device " + name + " " + example},
                [&invocation, name] { return deviceText(invocation.context, name, invocation.value); });
    addText(*verb, "VALUE", invocation.value, "For example " + example);
}

void addSwitch(CLI::App& device, Invocation& invocation, const DeviceSwitch& deviceSwitch) {
    CLI::App* const verb =
        addVerb(device, invocation, deviceSwitch.verb, "Switch the device's " + deviceSwitch.verb + " on or off",
                {"device " + deviceSwitch.verb + " on"}, [&invocation, command = deviceSwitch.command] {
                    return switchDevice(invocation.context, command, invocation.onOff == "on");
                });
    addText(*verb, "STATE", invocation.onOff, "on or off")->check(CLI::IsMember({"on", "off"}));
}

}  // namespace

void addDeviceVerbs(CLI::App& app, Invocation& invocation) {
    const Context& context = invocation.context;
    CLI::App* const device = app.add_subcommand("device", "Control the simulated device");
    device->require_subcommand(0, 1);
    device->footer("Examples:\n  settingsctl device show\n  settingsctl device locale --help");
    addVerb(*device, invocation, "show", "Print the state of the simulated device and voice SDK",
            {"device show", "device show --json"}, [&] { return deviceShow(context); });
    addDeviceText(*device, invocation, "locale", "locale", "fr-FR");
    CLI::App* const locales =
        addVerb(*device, invocation, "locales", "Set the device's locales, the primary one first",
                {"device locales fr-FR en-US"}, [&] { return deviceLocales(context, invocation.keys); });
    addTexts(*locales, "LOCALE", invocation.keys, "Locales, for example fr-FR")->required();
    addDeviceText(*device, invocation, "timezone", "time zone", "Europe/Paris");
    addSwitch(*device, invocation, {"handsfree", "handsfree"});
    for (const auto& setting : Wire::catalogue()) {
        if (const auto deviceSwitch = deviceSwitchOf(setting)) {
            addSwitch(*device, invocation, *deviceSwitch);
        }
    }
    CLI::App* const setting = addVerb(*device, invocation, "setting", "Make the device report VALUE as its setting KEY",
                                      {"device setting deviceName Den"},
                                      [&] { return deviceSetting(context, invocation.key, invocation.value); });
    addKeyAndValue(*setting, invocation);
}

}  // namespace SettingsCtl
