#pragma once

#include <memory>
#include <string>

#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace Benchmarks {

/// A mosquitto of its own on a free port of 127.0.0.1: nothing on the disk, no limits of queues, no log.
class BrokerProcess {
public:
    /// Returns when it accepts connections. Errors: `std::runtime_error`.
    BrokerProcess();

    /// Ends it at once, as a power cut would, and starts it again on the same port, with nothing in it.
    void killAndRestart();
    int port() const { return number; }
    pid_t pid() const { return process->pid(); }

private:
    void start();

    const TestSupport::TemporaryDirectory folder;
    const int number;
    std::unique_ptr<TestSupport::ChildProcess> process;
};

}  // namespace Benchmarks
