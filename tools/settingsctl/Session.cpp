#include "Session.h"

#include <unistd.h>

namespace SettingsCtl {

std::string Session::newMessageId() {
    return "settingsctl-" + std::to_string(::getpid()) + "-" + std::to_string(++lastMessageId);
}

Frame Session::receiveReply(const std::string& messageId, const std::function<void(const Change&)>& onChange) {
    for (;;) {
        Frame frame(connection.receive());
        frame.throwIfRefusal();
        if (frame.isReplyTo(messageId)) {
            return frame;
        }
        const auto change = frame.change();
        if (change && onChange) {
            onChange(*change);
        }
    }
}

std::map<std::string, std::string> Session::getSettings(const std::vector<std::string>& keys) {
    const std::string messageId = newMessageId();
    send(getSettingsRequest(messageId, keys));
    return receiveReply(messageId).stringsAt({"payload", "settings"});
}

}  // namespace SettingsCtl
