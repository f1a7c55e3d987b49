#pragma once

#include <stdexcept>

#include "Wire/HostFrame.h"

namespace SettingsClient {

/// No socket can have the given path.
class InvalidSocketPath : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The host cannot be reached, has no room for the client, closed the connection, or does not reply.
class ConnectionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The host refused a request.
class RequestRefused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Errors: `RequestRefused` when the frame is the refusal of a request; `ConnectionError` when it is the refusal of one
/// more client; `Wire::MalformedFrame`.
void throwIfRefusal(const Wire::HostFrame& frame);

}  // namespace SettingsClient
