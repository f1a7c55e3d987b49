#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace SettingsClient {

/// Opens standard streams that are closed. Otherwise a connection would get the number of one, and would receive what
/// is printed. O_PATH: reading and writing fail, so lost output is noticed, and "/" always exists.
inline void openClosedStandardStreams() {
    int opened = 0;
    do {
        opened = ::open("/", O_PATH);
    } while (opened >= 0 && opened <= STDERR_FILENO);
    if (opened >= 0) {
        ::close(opened);
    }
}

}  // namespace SettingsClient
