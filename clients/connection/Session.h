#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Wire/HostFrame.h"
#include "connection/Connection.h"

namespace SettingsClient {

/// A connection to the host's settings socket, with its own message ids and time stamps. Errors of all that sends or
/// receives: as `Connection` and `throwIfRefusal`.
class Session {
public:
    using FrameListener = std::function<void(const Wire::HostFrame&)>;

    /// The message ids start with `clientName`.
    Session(std::string clientName, const std::vector<SocketCandidate>& candidates, std::chrono::milliseconds timeout)
        : name(std::move(clientName)), connection(candidates, timeout) {}

    std::string newMessageId();
    /// The greater of now and the newest time stamp among the events received, so that the host does not see the
    /// request as older than one before it.
    std::int64_t newTimestamp() const;

    void send(const std::vector<std::string>& frames) { connection.send(frames); }
    /// Waits for the reply to `messageId`. Frames before it go to `onOtherFrame`.
    Wire::HostFrame receiveReply(const std::string& messageId, const FrameListener& onOtherFrame = {});
    /// Waits for the values in the reply to `messageId`.
    std::map<std::string, std::string> receiveSettings(const std::string& messageId,
                                                       const FrameListener& onOtherFrame = {});
    /// Requests the values of `keys`, or of all settings when `keys` is empty, and waits for them.
    std::map<std::string, std::string> getSettings(const std::vector<std::string>& keys);

private:
    std::string name;
    Connection connection;
    int lastMessageId = 0;
    std::int64_t newestTimestamp = 0;
};

}  // namespace SettingsClient
