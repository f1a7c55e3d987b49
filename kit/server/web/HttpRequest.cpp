#include "server/web/HttpRequest.h"

#include <cstdint>
#include <limits>
#include <optional>

#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/rfc7230.hpp>

namespace SettingsHandlerKit {

namespace {

namespace http = boost::beast::http;

using Parser = http::request_parser<http::empty_body>;

/// All headers of that name, as if they were one; nothing when there is none.
std::optional<std::string> header(const Parser& parser, http::field name, const char* delimiter) {
    std::optional<std::string> all;
    const auto range = parser.get().equal_range(name);
    for (auto line = range.first; line != range.second; ++line) {
        all = (all ? *all + delimiter : "") + line->value().to_string();
    }
    return all;
}

std::optional<unsigned> hexadecimalDigit(char digit) {
    const std::string digits = "0123456789abcdef0123456789ABCDEF";
    const std::size_t place = digits.find(digit);
    return place == std::string::npos ? std::nullopt : std::optional<unsigned>(place % 16U);
}

/// Without escapes; nothing when one is invalid.
std::optional<std::string> decoded(const std::string& path) {
    std::string text;
    for (std::size_t place = 0; place < path.size(); ++place) {
        if (path[place] != '%') {
            text += path[place];
            continue;
        }
        const auto high = place + 2 < path.size() ? hexadecimalDigit(path[place + 1]) : std::nullopt;
        const auto low = high ? hexadecimalDigit(path[place + 2]) : std::nullopt;
        if (!low) {
            return std::nullopt;
        }
        text += static_cast<char>(*high * 16U + *low);
        place += 2;
    }
    return text;
}

std::optional<std::string> keyIn(const std::string& query) {
    const std::string all = "&" + query;
    const std::string name = "&key=";
    const std::size_t place = all.find(name);
    if (place == std::string::npos) {
        return std::nullopt;
    }
    const std::size_t start = place + name.size();
    return all.substr(start, all.find('&', start) - start);
}

bool hasBody(const Parser& parser) {
    return parser.content_length().value_or(0) > 0 || parser.get().count(http::field::transfer_encoding) > 0;
}

/// Returns: false when the request is malformed.
bool readTarget(const Parser& parser, HttpRequest& request) {
    const std::string target = parser.get().target().to_string();
    const std::size_t end = target.find('?');
    const auto path = decoded(target.substr(0, end));
    request.path = path.value_or("");
    request.visitor.key = end == std::string::npos ? std::nullopt : keyIn(target.substr(end + 1));
    return path.has_value();
}

/// Returns: false when the request is malformed.
bool readHeaders(const Parser& parser, HttpRequest& request) {
    const auto& fields = parser.get();
    request.visitor.host = header(parser, http::field::host, ",");
    request.visitor.origin = header(parser, http::field::origin, ",");
    request.visitor.cookies = header(parser, http::field::cookie, "; ");
    request.asksForWebSocket = fields.method() == http::verb::get && parser.upgrade() &&
                               http::token_list(fields[http::field::upgrade]).exists("websocket");
    request.webSocketVersion = header(parser, http::field::sec_websocket_version, ",").value_or("");
    request.webSocketKey = header(parser, http::field::sec_websocket_key, ",").value_or("");
    request.webSocketProtocols = header(parser, http::field::sec_websocket_protocol, ",").value_or("");
    // Several of these could mean different things to different readers.
    return fields.count(http::field::host) <= 1 && fields.count(http::field::origin) <= 1;
}

}  // namespace

HttpRequest readHttpRequest(const std::string& bytes) {
    HttpRequest request;
    Parser parser;
    parser.header_limit(longestWebRequest);
    // It is not read.
    parser.body_limit(std::numeric_limits<std::uint64_t>::max());
    boost::system::error_code error;
    request.size = parser.put(boost::asio::buffer(bytes), error);
    if (error == http::error::need_more && bytes.size() <= longestWebRequest) {
        return request;
    }
    if (error == http::error::need_more || error == http::error::header_limit || request.size > longestWebRequest) {
        request.state = HttpRequest::State::TOO_LONG;
        return request;
    }
    const bool isValid = !error && readTarget(parser, request) && readHeaders(parser, request);
    request.state = isValid ? HttpRequest::State::COMPLETE : HttpRequest::State::MALFORMED;
    request.isHead = parser.get().method() == http::verb::head;
    request.isRead = request.isHead || parser.get().method() == http::verb::get;
    request.keepsConnection = isValid && request.isRead && parser.keep_alive() && !hasBody(parser);
    return request;
}

}  // namespace SettingsHandlerKit
