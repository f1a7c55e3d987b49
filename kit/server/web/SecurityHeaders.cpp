#include "server/web/SecurityHeaders.h"

#include <array>
#include <string>
#include <utility>

#include <libwebsockets.h>

namespace SettingsHandlerKit {

const lws_protocol_vhost_options* securityHeaders() {
    static const std::array<std::pair<const char*, const char*>, 5> headers{{
        {"content-security-policy:",
         "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
         "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
        {"x-content-type-options:", "nosniff"},
        {"referrer-policy:", "no-referrer"},
        {"cross-origin-resource-policy:", "same-origin"},
        {"cache-control:", "no-store"},
    }};
    static const auto list = [] {
        std::array<lws_protocol_vhost_options, headers.size()> options{};
        for (std::size_t place = 0; place < headers.size(); ++place) {
            options[place].name = headers[place].first;
            options[place].value = headers[place].second;
            options[place].next = place + 1 < headers.size() ? &options[place + 1] : nullptr;
        }
        return options;
    }();
    return list.data();
}

bool addSecurityHeaders(lws* connection, void* headOfAnswer) {
    auto& head = *static_cast<lws_process_html_args*>(headOfAnswer);
    auto* place = reinterpret_cast<unsigned char*>(head.p);
    unsigned char* const end = place + head.max_len;
    for (const auto* entry = securityHeaders(); entry != nullptr; entry = entry->next) {
        const std::string value = entry->value;
        if (lws_add_http_header_by_name(connection, reinterpret_cast<const unsigned char*>(entry->name),
                                        reinterpret_cast<const unsigned char*>(value.data()),
                                        static_cast<int>(value.size()), &place, end) != 0) {
            return false;
        }
    }
    head.p = reinterpret_cast<char*>(place);
    return true;
}

}  // namespace SettingsHandlerKit
