#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Failure.h"
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

/// A setting has a new value.
struct Change {
    std::string key;
    std::string from;
    std::string to;
};

/// A frame lacks a member, or has one of the wrong type.
Failure malformedFrame();

/// A frame that the host sent.
class Frame {
public:
    /// Errors: `Failure` (UNREACHABLE) when the text is not a JSON object.
    explicit Frame(std::string received);

    const std::string& text() const { return line; }
    bool isReplyTo(const std::string& messageId) const;
    /// The time stamp that an event carries.
    std::optional<std::int64_t> timestamp() const;
    /// The change that an event reports; nothing when the frame is not an event.
    /// Errors: as `stringsAt`, when the event lacks the key, the old or the new value.
    std::optional<Change> change() const;
    /// The keys that a notice asks to reread; nothing when the frame is not a notice.
    std::optional<std::vector<std::string>> reread() const;
    /// Throws `Failure` when the frame is a refusal: of a request (REFUSED), or of one more client (UNREACHABLE).
    void throwIfRefusal() const;
    /// The members of the object at a path of member names, in the order of their keys.
    /// Errors: `Failure` (UNREACHABLE) when there is no object, or one of its members is not a string.
    std::map<std::string, std::string> stringsAt(const std::vector<const char*>& path) const;
    /// The boolean at a path of member names.
    std::optional<bool> booleanAt(const std::vector<const char*>& path) const;

private:
    const rapidjson::Value* at(const std::vector<const char*>& path) const;
    bool isEvent() const;

    std::string line;
    rapidjson::Document document;
};

bool isValidUtf8(const std::string& text);

/// Requests, each as a line with its newline.
std::string getSettingsRequest(const std::string& messageId, const std::vector<std::string>& keys);
std::string setSettingsRequest(const std::string& messageId, std::int64_t timestamp, const std::string& key,
                               const std::string& value);
/// A request without a payload.
std::string bareRequest(MessageType type, const std::string& messageId);

}  // namespace SettingsCtl
