#pragma once

#include "CallQueue.h"
#include "Callers.h"
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

    Settings& settings;
    Callers callers;
};

}  // namespace SettingsDbus
