#include "server/web/WebSite.h"

namespace SettingsHandlerKit {

HttpAnswer WebSite::answer(const WebVisitor& visitor, bool isAdmitted, const std::string& path, bool isRead) const {
    const auto endpoint = endpoints.find(path);
    if (endpoint != endpoints.end() && isRead) {
        return endpoint->second();
    }
    if (!isAdmitted) {
        return plainAnswer(403,
                           "The key is missing or old. \"settingsctl page\" prints the address.");
    }
    if (!isRead) {
        HttpAnswer refusal = plainAnswer(405, "Pages are read-only.");
        refusal.headers = "allow: GET, HEAD\r\n";
        return refusal;
    }
    HttpAnswer answer;
    if (const PageFile* const file = pages.find(path); file != nullptr) {
        answer.contentType = file->contentType;
        answer.body = file->content;
    } else if (pages.isEmpty() && (path == "/" || path == "/device")) {
        answer = howToGetPages();
    } else {
        return plainAnswer(404, "Page not found.");
    }
    if (const std::string cookie = access.cookieFor(visitor); !cookie.empty()) {
        answer.headers = "set-cookie: " + cookie + "\r\n";
    }
    return answer;
}

}  // namespace SettingsHandlerKit
