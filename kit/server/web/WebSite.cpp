#include "server/web/WebSite.h"

#include <libwebsockets.h>

namespace SettingsHandlerKit {

HttpAnswer WebSite::answer(const WebVisitor& visitor, bool isAdmitted, const std::string& path, bool isRead) const {
    const auto endpoint = endpoints.find(path);
    if (endpoint != endpoints.end() && isRead) {
        return endpoint->second();
    }
    if (!isAdmitted) {
        return plainAnswer(HTTP_STATUS_FORBIDDEN,
                           "The key is missing or old. \"settingsctl page\" prints the address.");
    }
    if (!isRead) {
        return plainAnswer(HTTP_STATUS_METHOD_NOT_ALLOWED, "Pages are read-only.");
    }
    HttpAnswer answer;
    if (const PageFile* const file = pages.find(path); file != nullptr) {
        answer.contentType = file->contentType;
        answer.body = file->content;
    } else if (pages.isEmpty() && (path == "/" || path == "/device")) {
        answer = howToGetPages();
    } else {
        return plainAnswer(HTTP_STATUS_NOT_FOUND, "Page not found.");
    }
    answer.cookie = access.cookieFor(visitor);
    return answer;
}

}  // namespace SettingsHandlerKit
