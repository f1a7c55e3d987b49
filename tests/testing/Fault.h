#pragma once

#include <string>
#include <utility>

namespace SettingsHandlerTests {

/// The current fault of the faulty implementations. It is global, because contracts construct their makers without
/// arguments.
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
