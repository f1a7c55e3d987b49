#pragma once

namespace SettingsCtl {

/// SIGINT and SIGTERM as a descriptor to poll.
class Interruption {
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    int descriptor() const { return number; }

private:
    int number;
};

}  // namespace SettingsCtl
