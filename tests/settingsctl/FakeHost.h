#pragma once

#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/LineReader.h"
#include "support/TemporaryDirectory.h"

namespace SettingsCtlTests {

/// The host's end of one connection, which a test reads and writes line by line.
class Peer {
public:
    explicit Peer(int acceptedSocket) : socket(acceptedSocket), reader(acceptedSocket) {}
    ~Peer() { close(); }

    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    /// The next line from the client; throws when none comes.
    std::string receiveLine();
    /// Does the client close without sending more?
    bool clientCloses() { return reader.readAll().empty() && reader.atEnd(); }
    /// False when the client has closed the connection.
    bool send(const std::string& bytes) const;
    bool sendLine(const std::string& line) const { return send(line + "\n"); }
    /// Returns when the client has taken everything that was sent.
    void waitUntilRead() const;
    void close();

private:
    int socket;
    TestSupport::LineReader reader;
};

/// A socket on which a test accepts clients.
class ListeningSocket {
public:
    explicit ListeningSocket(const std::string& path, int backlog = 8);
    ~ListeningSocket();

    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;

    /// The next client; throws when none connects.
    Peer accept() const;

private:
    int socket;
};

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

/// Frames as a host sends them.
std::string getReply(const TestSupport::ChildProcess& program, int number, const std::string& settings);
std::string event(const std::string& key, const std::string& from, const std::string& to,
                  const std::string& timestamp = "1700000000000");

/// Expects that a program ends like this.
void expectEnd(TestSupport::ChildProcess& program, int status, const std::string& output, const std::string& errors);

}  // namespace SettingsCtlTests
