#pragma once

#include <string>

#include "SettingsClient/Errors.h"

namespace ClientTests {

/// The message of the `Error` that `action` throws.
template <typename Error = SettingsClient::ConnectionError, typename Action>
std::string errorOf(const Action& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    return "nothing was thrown";
}

}  // namespace ClientTests
