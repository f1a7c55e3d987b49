#pragma once

#include <optional>
#include <string>

#include "clients/support/Peer.h"

namespace SettingsDbusTests {

/// The host's end of the bridge's connection. The test decides what happens to changes; all else is answered, as by
/// a host whose settings have no values unless the test gives some.
class FakeHost {
public:
    explicit FakeHost(const std::string& path) : listener(path) {}

    /// Takes the connection and answers what the bridge asks at first.
    void accept() { greet(acceptHello()); }
    /// Takes the connection. Returns: its hello, for which the bridge waits.
    std::string acceptHello();
    /// Answers the hello, and the reads that follow: history and all values, again when the bus is there.
    void greet(const std::string& hello, int reads = 4);
    void answerReads(int count);
    /// The next frame that asks for a change.
    std::string nextChange();
    /// Answers the change `frame`: `members` are those of the payload. After the first one the bridge also wants to
    /// know whether the host answers at all.
    void answer(const std::string& frame, const std::string& members);
    void sendLine(const std::string& line) { peer->sendLine(line); }
    void close() { peer.reset(); }

    /// How many of the next reads are refused.
    int refusals = 0;
    /// Of the settings, as in a frame.
    std::string values = "{}";

private:
    /// Returns: whether it was no change.
    bool reply(const std::string& frame);

    ClientTests::ListeningSocket listener;
    std::optional<ClientTests::Peer> peer;
    bool hasAnswered = false;
};

}  // namespace SettingsDbusTests
