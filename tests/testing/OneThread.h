#pragma once

#include <stdexcept>
#include <thread>

namespace SettingsHandlerTests {

/// Throws in every thread but the one that made it, as things do that belong to one thread.
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
