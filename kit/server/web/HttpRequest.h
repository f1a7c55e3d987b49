#pragma once

#include <cstddef>
#include <string>

#include "server/web/WebAccess.h"

namespace SettingsHandlerKit {

/// A request whose head is longer is refused.
constexpr std::size_t longestWebRequest = 4096;

/// The head of an HTTP request.
struct HttpRequest {
    enum class State {
        /// The rest has not come yet.
        INCOMPLETE,
        COMPLETE,
        MALFORMED,
        TOO_LONG
    };

    State state = State::INCOMPLETE;
    /// How many bytes it takes.
    std::size_t size = 0;

    /// A GET or HEAD?
    bool isRead = false;
    bool isHead = false;
    /// May the connection be used for another request? Not after a body, which is not read.
    bool keepsConnection = false;
    std::string path;
    WebVisitor visitor;

    bool asksForWebSocket = false;
    std::string webSocketVersion;
    std::string webSocketKey;
    /// The offered subprotocols, separated by commas.
    std::string webSocketProtocols;
};

/// Reads the request that `bytes` begin with.
HttpRequest readHttpRequest(const std::string& bytes);

}  // namespace SettingsHandlerKit
