#include "server/web/WebAddress.h"

#include <algorithm>
#include <stdexcept>

#include <arpa/inet.h>

namespace SettingsHandlerKit {

namespace {

std::uint16_t parsePort(const std::string& text) {
    const bool digits = !text.empty() && text.size() <= 5 && std::all_of(text.begin(), text.end(), [](char character) {
        return character >= '0' && character <= '9';
    });
    const unsigned long port = digits ? std::stoul(text) : 65536;
    if (port > 65535) {
        throw std::invalid_argument("'" + text + "' is not a port, a number from 0 to 65535");
    }
    return static_cast<std::uint16_t>(port);
}

bool isLoopback(const std::string& address) {
    in_addr version4{};
    if (::inet_pton(AF_INET, address.c_str(), &version4) == 1) {
        return (ntohl(version4.s_addr) >> 24U) == 127;
    }
    in6_addr version6{};
    return ::inet_pton(AF_INET6, address.c_str(), &version6) == 1 && IN6_IS_ADDR_LOOPBACK(&version6);
}

}  // namespace

std::string WebAddress::text() const {
    const bool isVersion6 = address.find(':') != std::string::npos;
    return (isVersion6 ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

WebAddress parseWebAddress(const std::string& text) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos) {
        throw std::invalid_argument("'" + text + "' lacks a port, as in 127.0.0.1:8097");
    }
    std::string address = text.substr(0, colon);
    if (address == "localhost") {
        address = "127.0.0.1";
    } else if (address.size() > 2 && address.front() == '[' && address.back() == ']') {
        address = address.substr(1, address.size() - 2);
    } else if (address.find(':') != std::string::npos) {
        throw std::invalid_argument("'" + address + "' needs brackets, as in [::1]:8097");
    }
    if (!isLoopback(address)) {
        throw std::invalid_argument("'" + address + "' is not a loopback address, such as 127.0.0.1");
    }
    return {address, parsePort(text.substr(colon + 1))};
}

}  // namespace SettingsHandlerKit
