#pragma once

#include <utility>

#include "Peer.h"
#include "Worker.h"
#include "support/ListeningSocket.h"

namespace Benchmarks {

/// A process that passes what it reads from one Unix socket on to another and keeps nothing: the least that a change
/// takes which goes from one process through a second one to a third.
class RelayPeer : public Peer {
public:
    RelayPeer();

    std::unique_ptr<Setter> connect() const override;
    void observe(const Report& report) const override;

private:
    using Pair = std::pair<TestSupport::PlainSocket, TestSupport::PlainSocket>;
    static Pair connectedPair();

    /// First the relay's end.
    Pair setting = connectedPair();
    Pair observing = connectedPair();
    Worker relay;
};

}  // namespace Benchmarks
