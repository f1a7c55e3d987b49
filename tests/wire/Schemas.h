#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace WireTests {

/// The listeners of the host, each with its own frames.
enum class Listener { SETTINGS, DEVICE };

/// The JSON Schemas of docs/schemas, by file name without extension.
class Schemas {
public:
    /// Reads every schema in `folder`. Throws when one is not a JSON object.
    explicit Schemas(const std::string& folder);
    ~Schemas();

    Schemas(const Schemas&) = delete;
    Schemas& operator=(const Schemas&) = delete;

    /// The schemas of this repository, read once in a process.
    static const Schemas& ofTheWire();

    std::vector<std::string> names() const;

    /// Returns: why `text` is invalid under the schema `name`: the place in the text, the place in the schema, the
    /// text; nothing when it is valid.
    std::optional<std::string> faultOf(const std::string& name, const std::string& text) const;

    /// The same for a frame that a host sent at `listener`, under the schema of its type.
    std::optional<std::string> faultOfHostFrame(Listener listener, const std::string& frame) const;

private:
    struct Schema;
    class Others;

    std::unique_ptr<Others> others;
    std::map<std::string, std::unique_ptr<Schema>> schemas;
};

/// Returns: the schema of a frame that a host sends at `listener`; empty when it sends no frame of that type.
std::string schemaOfHostFrame(Listener listener, const std::string& frame);

}  // namespace WireTests
