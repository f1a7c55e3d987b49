#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Connection.h"
#include "Verbs.h"
#include "Wire.h"

namespace SettingsCtl {

/// A connection to the host's settings socket, with message ids and time stamps of its own.
class Session {
public:
    using FrameListener = std::function<void(const Frame&)>;

    explicit Session(const Context& context) : connection(context.settingsSockets, context.timeout) {}

    std::string newMessageId();
    /// Now, or the newest time stamp that an event on this connection had when that is greater: a request with it is
    /// not older than what the host has seen.
    std::int64_t newTimestamp() const;

    void send(const std::string& lines) { connection.send(lines); }
    /// Waits for the reply to `messageId`. Frames that come before it go to `onOtherFrame`.
    /// Errors: `Failure` when the host refused what was sent, or does not answer in time.
    Frame receiveReply(const std::string& messageId, const FrameListener& onOtherFrame = {});
    /// Waits for the values that were asked for with `messageId`.
    std::map<std::string, std::string> receiveSettings(const std::string& messageId,
                                                       const FrameListener& onOtherFrame = {});
    /// Asks for the values of `keys`, of every setting when there are none, and waits for them.
    std::map<std::string, std::string> getSettings(const std::vector<std::string>& keys);

private:
    Connection connection;
    int lastMessageId = 0;
    std::int64_t newestTimestamp = 0;
};

}  // namespace SettingsCtl
