#include "Wire/Frames.h"

#include "Utils/Rapidjson.h"
#include "Wire/Utf8.h"

namespace Wire {

std::string refusalFrame(const std::string& code, const std::string& message) {
    return objectFrame("error", {{"code", code}, {"message", message}});
}

std::string objectFrame(const std::string& name, const std::map<std::string, std::string>& members) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartObject();
    writer.String(name);
    writer.StartObject();
    for (const auto& [key, value] : members) {
        writer.String(withValidUtf8(key));
        writer.String(withValidUtf8(value));
    }
    writer.EndObject();
    writer.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize());
}

}  // namespace Wire
