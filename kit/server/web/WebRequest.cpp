#include "server/web/WebRequest.h"

#include <array>
#include <optional>

#include <libwebsockets.h>

namespace SettingsHandlerKit {

namespace {

std::optional<std::string> header(lws* connection, lws_token_indexes token) {
    const int length = lws_hdr_total_length(connection, token);
    if (length <= 0) {
        // Empty, or not there, which is not the same.
        char nothing = '\0';
        return lws_hdr_copy_fragment(connection, &nothing, 1, token, 0) == 0 ? std::optional<std::string>("")
                                                                             : std::nullopt;
    }
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    if (lws_hdr_copy(connection, text.data(), length + 1, token) < 0) {
        return std::nullopt;
    }
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::optional<std::string> argument(lws* connection, const char* nameAndSign) {
    std::array<char, longestWebRequest> buffer{};
    const char* const value =
        lws_get_urlarg_by_name(connection, nameAndSign, buffer.data(), static_cast<int>(buffer.size()));
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

}  // namespace

WebVisitor visitorOf(lws* connection) {
    return {header(connection, WSI_TOKEN_HOST), header(connection, WSI_TOKEN_ORIGIN), argument(connection, "key="),
            header(connection, WSI_TOKEN_HTTP_COOKIE)};
}

bool isRead(lws* connection) {
    return lws_hdr_total_length(connection, WSI_TOKEN_GET_URI) > 0 || isHead(connection);
}

bool isHead(lws* connection) {
    return lws_hdr_total_length(connection, WSI_TOKEN_HEAD_URI) > 0;
}

std::string requestedPath(lws* connection) {
    return header(connection, WSI_TOKEN_GET_URI).value_or("");
}

std::string offeredProtocols(lws* connection) {
    return header(connection, WSI_TOKEN_PROTOCOL).value_or("");
}

}  // namespace SettingsHandlerKit
