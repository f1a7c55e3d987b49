#pragma once

#include <string>

namespace Mqtt {

/// Who a client says it is.
struct Credentials {
    /// Empty: anonymous.
    std::string user;
    std::string password;
};

/// Reads user and password, a line each, from a file that belongs to root or this user. Errors: `std::runtime_error`,
/// also for a file that others can read or change.
Credentials readCredentials(const std::string& path);

}  // namespace Mqtt
