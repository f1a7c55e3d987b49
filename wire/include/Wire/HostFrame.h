#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Utils/Rapidjson.h"
#include "Wire/FrameInspector.h"

namespace Wire {

/// A setting has a new value.
struct Change {
    std::string key;
    std::string from;
    std::string to;
};

/// A frame is not a JSON object, lacks a member, or has one of the wrong type; `what()` says which in a few words.
class MalformedFrame : public std::runtime_error {
public:
    explicit MalformedFrame(const std::string& fault = "malformed frame") : std::runtime_error(fault) {}
};

/// A frame that a host sent: a reply, an event, a notice or a refusal.
class HostFrame {
public:
    /// Names of members, from the outermost one.
    using Path = std::initializer_list<const char*>;

    /// Errors: `MalformedFrame` when the text is not a JSON object in valid UTF-8.
    explicit HostFrame(std::string received);

    const std::string& text() const { return line; }
    bool isEvent() const { return hasEvent; }
    bool isReplyTo(const std::string& messageId) const;
    /// The time stamp that an event carries.
    std::optional<std::int64_t> timestamp() const;
    /// The change that an event reports; nothing when the frame is not an event.
    /// Errors: `MalformedFrame` when the event lacks the key, the old or the new value, or the payload has a member
    /// that is not a string.
    std::optional<Change> change() const;
    /// The keys that a notice asks to reread; nothing when the frame is not a notice.
    std::optional<std::vector<std::string>> reread() const;
    /// What a refusal says; nothing when the frame is not a refusal. A missing code or message is empty.
    /// Errors: `MalformedFrame` when one of them is not a string.
    std::optional<Refusal> refusal() const;
    /// The members of the object at a path of member names, in the order of their keys.
    /// Errors: `MalformedFrame` when there is no object, or one of its members is not a string.
    std::map<std::string, std::string> stringsAt(Path path) const;
    /// The boolean at a path of member names.
    std::optional<bool> booleanAt(Path path) const;
    /// The integer at a path of member names.
    std::optional<std::int64_t> integerAt(Path path) const;
    /// The members of the object at a path of member names that are integers; none when there is no object.
    std::map<std::string, std::int64_t> integersAt(Path path) const;
    /// The string at a path of member names.
    std::optional<std::string> textAt(Path path) const;
    /// The object at a path of member names, as compact JSON text.
    /// Errors: `MalformedFrame` when there is none.
    std::string objectAt(Path path) const;
    /// The array of objects at a path of member names, each as compact JSON text.
    /// Errors: `MalformedFrame` when there is none.
    std::vector<std::string> objectsAt(Path path) const;
    /// The strings of the array at a path of member names; nothing when there is none.
    std::optional<std::vector<std::string>> textsAt(Path path) const;

private:
    const rapidjson::Value* at(Path path) const;

    std::string line;
    /// The texts of the document are in it.
    std::vector<char> parsed;
    rapidjson::Document document;
    bool hasEvent = false;
};

}  // namespace Wire
