#pragma once

#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace SettingsCtlTests {

/// A terminal that runs a program, and in which a test types. The destructor kills the program.
class Terminal {
public:
    Terminal(const std::vector<std::string>& arguments, const std::map<std::string, std::string>& environment);
    ~Terminal();

    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    void type(const std::string& keys) const;
    /// What the program shows until `end` appears, without it; throws when it does not appear.
    std::string readUntil(const std::string& end);

private:
    int terminal = -1;
    pid_t process = -1;
    std::string shown;
};

}  // namespace SettingsCtlTests
