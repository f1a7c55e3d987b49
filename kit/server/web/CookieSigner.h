#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace SettingsHost {

/// Takes as long for a wrong guess as for the right one, so that nobody guesses a secret character by character.
bool isSameSecret(const std::string& left, const std::string& right);

/// Makes values of cookies that say when they were issued, signed (HMAC-SHA256), and tells which are still worth
/// something. Times are seconds since 1970.
class CookieSigner {
public:
    static constexpr std::chrono::seconds lifetime = std::chrono::hours(30 * 24);
    /// So far may the time of issue be ahead of the clock. A television's clock may be wrong until the network sets it,
    /// often by its time zone. More is not taken: a cookie of a clock that was years ahead would live for years.
    static constexpr std::chrono::seconds tolerance = std::chrono::hours(24);

    explicit CookieSigner(std::string secret);

    std::string issue(std::int64_t now) const;
    bool isValid(const std::string& value, std::int64_t now) const;

private:
    std::string signatureOf(const std::string& text) const;

    std::string secret;
};

}  // namespace SettingsHost
