#pragma once

#include <stdexcept>
#include <string>

namespace SettingsClient {

/// No socket can have the given path.
class InvalidSocketPath : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The host cannot be reached, has no room for the client, closed the connection, or does not reply. A change that was
/// being requested may have been made.
class ConnectionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What the host sent is none of its frames: the socket is another program's.
class UnexpectedResponse : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The host refused a frame; nothing was done.
class RequestRefused : public std::runtime_error {
public:
    /// `code` and `message` are the host's.
    RequestRefused(std::string code, std::string message);

    /// The code of the refusal, such as "too-large", "busy" or "not-here".
    const std::string& code() const { return refusalCode; }
    /// The host's own words.
    const std::string& message() const { return refusalMessage; }

private:
    std::string refusalCode;
    std::string refusalMessage;
};

/// The host is older than the request: nothing was done. See `Client` for what needs which version.
class NotSupported : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace SettingsClient
