#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace SettingsHandlerKit {

/// Compares in constant time.
bool isSameSecret(const std::string& left, const std::string& right);

/// Issues cookie values that hold their time of issue, signed (HMAC-SHA256), and checks them. Times are seconds since
/// 1970.
class CookieSigner {
public:
    static constexpr std::chrono::seconds lifetime = std::chrono::hours(30 * 24);
    /// How far the time of issue may be ahead of the clock. A television's clock may be wrong until the network sets
    /// it, often by its time zone. More is not accepted: a cookie of a clock that was years ahead would be valid for
    /// years.
    static constexpr std::chrono::seconds tolerance = std::chrono::hours(24);

    explicit CookieSigner(std::string secret);

    std::string issue(std::int64_t now) const;
    bool isValid(const std::string& value, std::int64_t now) const;

private:
    std::string signatureOf(const std::string& text) const;

    std::string secret;
};

}  // namespace SettingsHandlerKit
