#include "Wire/Requests.h"

#include "Wire/ObjectWriter.h"

namespace Wire {

namespace {

void startRequest(ObjectWriter<>& writer, MessageType type, const std::string& messageId) {
    writer.number("type", static_cast<int>(type));
    writer.text("messageId", messageId);
}

void writeOptions(ObjectWriter<>& writer, Answered answered, const std::string& client) {
    if (answered == Answered::YES) {
        writer.boolean("answer", true);
    }
    if (!client.empty()) {
        writer.text("client", client);
    }
}

/// Writes the members of the query's object with `write`.
template <typename Write>
std::string query(const std::string& messageId, const std::string& name, const Write& write) {
    ObjectWriter writer;
    writer.text("messageId", messageId);
    writer.beginObject(name);
    write(writer);
    writer.endObject();
    return writer.finish();
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
                               const std::string& value, Answered answered, const std::string& client) {
    ObjectWriter writer;
    startRequest(writer, SET_SETTINGS, messageId);
    writer.number("timestamp", timestamp);
    writeOptions(writer, answered, client);
    writer.beginObject("payload");
    writer.text("settingDBId", key);
    writer.text("to", value);
    writer.endObject();
    return writer.finish();
}

std::string bareRequest(MessageType type, const std::string& messageId, Answered answered, const std::string& client) {
    ObjectWriter writer;
    startRequest(writer, type, messageId);
    writeOptions(writer, answered, client);
    return writer.finish();
}

std::string batchFrame(const std::vector<std::string>& requests) {
    std::string frame = R"({"batch":[)";
    const char* separator = "";
    for (const auto& request : requests) {
        frame += separator + request;
        separator = ",";
    }
    return frame + "]}";
}

std::string helloFrame(const std::string& messageId, const std::string& client,
                       const std::optional<LastEvent>& resume) {
    return query(messageId, "hello", [&](auto& writer) {
        writer.text("client", client);
        if (resume) {
            writer.beginObject("resume");
            writer.text("run", resume->run);
            writer.number("sequence", resume->sequence);
            writer.endObject();
        }
    });
}

std::string historyFrame(const std::string& messageId, const std::string& key, const std::optional<int>& limit) {
    return query(messageId, "history", [&](auto& writer) {
        if (!key.empty()) {
            writer.text("settingDBId", key);
        }
        if (limit) {
            writer.number("limit", *limit);
        }
    });
}

std::string queryFrame(const std::string& messageId, const std::string& name) {
    return query(messageId, name, [](auto& /*writer*/) {});
}

std::string newPageKeyFrame(const std::string& messageId) {
    return query(messageId, "page", [](auto& writer) { writer.boolean("newKey", true); });
}

}  // namespace Wire
