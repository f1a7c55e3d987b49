#include "SettingsHandlerKit/Process.h"

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace SettingsHandlerKit {

void openClosedStandardStreams() {
    int opened = 0;
    do {
        opened = ::open("/dev/null", O_RDWR);
    } while (opened >= 0 && opened <= STDERR_FILENO);
    if (opened >= 0) {
        ::close(opened);
    }
}

void ignoreSignalsOfWrites() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace SettingsHandlerKit
