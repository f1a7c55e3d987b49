#include "server/web/WebSite.h"

namespace SettingsHandlerKit {

HttpResponse WebSite::responseTo(const WebVisitor& visitor, bool isAdmitted, const std::string& path,
                                 bool isRead) const {
    const auto endpoint = endpoints.find(path);
    if (endpoint != endpoints.end() && isRead) {
        return endpoint->second();
    }
    if (!isAdmitted) {
        return plainResponse(403, "The key is missing or old. \"settingsctl page\" prints the address.");
    }
    if (!isRead) {
        HttpResponse refusal = plainResponse(405, "Pages are read-only.");
        refusal.headers = "allow: GET, HEAD\r\n";
        return refusal;
    }
    HttpResponse response;
    if (const PageFile* const file = pages.find(path); file != nullptr) {
        response.contentType = file->contentType;
        response.body = file->content;
    } else if (pages.isEmpty() && (path == "/" || path == "/device")) {
        response = howToGetPages();
    } else {
        return plainResponse(404, "Page not found.");
    }
    if (const std::string cookie = access.cookieFor(visitor); !cookie.empty()) {
        response.headers = "set-cookie: " + cookie + "\r\n";
    }
    return response;
}

}  // namespace SettingsHandlerKit
