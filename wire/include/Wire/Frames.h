#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "Utils/Rapidjson.h"

namespace Wire {

/// Frames of the wire, as compact JSON text without a line end. Bytes that are not UTF-8 become U+FFFD.

/// `{"error":{"code":…,"message":…}}`, with `"index":…` after them for a request of a batch, counted from 0.
std::string refusalFrame(const std::string& code, const std::string& message,
                         std::optional<std::size_t> index = std::nullopt);

/// `{NAME:{…}}` with `members` in their order.
std::string objectFrame(const std::string& name, const std::map<std::string, std::string>& members);

/// `{"notice":{"reread":[…]}}`
std::string noticeFrame(const std::set<std::string>& keys);

/// The parts of an event besides its payload; they outlive it.
struct Event {
    int type;
    const std::string& messageId;
    /// Milliseconds since the epoch.
    std::int64_t timestamp;
    unsigned long sequence;
    const char* origin;
    /// The name of the client that caused it; empty when it has none.
    std::string_view client = {};
};

/// `{"type":…,"messageId":…,"timestamp":…,"sequence":…,"origin":…,"client":…,"payload":…}`, without `client` when that
/// is empty.
std::string eventFrame(const Event& event, const rapidjson::Value& payload);

/// The parts of a reply, which outlive it.
struct Reply {
    int type;
    const std::string& messageId;
    const rapidjson::Value& payload;
};

/// `{"type":…,"messageId":…,"payload":…}`
std::string replyFrame(const Reply& reply);
/// The size of that frame, found without making it.
std::size_t replyFrameSize(const Reply& reply);
/// The same frame, whose size is known: slower, but no buffer takes three times as much memory meanwhile.
std::string replyFrame(const Reply& reply, std::size_t size);

}  // namespace Wire
