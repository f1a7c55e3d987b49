#include "Options.h"

#include <array>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <utility>

#include <CLI/CLI.hpp>
#include <systemd/sd-id128.h>

#include "bridge/StatusFile.h"

namespace SettingsMqtt {

namespace {

using SettingsBridge::CommandLineEnd;

constexpr const char* description =
    "Connect the settings of a voice assistant to an MQTT broker: values, changes, commands for one device or many.";

constexpr const char* examples = R"(
Examples:
  settings-mqtt --broker broker.local --home-assistant
  settings-mqtt --broker broker.example.org:8883 --ca ca.pem --credentials credentials --group lobby
  settings-mqtt --config /etc/settings-mqtt/settings-mqtt.conf

Exit status: 0 stopped by SIGINT or SIGTERM, 1 start failed, 2 wrong usage.)";

/// Derived from the machine ID, which cannot be recovered from it. Errors: `std::runtime_error` on a machine without
/// one.
std::string idOfMachine() {
    constexpr sd_id128_t application{
        {0xad, 0x75, 0x4e, 0x8b, 0xfa, 0xb2, 0x45, 0x79, 0xae, 0xb2, 0xaf, 0xc6, 0x51, 0x26, 0xa6, 0x49}};
    sd_id128_t id{};
    if (sd_id128_get_machine_app_specific(application, &id) < 0) {
        throw std::runtime_error("no machine ID in /etc/machine-id: use --id");
    }
    std::array<char, SD_ID128_STRING_MAX> text{};
    return sd_id128_to_string(id, text.data());
}

/// Empty when the environment names no folder.
std::string defaultStateFolder() {
    if (std::string managed = SettingsBridge::managedFolder(std::getenv("STATE_DIRECTORY")); !managed.empty()) {
        return managed;
    }
    for (const auto& [variable, below] :
         {std::pair{"XDG_STATE_HOME", "/settings-mqtt"}, {"HOME", "/.local/state/settings-mqtt"}}) {
        const char* const value = std::getenv(variable);
        if (value != nullptr && value[0] == '/') {
            return std::string(value) + below;
        }
    }
    return "";
}

std::string refuseTopicName(const std::string& name) {
    return isTopicName(name) ? "" : "'" + name + "' is not a name of 1 to 64 letters, digits, '.', '_' and '-'";
}

std::string refuseId(const std::string& name) {
    return name == "all" || name == "group" ? "'" + name + "' names several devices" : refuseTopicName(name);
}

/// 0: it is none.
int portIn(const std::string& digits) {
    const bool isNumber =
        !digits.empty() && digits.size() <= 5 && digits.find_first_not_of("0123456789") == std::string::npos;
    const int port = isNumber ? std::stoi(digits) : 0;
    return port <= 65535 ? port : 0;
}

/// Of HOST, HOST:PORT, [ADDRESS] or [ADDRESS]:PORT. Errors: `CommandLineEnd`.
void splitAddress(Mqtt::ConnectionOptions& broker) {
    const std::string text = broker.address;
    const std::size_t bracket = text.rfind('[', 0) == 0 ? text.find(']') : std::string::npos;
    const std::size_t colon = text.find(':', bracket == std::string::npos ? 0 : bracket);
    const std::string host = text.substr(0, colon);
    const bool isBracketed = host.size() > 2 && host.size() == bracket + 1;
    broker.address = isBracketed ? host.substr(1, host.size() - 2) : host;
    broker.port = colon != std::string::npos ? portIn(text.substr(colon + 1)) : broker.ca.empty() ? 1883 : 8883;
    if (host.empty() || broker.port == 0 || (!isBracketed && host.find(':') != std::string::npos)) {
        throw CommandLineEnd(2, "--broker: '" + text + "' is not HOST or HOST:PORT");
    }
}

CLI::Option* addFile(CLI::App& app, const std::string& name, std::string& path, const std::string& help) {
    return app.add_option(name, path, help)->type_name("FILE");
}

void addBroker(CLI::App& app, Mqtt::ConnectionOptions& broker) {
    app.add_option("--broker", broker.address,
                   "Address of the broker; the port is 1883, or 8883 with --ca, unless given")
        ->type_name("HOST:PORT");
    app.add_option("--protocol", broker.protocol, "Version of MQTT")->check(CLI::IsMember({"5", "3.1.1"}));
    auto* const ca = addFile(app, "--ca", broker.ca, "Use TLS and trust the CA certificates in FILE (PEM)");
    auto* const certificate =
        addFile(app, "--certificate", broker.certificate, "Certificate (PEM) that identifies this device");
    auto* const key = addFile(app, "--key", broker.key, "Key (PEM) of --certificate");
    certificate->needs(key);
    key->needs(certificate, ca);
    addFile(app, "--credentials", broker.credentials,
            "File with the user name and the password, one per line; must not be readable by others");
    app.add_option("--keepalive", broker.keepalive, "Keepalive interval in seconds")->check(CLI::Range(5, 3600));
    app.add_option("--first-pause", broker.firstPause,
                   "Maximum delay in seconds before the first attempt to reconnect; raise it for many devices")
        ->check(CLI::Range(0.1, 86400.0));
    app.add_option("--longest-pause", broker.longestPause, "Maximum delay in seconds between attempts to reconnect")
        ->check(CLI::Range(0.1, 86400.0));
}

template <typename Names>
CLI::Option* addMany(CLI::App& app, const std::string& name, Names& values, const std::string& help) {
    return app.add_option(name, values, help)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void addDevice(CLI::App& app, BridgeOptions& bridge, std::string& stateFolder) {
    app.add_option("--id", bridge.id, "Name of this device in topics; default: derived from the machine ID")
        ->check(refuseId);
    addMany(app, "--group", bridge.groups, "Accept commands for this group; may be repeated")
        ->type_name("NAME")
        ->check(refuseTopicName);
    addMany(app, "--include", bridge.included,
            "Also publish a personal setting and accept commands for it; may be repeated")
        ->type_name("KEY");
    app.add_flag("--home-assistant", bridge.homeAssistant, "Publish discovery messages for Home Assistant");
    stateFolder = defaultStateFolder();
    app.add_option("--state", stateFolder, "Folder for the versions of applied desired values")->type_name("FOLDER");
}

}  // namespace

Options parseOptions(int argumentCount, const char* const* arguments) {
    Options options;
    CLI::App app(description, "settings-mqtt");
    app.footer(examples);
    SettingsBridge::addOptions(app, options.common);
    addBroker(app, options.broker);
    addDevice(app, options.bridge, options.stateFolder);
    app.set_config("--config", "", "Read options from FILE, lines such as group=[\"lobby\"]")->type_name("FILE");
    SettingsBridge::parse(app, argumentCount, arguments);
    splitAddress(options.broker);
    if (options.stateFolder.empty()) {
        throw CommandLineEnd(2, "--state is required: none of STATE_DIRECTORY, XDG_STATE_HOME and HOME names a folder");
    }
    std::string& id = options.bridge.id;
    id = id.empty() ? idOfMachine() : id;
    options.bridge.version = SETTINGS_HANDLER_VERSION;
    options.broker.clientId = "settings-" + id;
    options.broker.lastWill = Topics(id).availability(false);
    options.broker.seed = std::random_device()();
    return options;
}

}  // namespace SettingsMqtt
