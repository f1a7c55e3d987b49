#include "SettingsClient/Errors.h"

#include "Wire/RefusalCode.h"

namespace SettingsClient {

void throwIfRefusal(const Wire::HostFrame& frame) {
    const auto refusal = frame.refusal();
    if (!refusal) {
        return;
    }
    if (refusal->code == Wire::RefusalCode::tooManyClients) {
        throw ConnectionError("the host has reached its limit of clients; try again later");
    }
    throw RequestRefused("the host refused the request: " + refusal->message + " (" + refusal->code + ")");
}

}  // namespace SettingsClient
