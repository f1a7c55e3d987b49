#include "Wire/Frames.h"

#include <utility>

#include "Wire/ObjectWriter.h"

namespace Wire {

namespace {

/// Writes into a string of its size.
class StringOutput {
public:
    using Ch = char;

    explicit StringOutput(std::size_t size) { text.reserve(size); }

    void Put(char byte) { text.push_back(byte); }
    void Append(std::string_view more) { text.append(more); }
    void Flush() {}
    std::string finish() { return std::move(text); }

private:
    std::string text;
};

/// Counts what is written.
class SizeOutput {
public:
    using Ch = char;

    void Put(char /*byte*/) { ++size; }
    void Append(std::string_view more) { size += more.size(); }
    void Flush() {}
    std::size_t finish() const { return size; }

private:
    std::size_t size = 0;
};

template <typename Output>
auto write(const Reply& reply, ObjectWriter<Output> frame) {
    frame.number("type", reply.type);
    frame.text("messageId", reply.messageId);
    frame.json("payload", reply.payload);
    return frame.finish();
}

}  // namespace

std::string refusalFrame(const std::string& code, const std::string& message, std::optional<std::size_t> index) {
    ObjectWriter<> frame;
    frame.beginObject("error");
    frame.text("code", code);
    frame.text("message", message);
    if (index) {
        frame.number("index", *index);
    }
    frame.endObject();
    return frame.finish();
}

std::string objectFrame(const std::string& name, const std::map<std::string, std::string>& members) {
    ObjectWriter<> frame;
    frame.beginObject(name);
    for (const auto& [key, value] : members) {
        frame.text(key, value);
    }
    frame.endObject();
    return frame.finish();
}

std::string noticeFrame(const std::set<std::string>& keys) {
    ObjectWriter<> frame;
    frame.beginObject("notice");
    frame.texts("reread", keys);
    frame.endObject();
    return frame.finish();
}

std::string eventFrame(const Event& event, const rapidjson::Value& payload) {
    ObjectWriter<> frame;
    frame.number("type", event.type);
    frame.text("messageId", event.messageId);
    frame.number("timestamp", event.timestamp);
    frame.number("sequence", event.sequence);
    frame.text("origin", event.origin);
    if (!event.client.empty()) {
        frame.text("client", event.client);
    }
    frame.json("payload", payload);
    return frame.finish();
}

std::string replyFrame(const Reply& reply) {
    return write(reply, ObjectWriter<>());
}

std::size_t replyFrameSize(const Reply& reply) {
    return write(reply, ObjectWriter<SizeOutput>());
}

std::string replyFrame(const Reply& reply, std::size_t size) {
    return write(reply, ObjectWriter(StringOutput(size)));
}

}  // namespace Wire
