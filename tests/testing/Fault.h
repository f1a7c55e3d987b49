#pragma once

#include <string>
#include <utility>

namespace SettingsHandlerTests {

/// The one fault that the faulty implementations have at the moment. Contracts make what they check without an
/// argument, so it cannot be handed to them.
class Fault {
public:
    static void choose(std::string name) { current() = std::move(name); }
    static bool is(const char* name) { return current() == name; }

private:
    static std::string& current() {
        static std::string name;
        return name;
    }
};

}  // namespace SettingsHandlerTests
