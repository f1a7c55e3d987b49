#include "wire/Schemas.h"

#include <filesystem>
#include <stdexcept>
#include <utility>

#include "wire/Json.h"

namespace WireTests {

namespace {

/// Long enough to recognise the text.
std::string shortened(const std::string& text) {
    constexpr std::size_t longest = 500;
    return text.size() <= longest ? text : text.substr(0, longest) + "… (" + std::to_string(text.size()) + " bytes)";
}

std::string textOf(const rapidjson::Pointer& place) {
    rapidjson::StringBuffer buffer;
    place.StringifyUriFragment(buffer);
    return buffer.GetString();
}

using Places = std::map<std::string, std::string>;

/// Schemas by the member that identifies the type of a frame.
const Places& kindsAt(Listener listener) {
    static const Places settings{{"notice", "notice"},
                                 {"error", "refusal"},
                                 {"hello", "hello-reply"},
                                 {"history", "history-reply"},
                                 {"catalogue", "catalogue-reply"},
                                 {"page", "page-reply"},
                                 {"backup", "backup-reply"},
                                 {"status", "status-reply"}};
    static const Places device{{"ok", "device-done"},      {"device", "device-state"}, {"faults", "device-faults"},
                               {"world", "device-world"},  {"page", "device-page"},    {"trace", "device-trace"},
                               {"error", "device-refusal"}};
    return listener == Listener::SETTINGS ? settings : device;
}

std::string schemaOfType(const rapidjson::Value& type) {
    static const std::map<int, std::string> types{{7, "get-settings-reply"},       {18, "is-orlia-selected-va-reply"},
                                                  {19, "open-va-settings-answer"}, {22, "log-out-answer"},
                                                  {24, "set-settings-answer"},     {25, "setting-changed-event"}};
    const auto found = type.IsInt() ? types.find(type.GetInt()) : types.end();
    return found == types.end() ? "" : found->second;
}

}  // namespace

struct Schemas::Schema {
    Schema(const rapidjson::Document& text, rapidjson::IRemoteSchemaDocumentProvider& provider)
        : document(text, &provider) {}

    rapidjson::SchemaDocument document;
};

/// Finds the schemas that other schemas refer to by file name.
class Schemas::Others : public rapidjson::IRemoteSchemaDocumentProvider {
public:
    Others(std::string schemaFolder, std::map<std::string, std::unique_ptr<Schema>>& schemasByName)
        : folder(std::move(schemaFolder)), schemas(schemasByName) {}

    const rapidjson::SchemaDocument* GetRemoteDocument(const char* file, rapidjson::SizeType length) override {
        return &load(std::filesystem::path(std::string(file, length)).stem().string()).document;
    }

    const Schema& load(const std::string& name) {
        auto& schema = schemas[name];
        if (!schema) {
            const rapidjson::Document text = parsed(contentOf(folder + "/" + name + ".json"));
            if (!text.IsObject()) {
                throw std::runtime_error("the schema " + name + " is not a JSON object");
            }
            schema = std::make_unique<Schema>(text, *this);
        }
        return *schema;
    }

private:
    std::string folder;
    std::map<std::string, std::unique_ptr<Schema>>& schemas;
};

Schemas::Schemas(const std::string& folder) : others(std::make_unique<Others>(folder, schemas)) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".json") {
            others->load(entry.path().stem().string());
        }
    }
}

Schemas::~Schemas() = default;

const Schemas& Schemas::ofTheWire() {
    static const Schemas schemas(SCHEMA_FOLDER);
    return schemas;
}

std::vector<std::string> Schemas::names() const {
    std::vector<std::string> result;
    for (const auto& entry : schemas) {
        result.push_back(entry.first);
    }
    return result;
}

std::optional<std::string> Schemas::faultOf(const std::string& name, const std::string& text) const {
    const rapidjson::Document frame = parsed(text);
    if (frame.HasParseError()) {
        return "no JSON: " + shortened(text);
    }
    rapidjson::SchemaValidator validator(schemas.at(name)->document);
    if (frame.Accept(validator)) {
        return std::nullopt;
    }
    return textOf(validator.GetInvalidDocumentPointer()) + " breaks \"" + validator.GetInvalidSchemaKeyword() +
           "\" at " + textOf(validator.GetInvalidSchemaPointer()) + " of docs/schemas/" + name +
           ".json, in the frame " + shortened(text);
}

std::optional<std::string> Schemas::faultOfHostFrame(Listener listener, const std::string& frame) const {
    const std::string name = schemaOfHostFrame(listener, frame);
    return name.empty() ? "no schema is for the frame " + shortened(frame) : faultOf(name, frame);
}

std::string schemaOfHostFrame(Listener listener, const std::string& frame) {
    const rapidjson::Document document = parsed(frame);
    if (!document.IsObject()) {
        return "";
    }
    const auto type = document.FindMember("type");
    if (listener == Listener::SETTINGS && type != document.MemberEnd()) {
        return schemaOfType(type->value);
    }
    for (const auto& [member, schema] : kindsAt(listener)) {
        if (document.HasMember(member.c_str())) {
            return schema;
        }
    }
    return "";
}

}  // namespace WireTests
