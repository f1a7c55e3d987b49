#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/LineClient.h"
#include "support/WebClient.h"
#include "wire/Schemas.h"

namespace WireTests {

/// Fails the test when `frame`, which a host sent at `listener`, is invalid under its schema.
void expectValid(Listener listener, const std::string& frame);

/// The listener of a socket's path or a WebSocket's target. The last part of the device's contains "device".
Listener listenerOf(const std::string& address);

/// GET /healthz. The response must be valid under its schema.
TestSupport::HttpResponse healthOf(std::uint16_t port);

/// A client of a host's Unix socket. Every received frame must be valid under the schemas.
class HostClient : public TestSupport::LineClient {
public:
    explicit HostClient(const std::string& path) : HostClient(path, listenerOf(path)) {}
    HostClient(const std::string& path, Listener listener);
};

/// The same over a WebSocket.
class HostWebSocket : public TestSupport::WebSocket {
public:
    HostWebSocket(std::uint16_t port, const std::string& target, const std::string& protocol,
                  const std::vector<std::string>& headers = {}, int receiveBuffer = 0);
};

}  // namespace WireTests
