#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace WireTests {

/// The listeners of the host, each with frames of its own.
enum class Listener { SETTINGS, DEVICE };

/// The JSON Schemas of docs/schemas, by file name without its ending.
class Schemas {
public:
    /// Reads every schema in `folder`. Throws when one is not understood.
    explicit Schemas(const std::string& folder);
    ~Schemas();

    Schemas(const Schemas&) = delete;
    Schemas& operator=(const Schemas&) = delete;

    /// Those of this repository, read once in a process.
    static const Schemas& ofTheWire();

    std::vector<std::string> names() const;

    /// What is wrong with `text` under the schema `name`: the text, its place, the schema's place. Nothing when it is
    /// valid.
    std::optional<std::string> faultOf(const std::string& name, const std::string& text) const;

    /// The same for a frame that a host sent at `listener`, under the schema that fits its kind.
    std::optional<std::string> faultOfHostFrame(Listener listener, const std::string& frame) const;

private:
    struct Schema;
    class Others;

    std::unique_ptr<Others> others;
    std::map<std::string, std::unique_ptr<Schema>> schemas;
};

/// The schema of the frames of that kind that a host sends at `listener`; empty when it sends none of the kind.
std::string schemaOfHostFrame(Listener listener, const std::string& frame);

}  // namespace WireTests
