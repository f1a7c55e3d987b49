#pragma once

#include <cstddef>
#include <cstdint>

namespace SettingsSimulation {

/// Decides all that is open in a simulation: orders, sizes, what a power cut leaves. The same answers make the same
/// run, byte by byte.
class Choices {
public:
    Choices() = default;
    Choices(const Choices&) = delete;
    Choices& operator=(const Choices&) = delete;
    virtual ~Choices() = default;

    /// Returns: a number below `count`, which is at least 1. 0 is the plainest answer: the oldest first, whole pieces,
    /// nothing lost. `what` names the question, for people.
    virtual std::size_t pick(std::size_t count, const char* what) = 0;
};

/// Always the plainest answer.
class PlainChoices : public Choices {
public:
    std::size_t pick(std::size_t /*count*/, const char* /*what*/) override { return 0; }
};

/// Answers from a seed, the same ones with every compiler and library.
class SeededChoices : public Choices {
public:
    explicit SeededChoices(std::uint64_t seed) : state(seed) {}

    std::size_t pick(std::size_t count, const char* what) override;

private:
    std::uint64_t state;
};

}  // namespace SettingsSimulation
