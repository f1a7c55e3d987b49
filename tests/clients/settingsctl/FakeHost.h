#pragma once

#include <string>
#include <vector>

#include "clients/support/Peer.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace SettingsCtlTests {

using ClientTests::ListeningSocket;
using ClientTests::Peer;

/// The two sockets of a host at their default paths. The test takes the role of the host.
class FakeHost {
public:
    FakeHost();

    /// Starts settingsctl with `arguments`.
    TestSupport::ChildProcess start(std::vector<std::string> arguments) const;
    Peer accept() const { return settings.accept(); }
    Peer acceptAtDevice() const { return device.accept(); }
    std::string settingsPath() const { return folder / "settings-host/settings.sock"; }
    std::string devicePath() const { return folder / "settings-host/device.sock"; }

private:
    TestSupport::TemporaryDirectory folder;
    ListeningSocket settings;
    ListeningSocket device;
};

/// Waits for the end of a program and collects its output. Status -1: it did not end.
TestSupport::Finished finish(TestSupport::ChildProcess& program);

/// The message id that the program gives to its request of that number, counted from 1.
std::string messageId(const TestSupport::ChildProcess& program, int number);

/// Frames as the program sends them.
std::string getRequest(const TestSupport::ChildProcess& program, int number, const std::string& keys);
std::string bareRequest(int type, const TestSupport::ChildProcess& program, int number);

/// `{"messageId":…,NAME:BODY}`: a frame without type of the program, or the host's reply to it.
std::string queryFrame(const TestSupport::ChildProcess& program, int number, const std::string& name,
                       const std::string& body = "{}");

/// Takes the program's hello, and replies as a host of wire 1.1.
void greet(Peer& client, const TestSupport::ChildProcess& program);

/// The program's SetSettings request of that number.
std::string setRequest(const TestSupport::ChildProcess& program, int number, const std::string& timestamp,
                       const std::string& key, const std::string& value);

/// The host's answer to the program's SetSettings request of that number.
std::string changeAnswer(const TestSupport::ChildProcess& program, int number, const std::string& payload);

/// Takes the request that follows the first change, and replies: a host that gives no answers has then served the
/// change.
void replyToFence(Peer& client);

/// Frames as a host sends them.
std::string getReply(const TestSupport::ChildProcess& program, int number, const std::string& settings);
std::string event(const std::string& key, const std::string& from, const std::string& to, int sequence = 1);
std::string refusal(const std::string& code, const std::string& message);

/// Expects that a program ends like this.
void expectEnd(TestSupport::ChildProcess& program, int status, const std::string& output, const std::string& errors);

}  // namespace SettingsCtlTests
