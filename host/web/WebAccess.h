#pragma once

#include <optional>
#include <set>
#include <string>

#include "web/WebAddress.h"

namespace SettingsHost {

/// `bytes` random bytes from the kernel, in lower-case hexadecimal.
/// Errors: `std::system_error`.
std::string randomHex(std::size_t bytes);

/// What a request shows of itself; a member is empty when the header or argument is missing.
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
    /// whose pages may connect. `key` opens the door once, `cookie` again: it is what a browser is given that came with
    /// the key.
    WebAccess(const WebAddress& address, const std::string& allowedOrigin, std::string key, std::string cookie);

    /// Is it addressed to this port by a name of ours, and not sent by a foreign page? Keeps pages out whose name was
    /// made to resolve to the loopback address.
    bool isFromHere(const WebVisitor& visitor) const;
    /// Did it bring the key, or the cookie?
    bool isAdmitted(const WebVisitor& visitor) const;
    /// The value of the Set-Cookie header for a visitor that brought the key; empty for others.
    std::string cookieFor(const WebVisitor& visitor) const;

    const std::string& key() const { return currentKey; }

private:
    bool hasKey(const WebVisitor& visitor) const;

    std::set<std::string> hosts;
    std::set<std::string> origins;
    std::string currentKey;
    std::string cookieName;
    std::string cookieValue;
};

/// Is `text` an origin as browsers write it: scheme, "://", host and at most a port?
bool isOrigin(const std::string& text);

}  // namespace SettingsHost
