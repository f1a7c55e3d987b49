#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Wire {

/// The version of the wire.
constexpr const char* version = "1.1.0";

/// Replies to frames without a type, as compact JSON text without a line end. Bytes that are not UTF-8 become U+FFFD.

/// What a host says of its run.
struct HelloReply {
    std::string run;
    /// Of the newest event.
    unsigned long sequence = 0;
    /// Only for a client that resumes.
    std::optional<bool> missed;
    /// The keys of the notices that it may not have seen, unless it missed something.
    std::optional<std::set<std::string>> reread;
};

/// `{"messageId":…,"hello":{"version":…,"run":…,"sequence":…}}`
std::string helloFrame(const std::string& messageId, const HelloReply& hello);

/// `{"messageId":…,"history":{"events":[…]}}` with `events` as they were sent.
std::string historyFrame(const std::string& messageId, const std::vector<std::shared_ptr<const std::string>>& events);

/// `{"messageId":…,"catalogue":{"settings":[…]}}`
std::string catalogueFrame(const std::string& messageId);

/// `{"messageId":…,NAME:{…}}` with `members` in their order.
std::string queryReplyFrame(const std::string& messageId, const std::string& name,
                            const std::map<std::string, std::string>& members);

/// What a host says of its state.
struct StatusReply {
    struct Disk {
        /// In bytes.
        std::uint64_t free = 0;
        std::uint64_t total = 0;
    };

    /// The JSON text that /healthz serves.
    std::string health;
    std::string hostVersion;
    /// Of the database, if there is one.
    std::optional<Disk> disk;
    /// The newest accepted time stamps, by key.
    std::map<std::string, std::int64_t> newest;
    /// Milliseconds since the epoch.
    std::int64_t now = 0;
};

/// `{"messageId":…,"status":{"health":…,"versions":…,"disk":…,"newest":…,"now":…}}`
std::string statusFrame(const std::string& messageId, const StatusReply& status);

}  // namespace Wire
