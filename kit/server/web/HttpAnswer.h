#pragma once

#include <memory>
#include <string>

struct lws;

namespace SettingsHandlerKit {

/// The answer to an HTTP request.
struct HttpAnswer {
    unsigned status = 200;
    std::string contentType = "text/plain; charset=utf-8";
    std::shared_ptr<const std::string> body;
    /// The value of the Set-Cookie header, unless empty.
    std::string cookie;
};

/// An answer in plain text.
HttpAnswer plainAnswer(unsigned status, const std::string& text);

/// The page that is served when the settings pages are not installed.
HttpAnswer howToGetPages();

/// An answer on its way to one connection, a piece at a time.
class HttpExchange {
public:
    HttpExchange(lws* connection, HttpAnswer answer, bool withBody);

    /// Sends the head with the first piece of the body. Returns: false when the connection is lost.
    bool begin();
    /// Sends the next piece of the body when the connection takes it. Returns: false when the connection is lost.
    bool proceed();
    bool isDone() const { return sent == size(); }

private:
    std::size_t size() const { return body ? answer.body->size() : 0; }

    lws* connection;
    HttpAnswer answer;
    bool body;
    std::size_t sent = 0;
};

}  // namespace SettingsHandlerKit
