#pragma once

#include <cstdint>
#include <string>

namespace TestSupport {

/// The descriptor of a stream socket connected to `path`. Errors: `std::runtime_error`.
int connectedUnixSocket(const std::string& path);

/// The same, to a port of 127.0.0.1. `receiveBuffer` sets the size of the kernel's buffer unless 0.
int connectedTcpSocket(std::uint16_t port, int receiveBuffer = 0);

}  // namespace TestSupport
