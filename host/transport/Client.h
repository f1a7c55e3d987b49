#pragma once

#include <memory>
#include <string>

namespace SettingsHost {

/// Who asked for what is being done; events carry it as their "origin".
enum class Origin { SOCKET, PAGE, DEVICE };

/// As it stands on the wire: "socket", "page" or "device".
const char* originName(Origin origin);

/// Somebody at one of the doors.
class Client {
public:
    Client() = default;
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    virtual ~Client() = default;

    /// Queues `frame`, shared with the other clients that it goes to. Never calls back. A client that lets too much
    /// wait is disconnected instead.
    virtual void send(const std::shared_ptr<const std::string>& frame) = 0;

    virtual Origin origin() const = 0;
};

}  // namespace SettingsHost
