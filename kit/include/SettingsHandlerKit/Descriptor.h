#pragma once

#include <utility>

#include <unistd.h>

namespace SettingsHandlerKit {

/// Owns a file descriptor and closes it; -1 means none.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int open) : number(open) {}
    ~Descriptor() {
        if (number >= 0) {
            ::close(number);
        }
    }

    Descriptor(Descriptor&& other) noexcept : number(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number, other.number);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return number; }
    /// The caller owns the descriptor from now on.
    int release() { return std::exchange(number, -1); }

private:
    int number = -1;
};

}  // namespace SettingsHandlerKit
