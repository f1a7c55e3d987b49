#pragma once

#include <memory>
#include <string>

namespace SettingsHandlerKit {

/// The response to an HTTP request.
struct HttpResponse {
    unsigned status = 200;
    std::string contentType = "text/plain; charset=utf-8";
    /// Null: a response without a body, such as 101.
    std::shared_ptr<const std::string> body;
    /// More header lines, each with its line end.
    std::string headers;
};

/// A response in plain text.
HttpResponse plainResponse(unsigned status, const std::string& text);

/// The page that is served when the settings pages are not installed.
HttpResponse howToGetPages();

/// Status line and headers of `response`, the security headers of every response among them. `closes`: the connection
/// is closed after it.
std::string headOf(const HttpResponse& response, bool closes);

}  // namespace SettingsHandlerKit
