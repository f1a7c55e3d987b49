#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Json.h"

namespace SettingsCtl {

/// Message types of the wire.
enum MessageType : int {
    GET_SETTINGS = 7,
    IS_SELECTED = 18,
    OPEN_SETTINGS = 19,
    LOG_OUT = 22,
    SET_SETTINGS = 24,
    SETTING_CHANGED = 25,
};

/// A setting took a new value.
struct Change {
    std::string key;
    std::string from;
    std::string to;
};

/// One frame of the host.
class Frame {
public:
    /// Errors: `Failure` (UNREACHABLE) when the text is no JSON object, so what answers is no settings host.
    explicit Frame(std::string received);

    const std::string& text() const { return line; }
    bool isReplyTo(const std::string& messageId) const;
    /// The time stamp that an event carries.
    std::optional<std::int64_t> timestamp() const;
    /// The change that an event announces; nothing when the frame is no event.
    /// Errors: as `stringsAt`, when it is an event without key, old or new value.
    std::optional<Change> change() const;
    /// The keys that a notice asks to read again; nothing when the frame is no notice.
    std::optional<std::vector<std::string>> reread() const;
    /// Throws `Failure` when the host itself refused what was sent (REFUSED), or has no room for this client
    /// (UNREACHABLE).
    void throwIfRefusal() const;
    /// The members of the object at a path of member names, in the order of their keys.
    /// Errors: `Failure` (UNREACHABLE) when there is no object there, or one with a member that is no string.
    std::map<std::string, std::string> stringsAt(const std::vector<const char*>& path) const;
    /// The boolean at a path of member names.
    std::optional<bool> booleanAt(const std::vector<const char*>& path) const;

private:
    const rapidjson::Value* at(const std::vector<const char*>& path) const;
    bool isEvent() const;

    std::string line;
    rapidjson::Document document;
};

/// Can the wire carry the text?
bool isValidUtf8(const std::string& text);

/// Requests as lines with their ends.
std::string getSettingsRequest(const std::string& messageId, const std::vector<std::string>& keys);
std::string setSettingsRequest(const std::string& messageId, std::int64_t timestamp, const std::string& key,
                               const std::string& value);
/// A request without a payload.
std::string bareRequest(MessageType type, const std::string& messageId);

}  // namespace SettingsCtl
