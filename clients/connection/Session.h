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
    /// The greater of now and the newest time stamp among the events received, so that the host does not see the
    /// request as older than one before it.
    std::int64_t newTimestamp() const;

    void send(const std::string& lines) { connection.send(lines); }
    /// Waits for the reply to `messageId`. Frames before it go to `onOtherFrame`.
    /// Errors: `Failure` when the host sends a refusal, or does not reply in time.
    Frame receiveReply(const std::string& messageId, const FrameListener& onOtherFrame = {});
    /// Waits for the values in the reply to `messageId`.
    std::map<std::string, std::string> receiveSettings(const std::string& messageId,
                                                       const FrameListener& onOtherFrame = {});
    /// Requests the values of `keys`, or of all settings when `keys` is empty, and waits for them.
    std::map<std::string, std::string> getSettings(const std::vector<std::string>& keys);

private:
    Connection connection;
    int lastMessageId = 0;
    std::int64_t newestTimestamp = 0;
};

}  // namespace SettingsCtl
