#pragma once

#include <string>
#include <vector>

#include "support/TemporaryDirectory.h"

namespace Benchmarks {

/// What starts our host with all its files in `folder`. Its log goes to a file, so that nobody has to read it
/// meanwhile.
inline std::vector<std::string> hostCommand(const TestSupport::TemporaryDirectory& folder, int logLevel) {
    return {"/bin/sh",
            "-c",
            R"(log=$1; shift; exec "$@" 2> "$log")",
            "sh",
            folder / "log",
            SETTINGS_HOST,
            "--storage",
            folder / "settings.db",
            "--socket",
            folder / "settings.sock",
            "--device-socket",
            folder / "device.sock",
            "--no-web",
            "--log-level",
            std::to_string(logLevel)};
}

}  // namespace Benchmarks
