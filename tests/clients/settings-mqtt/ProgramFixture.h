#pragma once

#include <csignal>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "../mqtt/RunningBroker.h"
#include "../settingsctl/RunningHost.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace SettingsMqttTest {

using MqttTest::Authority;
using MqttTest::publish;
using MqttTest::RunningBroker;
using MqttTest::Subscriber;

/// settings-mqtt with its own state folder.
class RunningBridge {
public:
    RunningBridge(const SettingsCtlTests::RunningHost& host, const std::string& broker, std::string id = "tv",
                  std::vector<std::string> options = {})
        : arguments{SETTINGS_MQTT_PROGRAM,
                    "--socket",
                    host.socketPath(),
                    "--broker",
                    broker,
                    "--id",
                    std::move(id),
                    "--state",
                    folder / "state",
                    "--longest-pause",
                    "0.1",
                    "--keepalive",
                    "5"} {
        arguments.insert(arguments.end(), options.begin(), options.end());
        start();
    }

    void start() { process.emplace(arguments); }
    void kill() {
        process->sendSignal(SIGKILL);
        process->wait();
    }
    void sendSignal(int number) const { process->sendSignal(number); }
    std::optional<int> stop() {
        process->sendSignal(SIGTERM);
        return wait();
    }
    std::optional<int> wait() { return process->wait(); }
    /// Waits for a line of its log. Returns: it.
    std::string awaitLog(const std::string& part) {
        std::string seen;
        while (const auto line = process->errors().readLine()) {
            if (line->find(part) != std::string::npos) {
                return *line;
            }
            seen += *line + "\n";
        }
        throw std::runtime_error("settings-mqtt does not log " + part + ":\n" + seen);
    }
    bool isRunning() const { return ::kill(process->pid(), 0) == 0; }

    std::string stateFolder() const { return folder / "state"; }

private:
    TestSupport::TemporaryDirectory folder;
    std::vector<std::string> arguments;
    std::optional<TestSupport::ChildProcess> process;
};

/// A host, a broker, and a subscriber of everything of the device "tv".
class MqttProgram : public testing::Test {
protected:
    void set(const std::string& key, const std::string& value) const {
        const auto finished = host.run({"set", key, value});
        ASSERT_EQ(finished.status, 0) << finished.errors;
    }
    std::string get(const std::string& key) const { return host.run({"get", "--value", key}).output; }
    /// What the broker keeps of a topic of the device: "TOPIC PAYLOAD" of the first that it has.
    std::string kept(const std::vector<std::string>& topics) const { return Subscriber(broker.port(), topics).next(); }

    static std::string outcome(const std::string& rest) { return "settings/tv/outcome {" + rest + "}"; }

    SettingsCtlTests::RunningHost host;
    RunningBroker broker;
};

}  // namespace SettingsMqttTest
