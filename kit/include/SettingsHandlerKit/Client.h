#pragma once

#include <memory>
#include <string>

namespace SettingsHandlerKit {

/// Who asked for what is being done; events carry it as their "origin".
enum class Origin { SOCKET, PAGE, DEVICE };

/// As it stands on the wire: "socket", "page" or "device".
constexpr const char* originName(Origin origin) {
    switch (origin) {
        case Origin::SOCKET:
            return "socket";
        case Origin::PAGE:
            return "page";
        default:
            return "device";
    }
}

/// The kind of the listener that a client is connected at.
enum class ListenerKind { UNIX_SOCKET, WEB };

/// Why a client is gone.
enum class DisconnectReason { CLOSED, TOO_SLOW };

/// A program that is connected at one of the listeners.
class Client {
public:
    Client() = default;
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    virtual ~Client() = default;

    /// Writes `frame`, which is shared with the other clients that it goes to, at once or queues it. Never calls a
    /// `ClientListener`: a client that is gone, or is disconnected because its backlog is too large, is reported
    /// later, from the event loop. So all clients can be sent to in a loop over them.
    virtual void send(const std::shared_ptr<const std::string>& frame) = 0;

    /// The origin of what it asks for.
    virtual Origin origin() const = 0;
    /// Where it is connected.
    virtual ListenerKind listenerKind() const = 0;

    /// Closes the connection at once; what waits is not sent. Like `send`, it never calls a `ClientListener`. Does
    /// nothing where only the other side can close.
    virtual void close() {}
};

}  // namespace SettingsHandlerKit
