#include "connection/Session.h"

#include <algorithm>
#include <chrono>

#include <unistd.h>

#include "Wire/Requests.h"
#include "connection/Refusals.h"

namespace SettingsClient {

std::string Session::newMessageId() {
    return name + "-" + std::to_string(::getpid()) + "-" + std::to_string(++lastMessageId);
}

std::int64_t Session::newTimestamp() const {
    using namespace std::chrono;
    const std::int64_t now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    return std::max(now, newestTimestamp);
}

Wire::HostFrame Session::receiveReply(const std::string& messageId, const FrameListener& onOtherFrame) {
    const auto deadline = connection.deadline();
    for (;;) {
        Wire::HostFrame frame(connection.receive(deadline));
        throwIfRefusal(frame);
        if (frame.isReplyTo(messageId)) {
            return frame;
        }
        newestTimestamp = std::max(newestTimestamp, frame.timestamp().value_or(newestTimestamp));
        if (onOtherFrame) {
            onOtherFrame(frame);
        }
    }
}

std::map<std::string, std::string> Session::receiveSettings(const std::string& messageId,
                                                            const FrameListener& onOtherFrame) {
    return receiveReply(messageId, onOtherFrame).stringsAt({"payload", "settings"});
}

std::map<std::string, std::string> Session::getSettings(const std::vector<std::string>& keys) {
    const std::string messageId = newMessageId();
    send({Wire::getSettingsRequest(messageId, keys)});
    return receiveSettings(messageId);
}

}  // namespace SettingsClient
