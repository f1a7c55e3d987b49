#pragma once

#include <memory>
#include <string>

namespace SettingsHandlerKit {

/// The answer to an HTTP request.
struct HttpAnswer {
    unsigned status = 200;
    std::string contentType = "text/plain; charset=utf-8";
    /// Null: an answer without a body, such as 101.
    std::shared_ptr<const std::string> body;
    /// More header lines, each with its line end.
    std::string headers;
};

/// An answer in plain text.
HttpAnswer plainAnswer(unsigned status, const std::string& text);

/// The page that is served when the settings pages are not installed.
HttpAnswer howToGetPages();

/// Status line and headers of `answer`, the security headers of every answer among them. `closes`: the connection is
/// closed after it.
std::string headOf(const HttpAnswer& answer, bool closes);

}  // namespace SettingsHandlerKit
