#pragma once

#include <chrono>
#include <memory>
#include <vector>

#include "support/ChildProcess.h"

namespace Benchmarks {

/// Simulated televisions in processes of their own.
class Fleet {
public:
    using Clock = std::chrono::steady_clock;

    /// Makes `count` televisions for the broker at `port`; they do not connect yet.
    Fleet(std::size_t count, int port, int keepalive = 60);
    ~Fleet();
    Fleet(const Fleet&) = delete;
    Fleet& operator=(const Fleet&) = delete;

    /// All connect at once.
    void connect();
    /// Waits until all have connected once more, and the broker has taken everything that they had to say.
    /// Returns: when that was. Errors: `std::runtime_error`.
    Clock::time_point waitUntilPublished();
    /// Somebody changes a setting at a television.
    void change(std::size_t television);
    /// Of all processes.
    double processorMicroseconds() const;
    /// Memory of their own, in bytes.
    double memory() const;

private:
    struct Part {
        int commands = -1;
        std::size_t first = 0;
        std::unique_ptr<TestSupport::ChildProcess> process;
    };

    static void send(const Part& part, const std::string& line);

    std::vector<Part> parts;
};

/// Processor time that a process has used until now.
double processorMicrosecondsOf(pid_t process);
/// Its memory that is backed by no file, in bytes.
double memoryOf(pid_t process);

}  // namespace Benchmarks
