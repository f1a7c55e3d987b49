#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SettingsHandlerFuzz {

/// JSON for the model and the checks, independent of the product's code. Texts end at their first NUL character; of
/// members with the same name the first one counts.

/// `text` as a JSON string, quotes included.
std::string stringText(const std::string& text);
/// A compact array of strings.
std::string arrayText(const std::vector<std::string>& texts);
/// The elements of a JSON array, with nothing in place of those that are not strings; nothing when `json` is not JSON.
/// Precondition: if it is JSON, it is an array.
std::optional<std::vector<std::optional<std::string>>> arrayElements(const std::string& json);

/// A parsed JSON text.
class Envelope {
public:
    explicit Envelope(const std::string& json);
    Envelope(const Envelope&) = delete;
    Envelope& operator=(const Envelope&) = delete;
    ~Envelope();

    bool isJson() const;
    bool isObject() const;
    bool isArray() const;
    /// The depth of nested objects and arrays.
    std::size_t nesting() const;
    /// Whether all names and string values are well-formed UTF-8.
    bool isWellFormed() const;

    bool has(const std::string& name) const;
    std::optional<std::string> text(const std::string& name) const;
    std::optional<long> integer(const std::string& name) const;
    /// The member `name`, when it is an integer of 0 or more.
    std::optional<unsigned long> number(const std::string& name) const;
    /// Whether the member `name` is an object.
    bool hasObject(const std::string& name) const;
    /// Whether the member `name` is true.
    bool isTrue(const std::string& name) const;
    /// Whether the member `name` is true or false.
    bool isBoolean(const std::string& name) const;
    /// The member `name` of the member `object`.
    /// @{
    std::optional<std::string> textIn(const std::string& object, const std::string& name) const;
    std::string compactIn(const std::string& object, const std::string& name) const;
    /// @}
    bool hasPayload() const;
    std::optional<std::string> payloadText(const std::string& name) const;
    /// The strings among the elements of an array of the payload.
    std::optional<std::vector<std::string>> payloadTexts(const std::string& name) const;
    /// The compact texts of the elements of the array `name`; nothing when there is none.
    std::optional<std::vector<std::string>> elements(const std::string& name) const;
    /// The compact text of the member `name`; empty when there is none.
    std::string compact(const std::string& name) const;
    /// The names of the members, in order.
    std::vector<std::string> names() const;

private:
    class Tree;
    std::unique_ptr<Tree> tree;
};

}  // namespace SettingsHandlerFuzz
