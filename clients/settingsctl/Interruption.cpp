#include "Interruption.h"

#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

namespace SettingsCtl {

Interruption::Interruption() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    ::sigprocmask(SIG_BLOCK, &signals, nullptr);
    number = ::signalfd(-1, &signals, SFD_CLOEXEC);
}

Interruption::~Interruption() {
    ::close(number);
}

}  // namespace SettingsCtl
