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

void addFaults(CLI::App& device, Invocation& invocation) {
    const Context& context = invocation.context;
    addVerb(device, invocation, "faults", "List the faults that can be simulated, and which are on",
            {"device faults", "device faults --json"}, [&] { return deviceFaults(context); });
    CLI::App* const fault =
        addVerb(device, invocation, "fault", "Switch a simulated fault on, or off with the VALUE off",
                {"device fault storage-slow 2000", "device fault storage-slow off", "device fault restart"},
                [&] { return deviceFault(context, invocation.value, invocation.optionalValue); });
    addText(*fault, "NAME", invocation.value, "Name of the fault");
    fault->add_option("VALUE", invocation.optionalValue, "Milliseconds, a setting key or off")->type_name("");
}

void addSave(CLI::App& device, Invocation& invocation) {
    CLI::App* const save = addVerb(
        device, invocation, "save", "Write the state of settings, device and faults to FILE, for settings-host --world",
        {"device save world.json", "device save --with-values -"},
        [&] { return deviceSave(invocation.context, invocation.file, invocation.withValues); });
    addText(*save, "FILE", invocation.file, "File, replaced if it exists; - for standard output");
    save->add_flag("--with-values", invocation.withValues, "Also save personal values, such as names");
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
    addFaults(*device, invocation);
    addSave(*device, invocation);
}

}  // namespace SettingsCtl
