#pragma once

#include <optional>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"
#include "wire/TracedHost.h"

namespace SettingsCtlTests {

/// A settings-host with its own database and sockets. All frames between it and its clients are checked against the
/// protocol.
class RunningHost {
public:
    /// Returns when the host is ready; throws when it fails to start.
    explicit RunningHost(std::vector<std::string> webOptions = {"--no-web"});

    /// Runs settingsctl to its end.
    TestSupport::Finished run(std::vector<std::string> arguments) const;
    TestSupport::ChildProcess start(std::vector<std::string> arguments) const;

    /// Ends the host at once, as a power cut would, and starts it again with the same database.
    void killAndRestart();
    /// Asks the host to stop. Returns: its exit status, nothing when it does not end.
    std::optional<int> stop();

    std::string runtimeFolder() const { return folder.path().string(); }
    std::string socketPath() const { return folder / "settings-host/settings.sock"; }
    std::string devicePath() const { return folder / "settings-host/device.sock"; }
    std::string storagePath() const { return folder / "settings.db"; }

private:
    void start();

    const std::vector<std::string> web;
    TestSupport::TemporaryDirectory folder;
    std::optional<TestSupport::ChildProcess> process;
    std::optional<WireTests::TracedHost> traffic;
};

}  // namespace SettingsCtlTests
