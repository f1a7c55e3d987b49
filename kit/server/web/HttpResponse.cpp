#include "server/web/HttpResponse.h"

#include <ostream>

#include <boost/beast/http/status.hpp>

#include "SettingsHandlerKit/Logging.h"

namespace SettingsHandlerKit {

HttpResponse plainResponse(unsigned status, const std::string& text) {
    HttpResponse response;
    response.status = status;
    response.body = std::make_shared<const std::string>(text + "\n");
    return response;
}

HttpResponse howToGetPages() {
    HttpResponse response = plainResponse(200, R"(<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<title>No settings pages</title>
<h1>This host has no settings pages</h1>
<p>It serves clients, but its pages were not installed, or not found. Build them with <code>scripts/build-pages</code> in
the sources, then start the host with <code>settings-host --pages pages/dist</code>. The Debian package
<code>settings-host</code> brings them with it.</p>)");
    response.contentType = "text/html; charset=utf-8";
    return response;
}

std::string headOf(const HttpResponse& response, bool closes) {
    const auto reason = boost::beast::http::obsolete_reason(static_cast<boost::beast::http::status>(response.status));
    std::string head =
        "HTTP/1.1 " + std::to_string(response.status) + " " + reason.to_string() +
        "\r\n"
        "content-security-policy: default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; "
        "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'\r\n"
        "x-content-type-options: nosniff\r\n"
        "referrer-policy: no-referrer\r\n"
        "cross-origin-resource-policy: same-origin\r\n"
        "cache-control: no-store\r\n"
        "server: " +
        programName() + "\r\n";
    if (response.body) {
        head += "content-type: " + response.contentType + "\r\n";
        head += "content-length: " + std::to_string(response.body->size()) + "\r\n";
    }
    if (closes) {
        head += "connection: close\r\n";
    }
    return head + response.headers + "\r\n";
}

}  // namespace SettingsHandlerKit
