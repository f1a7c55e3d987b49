#pragma once

#include <string>

namespace TestSupport {

/// Sends all of `bytes` over a connected socket. Returns: false when the other side is gone.
bool sendAll(int socket, const std::string& bytes);

}  // namespace TestSupport
