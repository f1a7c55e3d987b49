#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "SettingsClient/SocketCandidates.h"
#include "Verbs.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace SettingsCtl {

/// What the command line asks for, filled while it is parsed.
struct Invocation {
    Context context;
    SettingsClient::SocketOptions sockets;
    std::string timeout = "5";
    std::vector<std::string> keys;
    std::string key;
    std::string value;
    std::string onOff;
    std::vector<std::string> keysAndValues;
    bool force = false;
    bool reconnect = true;
    std::optional<std::string> optionalKey;
    std::string file;
    bool newKey = false;
    bool dryRun = false;
    std::optional<std::string> optionalValue;
    bool withValues = false;
    std::string speed = "1";
    bool startsHost = false;
    std::function<ExitStatus()> run;
};

/// Adds a verb that runs `action`. `examples` are command lines without the program's name.
CLI::App* addVerb(CLI::App& app, Invocation& invocation, const std::string& name, const std::string& description,
                  const std::vector<std::string>& examples, std::function<ExitStatus()> action);

CLI::Option* addTexts(CLI::App& verb, const std::string& name, std::vector<std::string>& texts,
                      const std::string& description);
CLI::Option* addText(CLI::App& verb, const std::string& name, std::string& text, const std::string& description);
/// The option `--any-key`, for a verb that takes a key.
void addAnyKey(CLI::App& verb, Invocation& invocation);
/// The argument KEY, none or one, or any number of them, with `--any-key`.
void addKey(CLI::App& verb, Invocation& invocation);
void addOptionalKey(CLI::App& verb, Invocation& invocation);
void addKeys(CLI::App& verb, Invocation& invocation);
void addKeyAndValue(CLI::App& verb, Invocation& invocation);

void addSetVerb(CLI::App& app, Invocation& invocation);
void addSettingsVerbs(CLI::App& app, Invocation& invocation);
void addScenarioVerbs(CLI::App& app, Invocation& invocation);
void addDeviceVerbs(CLI::App& app, Invocation& invocation);

}  // namespace SettingsCtl
