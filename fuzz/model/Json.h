#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SettingsHandlerFuzz {

/// JSON for the model and the properties, read and written without any helper of the product's. Texts end at their
/// first NUL character; of members with the same name the first counts.

/// `text` as a JSON string, quotes included.
std::string stringText(const std::string& text);
/// A compact array of strings.
std::string arrayText(const std::vector<std::string>& texts);
/// The elements of a JSON array, nothing in the place of those that are no strings; nothing when `json` is no JSON.
/// Precondition: when it is JSON, it is an array.
std::optional<std::vector<std::optional<std::string>>> arrayElements(const std::string& json);

/// A JSON text, taken apart.
class Envelope {
public:
    explicit Envelope(const std::string& json);
    Envelope(const Envelope&) = delete;
    Envelope& operator=(const Envelope&) = delete;
    ~Envelope();

    bool isJson() const;
    bool isObject() const;
    bool isArray() const;
    /// How many objects and arrays stand inside each other at the deepest place.
    std::size_t nesting() const;
    /// Are all names and string values well-formed UTF-8?
    bool isWellFormed() const;

    bool has(const std::string& name) const;
    std::optional<std::string> text(const std::string& name) const;
    std::optional<long> integer(const std::string& name) const;
    bool hasPayload() const;
    std::optional<std::string> payloadText(const std::string& name) const;
    /// The strings among the elements of an array of the payload.
    std::optional<std::vector<std::string>> payloadTexts(const std::string& name) const;
    /// The compact text of the object or value `name`; empty when there is none.
    std::string compact(const std::string& name) const;
    /// The names of the members, in order.
    std::vector<std::string> names() const;

private:
    class Tree;
    std::unique_ptr<Tree> tree;
};

}  // namespace SettingsHandlerFuzz
