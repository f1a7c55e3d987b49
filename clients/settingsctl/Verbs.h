#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "Failure.h"
#include "Output.h"
#include "SettingsClient/Client.h"

namespace SettingsCtl {

/// What all verbs need.
struct Context {
    std::vector<SettingsClient::SocketCandidate> settingsSockets;
    std::vector<SettingsClient::SocketCandidate> deviceSockets;
    std::chrono::milliseconds timeout{};
    OutputStyle style;
    /// Accept keys that the catalogue does not have.
    bool anyKey = false;

    /// A client of the host, which connects with its first request.
    SettingsClient::Client client() const { return SettingsClient::Client({"settingsctl", settingsSockets, timeout}); }
};

/// One function per verb. Each prints its result and returns the exit status. Errors: `Failure`, and those of
/// `SettingsClient`.

ExitStatus get(const Context& context, const std::vector<std::string>& keys);
ExitStatus list(const Context& context);
ExitStatus selected(const Context& context);
/// Sets KEY VALUE pairs at once. `force`: also where the host has seen a newer time stamp.
ExitStatus set(const Context& context, const std::vector<std::string>& keysAndValues, bool force);
ExitStatus openSettings(const Context& context);
ExitStatus logOut(const Context& context);
/// Returns after SIGINT or SIGTERM (DONE). When the connection is lost, reconnects if `reconnect`.
/// Errors: `Failure` when standard output has no reader any more (REFUSED), and when the connection is lost
/// (UNREACHABLE).
ExitStatus watch(const Context& context, bool reconnect);

ExitStatus reset(const Context& context, const std::string& key);

/// Of all settings without a key.
ExitStatus history(const Context& context, const std::optional<std::string>& key);
ExitStatus explain(const Context& context, const std::optional<std::string>& key);
ExitStatus undo(const Context& context, const std::string& key);

/// Prints what `load` takes.
ExitStatus dump(const Context& context);
/// Sets what the file says, "-" for standard input; only prints what would change if `dryRun`.
ExitStatus load(const Context& context, const std::string& file, bool dryRun);

/// Writes what passes at all sockets of the host as a scenario, "-" for standard output. Returns after SIGINT or
/// SIGTERM. `withValues`: personal values, too. Errors: the file holds all that passed before.
ExitStatus record(const Context& context, const std::string& file, bool withValues);
/// Plays a scenario and compares what comes with it. `speed` divides its pauses; 0: there are none.
ExitStatus replay(const Context& context, const std::string& file, double speed, bool startsHost);

/// Prints the address of the settings pages, including its key, which is replaced first if `newKey`.
ExitStatus page(const Context& context, bool newKey);
ExitStatus backUp(const Context& context);
/// Returns: REFUSED when something is wrong, also without a host.
ExitStatus doctor(const Context& context);

/// Device commands.
ExitStatus deviceShow(const Context& context);
ExitStatus deviceText(const Context& context, const std::string& command, const std::string& value);
ExitStatus deviceLocales(const Context& context, const std::vector<std::string>& locales);
ExitStatus switchDevice(const Context& context, const std::string& command, bool enabled);
ExitStatus deviceSetting(const Context& context, const std::string& key, const std::string& value);
ExitStatus deviceFaults(const Context& context);
/// Switches a fault off with the value "off", otherwise on.
ExitStatus deviceFault(const Context& context, const std::string& name, const std::optional<std::string>& value);
/// Writes what `settings-host --world` takes; "-" for standard output.
ExitStatus deviceSave(const Context& context, const std::string& file, bool withValues);

}  // namespace SettingsCtl
