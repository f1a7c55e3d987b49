#include "server/web/HttpAnswer.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <libwebsockets.h>

namespace SettingsHandlerKit {

namespace {

constexpr std::size_t headSize = 2048;
constexpr std::size_t pieceSize = 16384;

bool addHeader(lws* connection, const char* name, const std::string& value, unsigned char** place, unsigned char* end) {
    return lws_add_http_header_by_name(connection, reinterpret_cast<const unsigned char*>(name),
                                       reinterpret_cast<const unsigned char*>(value.data()),
                                       static_cast<int>(value.size()), place, end) == 0;
}

}  // namespace

HttpAnswer plainAnswer(unsigned status, const std::string& text) {
    HttpAnswer answer;
    answer.status = status;
    answer.body = std::make_shared<const std::string>(text + "\n");
    return answer;
}

HttpAnswer howToGetPages() {
    HttpAnswer answer = plainAnswer(HTTP_STATUS_OK, R"(<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<title>No settings pages</title>
<h1>This host has no settings pages</h1>
<p>It serves clients, but its pages were not installed, or not found. Build them with <code>scripts/build-pages</code> in
the sources, then start the host with <code>settings-host --pages pages/dist</code>. The Debian package
<code>settings-host</code> brings them with it.</p>)");
    answer.contentType = "text/html; charset=utf-8";
    return answer;
}

HttpExchange::HttpExchange(lws* connectionOfRequest, HttpAnswer answerToSend, bool withBody)
    : connection(connectionOfRequest), answer(std::move(answerToSend)), body(withBody) {}

bool HttpExchange::begin() {
    const std::size_t count = std::min(pieceSize, size());
    std::vector<unsigned char> buffer(LWS_PRE + headSize + count);
    unsigned char* const start = buffer.data() + LWS_PRE;
    unsigned char* const end = start + headSize;
    unsigned char* place = start;
    if (lws_add_http_common_headers(connection, answer.status, answer.contentType.c_str(), answer.body->size(), &place,
                                    end) != 0) {
        return false;
    }
    if (!answer.cookie.empty() && !addHeader(connection, "set-cookie:", answer.cookie, &place, end)) {
        return false;
    }
    if (answer.status == HTTP_STATUS_METHOD_NOT_ALLOWED && !addHeader(connection, "allow:", "GET, HEAD", &place, end)) {
        return false;
    }
    if (lws_finalize_http_header(connection, &place, end) != 0) {
        return false;
    }
    // With one write, so that a short answer is one packet.
    std::copy_n(answer.body->data(), count, place);
    sent = count;
    const int whole = static_cast<int>(place - start) + static_cast<int>(count);
    return lws_write(connection, start, static_cast<std::size_t>(whole), LWS_WRITE_HTTP_HEADERS) >= whole;
}

bool HttpExchange::proceed() {
    const std::size_t count = std::min(pieceSize, size() - sent);
    std::vector<unsigned char> buffer(LWS_PRE + count);
    std::copy_n(answer.body->data() + sent, count, buffer.data() + LWS_PRE);
    sent += count;
    const auto kind = isDone() ? LWS_WRITE_HTTP_FINAL : LWS_WRITE_HTTP;
    return lws_write(connection, buffer.data() + LWS_PRE, count, kind) >= static_cast<int>(count);
}

}  // namespace SettingsHandlerKit
