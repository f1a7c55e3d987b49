#pragma once

#include <string>
#include <utility>

#include "support/LineReader.h"

namespace ClientTests {

/// The host's end of one connection, which a test reads and writes line by line.
class Peer {
public:
    explicit Peer(int acceptedSocket) : socket(acceptedSocket), reader(acceptedSocket) {}
    ~Peer() { close(); }

    Peer(Peer&& other) noexcept : socket(std::exchange(other.socket, -1)), reader(std::move(other.reader)) {}
    Peer& operator=(Peer&&) = delete;
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
    /// Is readable when a client has connected.
    int descriptor() const { return socket; }

private:
    int socket;
};

}  // namespace ClientTests
