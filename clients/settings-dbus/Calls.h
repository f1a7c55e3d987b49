#pragma once

#include <map>
#include <string>

#include "CallQueue.h"
#include "Settings.h"

namespace SettingsDbus {

/// Carries calls out, on behalf of their callers, and answers them.
class Calls {
public:
    explicit Calls(Settings& hostSettings) : settings(hostSettings) {}

    void carryOut(const Call& call);
    /// The bus is another one from now on.
    void forgetCallers() { callers.clear(); }

private:
    Message replyTo(const Call& call);
    const std::string& callerOf(const Call& call);

    Settings& settings;
    /// The names under which the host knows callers, by unique name.
    std::map<std::string, std::string> callers;
};

}  // namespace SettingsDbus
