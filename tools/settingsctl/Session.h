#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Commands.h"
#include "Connection.h"
#include "Wire.h"

namespace SettingsCtl {

/// A connection to the host's settings socket, with message ids of its own.
class Session {
public:
    explicit Session(const Context& context) : connection(context.socketPath, context.timeout) {}

    std::string newMessageId();
    void send(const std::string& lines) { connection.send(lines); }
    /// Waits for the reply to `messageId`. Changes that are announced before go to `onChange`.
    /// Errors: `Failure` when the host refused what was sent, or does not answer.
    Frame receiveReply(const std::string& messageId, const std::function<void(const Change&)>& onChange = {});
    std::map<std::string, std::string> getSettings(const std::vector<std::string>& keys);

private:
    Connection connection;
    int lastMessageId = 0;
};

}  // namespace SettingsCtl
