#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "SettingsHandlerKit/Descriptor.h"
#include "server/loop/EventLoop.h"

namespace SettingsHandlerKit {

/// Accepts the connections of a listening socket. One thread only. The event loop outlives it, and runs once more after
/// `close`.
///
/// At the limit of descriptors a connection can neither be accepted nor left waiting, or the loop would never sleep. So
/// one descriptor is kept in reserve, with which connections are refused. When that fails too, because the limit was
/// lowered or another program took the descriptor, connections wait for `pauseMilliseconds`.
class Acceptor {
public:
    static constexpr unsigned pauseMilliseconds = 100;

    /// Owns the connected, non-blocking descriptor from now on.
    using OnConnection = std::function<void(int descriptor)>;
    /// May send a last message over a connection that is closed when it returns.
    using OnRefused = std::function<void(int descriptor)>;

    /// `descriptor` listens and is non-blocking. A turn of the loop accepts one connection, and more while some wait
    /// and the turn is shorter than `turnLimit`.
    explicit Acceptor(Descriptor descriptor, std::chrono::microseconds turnLimit = std::chrono::microseconds(0));
    ~Acceptor();

    Acceptor(const Acceptor&) = delete;
    Acceptor& operator=(const Acceptor&) = delete;

    void start(EventLoop& loop, OnConnection connected, OnRefused refused);
    void close();
    /// The socket once more. It still listens when this one is closed. Takes the descriptor in reserve, so that it
    /// succeeds at the limit; this acceptor is to be closed soon.
    Descriptor duplicate();

private:
    class Watch;
    class Pause;

    void accept();
    void refuseNext();
    void pauseAccepting();

    Descriptor listening;
    std::chrono::microseconds longestTurn;
    Descriptor spare;
    OnConnection onConnection;
    OnRefused onRefused;
    std::shared_ptr<Watch> watch;
    std::shared_ptr<Pause> pause;
};

}  // namespace SettingsHandlerKit
