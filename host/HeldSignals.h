#pragma once

#include <csignal>

namespace SettingsHost {

/// The signals that stop the host wait while it exists, and come when it is gone. For the thread that made it.
class HeldSignals {
public:
    HeldSignals() {
        sigset_t held;
        ::sigemptyset(&held);
        for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
            ::sigaddset(&held, number);
        }
        ::pthread_sigmask(SIG_BLOCK, &held, &before);
    }
    ~HeldSignals() { ::pthread_sigmask(SIG_SETMASK, &before, nullptr); }

    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

private:
    sigset_t before{};
};

}  // namespace SettingsHost
