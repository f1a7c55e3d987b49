#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace MqttTest {

/// A mosquitto of its own at a free port of 127.0.0.1. It keeps nothing over a restart.
class RunningBroker {
public:
    /// `configuration`: lines for the listener.
    explicit RunningBroker(const std::vector<std::string>& configuration = {"allow_anonymous true"});

    /// As a power cut.
    void kill();
    void start();
    void sendSignal(int signal) const { process->sendSignal(signal); }

    std::string port() const { return number; }
    std::string address() const { return "127.0.0.1:" + number; }
    /// What the broker logged so far.
    std::string log() const;

private:
    TestSupport::TemporaryDirectory folder;
    std::string number;
    std::optional<TestSupport::ChildProcess> process;
};

/// A subscriber; it is subscribed when the constructor returns.
class Subscriber {
public:
    Subscriber(const std::string& port, const std::vector<std::string>& topics,
               const std::vector<std::string>& options = {});

    /// The next message as "TOPIC PAYLOAD"; throws when none comes.
    std::string next();
    /// Skips messages until one begins with `start`. Returns: it.
    std::string await(const std::string& start);
    /// What comes until one begins with `start`, it included.
    std::vector<std::string> until(const std::string& start);

private:
    TestSupport::ChildProcess process;
};

/// Publishes one message at QoS 1. Errors: `std::runtime_error`.
void publish(const std::string& port, const std::string& topic, const std::string& payload,
             const std::vector<std::string>& options = {});

/// A certificate authority in a folder: "ca.pem", and NAME.pem and NAME.key for each `issue`.
class Authority {
public:
    Authority();
    /// For 127.0.0.1. `days` -1: out of date.
    void issue(const std::string& name, int days = 2) const;
    std::string operator/(const std::string& file) const { return folder / file; }

private:
    TestSupport::TemporaryDirectory folder;
};

}  // namespace MqttTest
