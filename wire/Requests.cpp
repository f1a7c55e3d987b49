#include "Wire/Requests.h"

#include "Wire/ObjectWriter.h"

namespace Wire {

namespace {

void startRequest(ObjectWriter<>& writer, MessageType type, const std::string& messageId) {
    writer.number("type", static_cast<int>(type));
    writer.text("messageId", messageId);
}

}  // namespace

std::string getSettingsRequest(const std::string& messageId, const std::vector<std::string>& keys) {
    ObjectWriter writer;
    startRequest(writer, GET_SETTINGS, messageId);
    writer.beginObject("payload");
    writer.texts("settings", keys);
    writer.endObject();
    return writer.finish();
}

std::string setSettingsRequest(const std::string& messageId, std::int64_t timestamp, const std::string& key,
                               const std::string& value) {
    ObjectWriter writer;
    startRequest(writer, SET_SETTINGS, messageId);
    writer.number("timestamp", timestamp);
    writer.beginObject("payload");
    writer.text("settingDBId", key);
    writer.text("to", value);
    writer.endObject();
    return writer.finish();
}

std::string bareRequest(MessageType type, const std::string& messageId) {
    ObjectWriter writer;
    startRequest(writer, type, messageId);
    return writer.finish();
}

}  // namespace Wire
