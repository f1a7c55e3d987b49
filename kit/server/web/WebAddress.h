#pragma once

#include <cstdint>
#include <string>

namespace SettingsHandlerKit {

/// A loopback address and port at which pages are served.
struct WebAddress {
    /// Numeric, without brackets: "127.0.0.1" or "::1".
    std::string address;
    std::uint16_t port = 0;

    /// As in an address bar: "127.0.0.1:8097" or "[::1]:8097".
    std::string text() const;
};

/// Reads "127.0.0.1:8097", "[::1]:8097" or "localhost:8097" (which is 127.0.0.1). Port 0 means any free port.
/// Errors: `std::invalid_argument` as a message for a person, also when the address is not a loopback address.
WebAddress parseWebAddress(const std::string& text);

}  // namespace SettingsHandlerKit
