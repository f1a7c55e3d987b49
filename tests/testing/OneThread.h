#pragma once

#include <stdexcept>
#include <thread>

namespace SettingsHandlerTests {

/// Throws on every thread except the one that constructed it.
class OneThread {
public:
    void expectHere() const {
        if (std::this_thread::get_id() != owner) {
            throw std::logic_error("called from another thread");
        }
    }

private:
    std::thread::id owner = std::this_thread::get_id();
};

}  // namespace SettingsHandlerTests
