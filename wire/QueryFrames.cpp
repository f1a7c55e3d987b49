#include "Wire/QueryFrames.h"

#include <string_view>

#include "Wire/Catalogue.h"
#include "Wire/ObjectWriter.h"

namespace Wire {

std::string helloFrame(const std::string& messageId, const HelloReply& hello) {
    ObjectWriter<> frame;
    frame.text("messageId", messageId);
    frame.beginObject("hello");
    frame.text("version", version);
    frame.text("run", hello.run);
    frame.number("sequence", hello.sequence);
    if (hello.missed) {
        frame.boolean("missed", *hello.missed);
    }
    if (hello.reread) {
        frame.texts("reread", *hello.reread);
    }
    frame.endObject();
    return frame.finish();
}

std::string historyFrame(const std::string& messageId, const std::vector<std::shared_ptr<const std::string>>& events) {
    ObjectWriter<> empty;
    empty.text("messageId", messageId);
    empty.beginObject("history");
    empty.texts("events", std::vector<std::string>());
    empty.endObject();
    std::string frame = empty.finish();
    constexpr std::string_view end = "]}}";
    std::size_t size = frame.size();
    for (const auto& event : events) {
        size += event->size() + 1;
    }
    // At once: it may be large.
    frame.resize(frame.size() - end.size());
    frame.reserve(size);
    for (const auto& event : events) {
        frame += *event;
        frame += ',';
    }
    if (!events.empty()) {
        frame.pop_back();
    }
    return frame += end;
}

std::string catalogueFrame(const std::string& messageId) {
    rapidjson::Document document;
    document.Parse<Utils::jsonParseFlags>(catalogueText().data(), catalogueText().size());
    ObjectWriter<> frame;
    frame.text("messageId", messageId);
    frame.beginObject("catalogue");
    frame.json("settings", document["settings"]);
    frame.endObject();
    return frame.finish();
}

std::string queryReplyFrame(const std::string& messageId, const std::string& name,
                            const std::map<std::string, std::string>& members) {
    ObjectWriter<> frame;
    frame.text("messageId", messageId);
    frame.beginObject(name);
    for (const auto& [key, value] : members) {
        frame.text(key, value);
    }
    frame.endObject();
    return frame.finish();
}

std::string statusFrame(const std::string& messageId, const StatusReply& status) {
    rapidjson::Document health;
    health.Parse<Utils::jsonParseFlags>(status.health.data(), status.health.size());
    ObjectWriter<> frame;
    frame.text("messageId", messageId);
    frame.beginObject("status");
    frame.json("health", health);
    frame.beginObject("versions");
    frame.text("host", status.hostVersion);
    frame.text("wire", version);
    frame.endObject();
    if (status.disk) {
        frame.beginObject("disk");
        frame.number("free", status.disk->free);
        frame.number("total", status.disk->total);
        frame.endObject();
    }
    frame.beginObject("newest");
    for (const auto& [key, timestamp] : status.newest) {
        frame.number(key, timestamp);
    }
    frame.endObject();
    frame.number("now", status.now);
    frame.endObject();
    return frame.finish();
}

}  // namespace Wire
