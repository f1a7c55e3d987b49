#pragma once

#include <chrono>
#include <memory>
#include <vector>

#include "fleet/Television.h"
#include "support/ChildProcess.h"

namespace Benchmarks {

/// Bridges of televisions at one broker.
class Bridges {
public:
    virtual ~Bridges() = default;
    /// Somebody changes `changedKey` at a television to the time now, in nanoseconds of the steady clock.
    virtual void change(std::size_t television) = 0;
    /// Of all processes that hold bridges.
    virtual double processorMicroseconds() const = 0;
    /// Their memory that is backed by no file, in bytes.
    virtual double memory() const = 0;
};

/// Simulated televisions in processes of their own.
class Fleet : public Bridges {
public:
    using Clock = std::chrono::steady_clock;

    /// Makes `count` televisions; they do not connect yet.
    Fleet(std::size_t count, const TelevisionOptions& options);
    ~Fleet() override;
    Fleet(const Fleet&) = delete;
    Fleet& operator=(const Fleet&) = delete;

    /// All connect at once.
    void connect();
    /// Waits until all have connected once more, and the broker has taken everything that they had to say.
    /// Returns: when that was. Errors: `std::runtime_error`.
    Clock::time_point waitUntilPublished();
    void change(std::size_t television) override;
    double processorMicroseconds() const override;
    double memory() const override;

private:
    struct Part {
        int commands = -1;
        std::size_t first = 0;
        std::unique_ptr<TestSupport::ChildProcess> process;
    };

    static void send(const Part& part, const std::string& line);

    std::vector<Part> parts;
};

/// Memory of a process that is backed by no file, in bytes.
double memoryOf(pid_t process);

}  // namespace Benchmarks
