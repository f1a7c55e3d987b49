#include "connection/Refusals.h"

#include <utility>

#include "Wire/RefusalCode.h"

namespace SettingsClient {

RequestRefused::RequestRefused(std::string code, std::string message)
    : std::runtime_error("the host refused the request: " + message + " (" + code + ")"),
      refusalCode(std::move(code)),
      refusalMessage(std::move(message)) {}

void throwIfRefusal(const Wire::HostFrame& frame) {
    const auto refusal = frame.refusal();
    if (!refusal) {
        return;
    }
    if (refusal->code == Wire::RefusalCode::tooManyClients) {
        throw ConnectionError("the host has reached its limit of clients; try again later");
    }
    throw RequestRefused(refusal->code, refusal->message);
}

UnexpectedResponse notAHost(const Wire::MalformedFrame& fault) {
    return UnexpectedResponse(std::string("unexpected response: not a settings-host (") + fault.what() + ")");
}

}  // namespace SettingsClient
