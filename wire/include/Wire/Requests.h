#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Wire/MessageType.h"

namespace Wire {

/// Requests, as compact JSON text without a line end. Bytes that are not UTF-8 become U+FFFD.

std::string getSettingsRequest(const std::string& messageId, const std::vector<std::string>& keys);

/// Is the host asked for the outcome of a request?
enum class Answered { NO, YES };

/// `client` is the name for this request alone; empty: that of the connection.
std::string setSettingsRequest(const std::string& messageId, std::int64_t timestamp, const std::string& key,
                               const std::string& value, Answered answered = Answered::NO,
                               const std::string& client = "");

/// A request without a payload. `client`: as above.
std::string bareRequest(MessageType type, const std::string& messageId, Answered answered = Answered::NO,
                        const std::string& client = "");

/// Several requests as one frame.
std::string batchFrame(const std::vector<std::string>& requests);

/// The last event that a client has seen.
struct LastEvent {
    /// The run of the host.
    std::string run;
    std::uint64_t sequence = 0;
};

/// Names the client; asks for what came after `resume`.
std::string helloFrame(const std::string& messageId, const std::string& client, const std::optional<LastEvent>& resume);

/// Asks for the newest `limit` events, those of `key` alone unless it is empty.
std::string historyFrame(const std::string& messageId, const std::string& key, const std::optional<int>& limit);

/// `{"messageId":…,NAME:{}}`: "catalogue", "backup", "status" or "page".
std::string queryFrame(const std::string& messageId, const std::string& name);

/// Asks for the address of the pages with a new key.
std::string newPageKeyFrame(const std::string& messageId);

}  // namespace Wire
