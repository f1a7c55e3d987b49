#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>

#include "server/web/CookieSigner.h"
#include "server/web/WebAddress.h"

namespace SettingsHost {

/// `bytes` random bytes from the kernel, in lower-case hexadecimal.
/// Errors: `std::system_error`.
std::string randomHex(std::size_t bytes);

/// Seconds since 1970 by the clock of the system.
std::int64_t secondsSinceEpoch();

/// What a request shows of itself; a member is missing when the header or argument is, and empty when that is.
struct WebVisitor {
    std::optional<std::string> host;
    std::optional<std::string> origin;
    std::optional<std::string> key;
    std::optional<std::string> cookies;
};

/// Who may come in at the web port, which any program of the machine and any page of its browsers can reach.
class WebAccess {
public:
    /// `address` is where the port listens, with its real number. `allowedOrigin`, unless empty, is one more origin
    /// whose pages may connect. Who comes with `key` is given a cookie that is signed with `secret` and opens the
    /// server for `CookieSigner::lifetime`. It is not renewed: after that the key has to be shown again.
    WebAccess(const WebAddress& address, const std::string& allowedOrigin, std::string key, std::string secret,
              std::function<std::int64_t()> clock = secondsSinceEpoch);

    /// Is it addressed to this port by a name of ours, and not sent by a foreign page? Keeps pages out whose name was
    /// made to resolve to the loopback address.
    bool isFromHere(const WebVisitor& visitor) const;
    /// Did it bring the key, or the cookie?
    bool isAdmitted(const WebVisitor& visitor) const;
    /// The value of the Set-Cookie header for a visitor that brought the key; empty for others.
    std::string cookieFor(const WebVisitor& visitor) const;

    /// From now on the old key and every cookie that it bought are worthless.
    void replace(std::string key, std::string secret);

private:
    bool hasKey(const WebVisitor& visitor) const;

    std::set<std::string> hosts;
    std::set<std::string> origins;
    std::string currentKey;
    std::string cookieName;
    CookieSigner signer;
    std::function<std::int64_t()> clock;
};

/// Is `text` an origin as browsers write it: scheme, "://", host and at most a port?
bool isOrigin(const std::string& text);

}  // namespace SettingsHost
