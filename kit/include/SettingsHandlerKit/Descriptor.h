#pragma once

#include <utility>

#include <unistd.h>

namespace SettingsHandlerKit {

/// Owns a file descriptor and closes it; -1 means none.
class Descriptor {
public:
    Descriptor() = default;
    /// Owns `open` from now on.
    explicit Descriptor(int open) : number(open) {}
    ~Descriptor() {
        if (number >= 0) {
            ::close(number);
        }
    }

    /// Takes the descriptor over.
    Descriptor(Descriptor&& other) noexcept : number(other.release()) {}
    /// Takes the descriptor over; `other` closes the former one.
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number, other.number);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    /// The number; -1 for none.
    int get() const { return number; }
    /// The caller owns the descriptor from now on.
    int release() { return std::exchange(number, -1); }

private:
    int number = -1;
};

}  // namespace SettingsHandlerKit
