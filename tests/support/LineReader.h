#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace TestSupport {

/// How long a test waits for something that must happen.
constexpr std::chrono::seconds waitTimeout{20};

/// Reads lines from a descriptor that it does not own.
class LineReader {
public:
    explicit LineReader(int openDescriptor) : descriptor(openDescriptor) {}

    /// The next line without its line end; nothing when the other side closed, or no whole line arrived in time.
    std::optional<std::string> readLine(std::chrono::milliseconds deadline = waitTimeout);

    /// Everything up to the end of the stream, or what arrived in time.
    std::string readAll(std::chrono::milliseconds deadline = waitTimeout);

    /// Was the end of the stream seen?
    bool atEnd() const { return ended; }

private:
    bool fill(std::chrono::steady_clock::time_point until);

    int descriptor;
    std::string pending;
    bool ended = false;
};

}  // namespace TestSupport
