#include "server/web/WebAccess.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace SettingsHandlerKit {

namespace {

constexpr const char* addressCharacters = "0123456789ABCDEFabcdef:.";
constexpr const char* nameCharacters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz.-";

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
    });
    return text;
}

/// The values of the cookies called `name` in a Cookie header: "a=1; b=2".
std::vector<std::string> cookieValues(const std::string& header, const std::string& name) {
    std::vector<std::string> values;
    std::size_t start = 0;
    while (start < header.size()) {
        const std::size_t end = std::min(header.find(';', start), header.size());
        const std::size_t first = header.find_first_not_of(' ', start);
        if (first < end && header.compare(first, name.size() + 1, name + "=") == 0) {
            values.push_back(header.substr(first + name.size() + 1, end - first - name.size() - 1));
        }
        start = end + 1;
    }
    return values;
}

}  // namespace

bool isOrigin(const std::string& text) {
    const std::size_t scheme = text.rfind("http://", 0) == 0 ? 7 : 8;
    if (scheme == 8 && text.rfind("https://", 0) != 0) {
        return false;
    }
    const bool isAddress = text[scheme] == '[';
    const std::size_t host = isAddress ? scheme + 1 : scheme;
    const std::size_t end =
        std::min(text.find_first_not_of(isAddress ? addressCharacters : nameCharacters, host), text.size());
    if (end == host || (isAddress && text[end] != ']')) {
        return false;
    }
    const std::string port = text.substr(isAddress ? end + 1 : end);
    return port.empty() || (port.front() == ':' && port.size() >= 2 && port.size() <= 6 &&
                            port.find_first_not_of("0123456789", 1) == std::string::npos);
}

WebAccess::WebAccess(const WebAddress& address, const std::string& allowedOrigin, std::string key, std::string secret,
                     std::function<std::int64_t()> clockToAsk)
    : currentKey(std::move(key)),
      // Cookies are shared by all ports: each host of the machine needs a name of its own.
      cookieName("settings-" + std::to_string(address.port)),
      signer(std::move(secret)),
      clock(std::move(clockToAsk)) {
    const std::string port = ":" + std::to_string(address.port);
    const std::string name = address.text().substr(0, address.text().size() - port.size());
    hosts = {name + port, "localhost" + port};
    if (address.port == 80) {
        // Browsers leave the default port out.
        hosts.insert({name, "localhost"});
    }
    for (const auto& host : hosts) {
        origins.insert("http://" + host);
    }
    if (!allowedOrigin.empty()) {
        origins.insert(lowerCase(allowedOrigin));
    }
}

bool WebAccess::isFromHere(const WebVisitor& visitor) const {
    return visitor.host && hosts.count(lowerCase(*visitor.host)) != 0 &&
           (!visitor.origin || origins.count(lowerCase(*visitor.origin)) != 0);
}

bool WebAccess::hasKey(const WebVisitor& visitor) const {
    return visitor.key && isSameSecret(*visitor.key, currentKey);
}

bool WebAccess::isAdmitted(const WebVisitor& visitor) const {
    if (hasKey(visitor)) {
        return true;
    }
    const auto values = cookieValues(visitor.cookies.value_or(""), cookieName);
    return std::any_of(values.begin(), values.end(),
                       [this](const auto& value) { return signer.isValid(value, clock()); });
}

std::string WebAccess::cookieFor(const WebVisitor& visitor) const {
    if (!hasKey(visitor)) {
        return "";
    }
    return cookieName + "=" + signer.issue(clock()) +
           "; Path=/; HttpOnly; SameSite=Strict; Max-Age=" + std::to_string(CookieSigner::lifetime.count());
}

void WebAccess::replace(std::string key, std::string secret) {
    currentKey = std::move(key);
    signer = CookieSigner(std::move(secret));
}

}  // namespace SettingsHandlerKit
