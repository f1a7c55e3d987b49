#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "Failure.h"
#include "Output.h"
#include "SocketCandidates.h"

namespace SettingsCtl {

/// What every verb needs to know.
struct Context {
    std::vector<SocketPlace> settingsSockets;
    std::vector<SocketPlace> deviceSockets;
    std::chrono::milliseconds timeout{5000};
    OutputStyle style;
};

/// One function for each verb. Each prints its result and answers the exit status; failures are thrown as `Failure`.

ExitStatus get(const Context& context, const std::vector<std::string>& keys);
ExitStatus list(const Context& context);
ExitStatus selected(const Context& context);
ExitStatus set(const Context& context, const std::string& key, const std::string& value);
ExitStatus openSettings(const Context& context);
ExitStatus logOut(const Context& context);
/// Runs until SIGINT or SIGTERM (DONE), until nobody reads its output any more (REFUSED), or until the host goes
/// (UNREACHABLE).
ExitStatus watch(const Context& context);

/// Prints the address of the settings pages, with the key that opens them, which is made anew before if `newKey`.
ExitStatus page(const Context& context, bool newKey);

/// The simulated device.
ExitStatus deviceShow(const Context& context);
ExitStatus deviceText(const Context& context, const std::string& command, const std::string& value);
ExitStatus deviceLocales(const Context& context, const std::vector<std::string>& locales);
ExitStatus deviceSwitch(const Context& context, const std::string& command, bool enabled);
ExitStatus deviceSetting(const Context& context, const std::string& key, const std::string& value);

}  // namespace SettingsCtl
