#include "RunningHost.h"

#include <csignal>
#include <stdexcept>
#include <utility>

#include "support/Sanitizers.h"

namespace SettingsCtlTests {

RunningHost::RunningHost(std::vector<std::string> webOptions) : web(std::move(webOptions)) {
    start();
}

void RunningHost::start() {
    std::vector<std::string> arguments{SETTINGS_HOST_PROGRAM, "--storage", storagePath(), "--log-level", "3"};
    arguments.insert(arguments.end(), web.begin(), web.end());
    if (TestSupport::sanitized) {
        // The runtime of such a build needs more of the system than the host.
        arguments.emplace_back("--no-sandbox");
    }
    process.emplace(arguments, std::map<std::string, std::string>{{"XDG_RUNTIME_DIR", runtimeFolder()}});
    const auto line = process->output().readLine();
    if (!line || line->rfind("ready:", 0) != 0) {
        throw std::runtime_error("settings-host is not ready: " + process->errors().readAll());
    }
    traffic.emplace(devicePath());
}

void RunningHost::killAndRestart() {
    process->sendSignal(SIGKILL);
    process->wait();
    traffic.reset();
    start();
}

std::optional<int> RunningHost::stop() {
    process->sendSignal(SIGTERM);
    return process->wait();
}

TestSupport::Finished RunningHost::run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), SETTINGSCTL_PROGRAM);
    return TestSupport::run(arguments, {{"XDG_RUNTIME_DIR", runtimeFolder()}});
}

TestSupport::ChildProcess RunningHost::start(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), SETTINGSCTL_PROGRAM);
    return TestSupport::ChildProcess(arguments, {{"XDG_RUNTIME_DIR", runtimeFolder()}});
}

}  // namespace SettingsCtlTests
