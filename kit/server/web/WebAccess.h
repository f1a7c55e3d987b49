#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>

#include "server/web/CookieSigner.h"
#include "server/web/WebAddress.h"

namespace SettingsHandlerKit {

/// The parts of a request that decide about access; a member is missing when the header or argument is.
struct WebVisitor {
    std::optional<std::string> host;
    std::optional<std::string> origin;
    std::optional<std::string> key;
    std::optional<std::string> cookies;
};

/// Access to the web port, which any program of the machine and any page of its browsers can reach.
class WebAccess {
public:
    /// `address` is where the port listens, with its real number. `allowedOrigin`, unless empty, is one more origin
    /// whose pages may connect. A visitor with `key` gets a cookie that is signed with `secret` and valid for
    /// `CookieSigner::lifetime` by `clock`, in seconds since 1970. It is not renewed: after that the key has to be
    /// shown again.
    WebAccess(const WebAddress& address, const std::string& allowedOrigin, std::string key, std::string secret,
              std::function<std::int64_t()> clock);

    /// Are Host and Origin allowed? Rejects pages of other origins, and those whose name resolves to the loopback
    /// address (DNS rebinding).
    bool isFromHere(const WebVisitor& visitor) const;
    /// Did it show the key or a valid cookie?
    bool isAdmitted(const WebVisitor& visitor) const;
    /// The value of the Set-Cookie header for a visitor with the key; empty for others.
    std::string cookieFor(const WebVisitor& visitor) const;

    /// From now on the old key and its cookies are not valid.
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

}  // namespace SettingsHandlerKit
