#include "server/protocol/MessageHub.h"

#include <chrono>
#include <exception>
#include <string_view>
#include <type_traits>
#include <utility>

#include "CommunicationHandler/MessageType.h"
#include "Utils/RapidjsonUtil.h"
#include "Wire/FrameInspector.h"
#include "Wire/Frames.h"
#include "Wire/Utf8.h"
#include "handler/BoundedStorage.h"
#include "handler/LocaleGuard.h"
#include "service/logging/HostLog.h"

namespace SettingsHost {

namespace {

std::int64_t millisecondsSinceEpoch() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

/// Writes into a string of its size. Slower than the library's buffer, which is three times as large in between.
class StringOutput {
public:
    using Ch = char;

    explicit StringOutput(std::size_t size) { text.reserve(size); }

    void Put(char byte) { text.push_back(byte); }
    void Flush() {}
    std::string finish() { return std::move(text); }

private:
    std::string text;
};

/// Finds out how much is written.
class SizeOutput {
public:
    using Ch = char;

    void Put(char /*byte*/) { ++size; }
    void Flush() {}
    std::size_t finish() const { return size; }

private:
    std::size_t size = 0;
};

/// Names and strings come out as valid UTF-8 whatever they held.
template <typename Output>
class TextWriter : public rapidjson::Writer<Output> {
public:
    using JsonWriter = rapidjson::Writer<Output>;
    using JsonWriter::JsonWriter;

    bool String(const char* text, rapidjson::SizeType length, bool /*copy*/ = false) {
        return Wire::isValidUtf8({text, length}) ? JsonWriter::String(text, length)
                                                 : JsonWriter::String(Wire::withValidUtf8({text, length}));
    }

    bool Key(const char* text, rapidjson::SizeType length, bool copy = false) { return String(text, length, copy); }
};

template <typename Output = rapidjson::StringBuffer>
class FrameWriter {
public:
    explicit FrameWriter(Output output = Output()) : out(std::move(output)) { writer.StartObject(); }

    void number(const char* name, std::int64_t value) {
        key(name);
        writer.Int64(value);
    }

    void text(const char* name, const std::string& value) {
        key(name);
        string(value);
    }

    void json(const char* name, const rapidjson::Value& value) {
        key(name);
        value.Accept(writer);
    }

    void objectWithStrings(const char* name, const char* list, const std::set<std::string>& values) {
        key(name);
        writer.StartObject();
        key(list);
        writer.StartArray();
        for (const auto& value : values) {
            string(value);
        }
        writer.EndArray();
        writer.EndObject();
    }

    auto finish() {
        writer.EndObject();
        if constexpr (std::is_same_v<Output, rapidjson::StringBuffer>) {
            return std::string(out.GetString(), out.GetSize());
        } else {
            return out.finish();
        }
    }

private:
    void key(std::string_view name) { string(name); }
    void string(std::string_view text) { writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size())); }

    Output out;
    TextWriter<Output> writer{out};
};

/// A reply, or its size, as `frame` makes it.
template <typename Writer>
auto replyFrame(Writer frame, int type, const std::string& messageId, const rapidjson::Value& payload) {
    frame.number("type", type);
    frame.text("messageId", messageId);
    frame.json("payload", payload);
    return frame.finish();
}

Wire::Refusal busy() {
    return {"busy", "too much waits for clients that do not read; ask again later, or for fewer settings"};
}

/// Cut to what the storage takes, so that no client fills the log.
std::string settingNamedIn(int type, const rapidjson::Value& request) {
    constexpr std::size_t longestKey = 256;
    return type == CommunicationHandler::SET_SETTINGS
               ? Wire::withValidUtf8(Wire::requestedSetting(request).substr(0, longestKey))
               : "";
}

}  // namespace

const char* originName(Origin origin) {
    switch (origin) {
        case Origin::SOCKET:
            return "socket";
        case Origin::PAGE:
            return "page";
        default:
            return "device";
    }
}

MessageHub::MessageHub(std::shared_ptr<TrafficObserver> trafficObserver, std::shared_ptr<RequestContext> requestContext,
                       std::shared_ptr<const Backlog> backlogOfClients)
    : traffic(std::move(trafficObserver)),
      context(std::move(requestContext)),
      backlog(std::move(backlogOfClients)),
      messageIdPrefix("host-" + std::to_string(millisecondsSinceEpoch()) + "-") {}

void MessageHub::addClient(const std::shared_ptr<Client>& client) {
    clients.insert(client);
    traffic->clientConnected(*client);
}

void MessageHub::removeClient(const std::shared_ptr<Client>& client, DisconnectReason departure) {
    clients.erase(client);
    traffic->clientDisconnected(*client, departure);
}

void MessageHub::refuseTooLarge(Client& client) {
    refuse(client, Wire::tooLarge());
}

void MessageHub::refuse(Client& client, const Wire::Refusal& reason) {
    sendTo(client, Wire::refusalFrame(reason.code, reason.message));
    traffic->frameRefused(reason.code);
}

void MessageHub::receive(const std::shared_ptr<Client>& client, const std::string& frame) {
    traffic->frameReceived(*client, frame);
    rapidjson::Document request;
    if (const auto reason = Wire::inspectFrame(frame, request)) {
        refuse(*client, *reason);
        return;
    }
    const auto type = Wire::requestType(request);
    if (!type || handlers.count(*type) == 0) {
        refuse(*client, {"unknown-type", R"("type" must be one of the request types 7, 18, 19, 22, 24)"});
        return;
    }
    const RequestContext::Scope current(*context, {*type, settingNamedIn(*type, request)});
    if (*type == CommunicationHandler::SET_SETTINGS && !isRequestSafeForHandler(request)) {
        logHost(VessaLogger::ERROR, "a locale value that is no array within the nesting limit was kept away");
        traffic->requestHandled(*type, RequestOutcome::REJECTED);
        return;
    }
    deliver(client, *type, frame);
}

void MessageHub::deliver(const std::shared_ptr<Client>& client, int type, const std::string& frame) {
    requester = client;
    currentType = type;
    outcome = RequestOutcome::SILENT;
    try {
        perform(client->origin(), [&] { handlers.at(type)(frame); });
    } catch (const ReadLimitExceeded&) {
        refuse(*client, busy());
        outcome = RequestOutcome::ANSWERED;
    } catch (const std::exception& error) {
        logHost(VessaLogger::ERROR, "a request of type " + std::to_string(type) + " failed: " + error.what());
        outcome = RequestOutcome::FAILED;
    }
    traffic->requestHandled(type, outcome);
    requester.reset();
}

void MessageHub::perform(Origin origin, const std::function<void()>& action) {
    currentOrigin = origin;
    try {
        action();
    } catch (...) {
        sendNotice();
        throw;
    }
    sendNotice();
}

void MessageHub::valueChanged(const std::string& settingDBId) {
    changedKeys.insert(settingDBId);
}

void MessageHub::sendNotice() {
    std::set<std::string> keys;
    keys.swap(changedKeys);
    for (const auto& announced : announcedKeys) {
        keys.erase(announced);
    }
    announcedKeys.clear();
    if (keys.empty() || clients.empty()) {
        return;
    }
    FrameWriter<> frame;
    frame.objectWithStrings("notice", "reread", keys);
    sendToAll(frame.finish());
}

void MessageHub::sendToAll(std::string frame) {
    const auto shared = std::make_shared<const std::string>(std::move(frame));
    for (const auto& client : clients) {
        client->send(shared);
    }
    traffic->frameSent(nullptr, *shared);
}

void MessageHub::sendTo(Client& client, std::string frame) {
    const auto shared = std::make_shared<const std::string>(std::move(frame));
    client.send(shared);
    traffic->frameSent(&client, *shared);
}

std::string MessageHub::sendMessage(int messageType, rapidjson::Document& payload) {
    ++sequence;
    outcome = RequestOutcome::CHANGED;
    std::string messageId = messageIdPrefix + std::to_string(sequence);
    std::string settingDBId;
    if (Utils::RapidjsonUtil::tryGetStringMember(payload, "settingDBId", settingDBId)) {
        announcedKeys.insert(settingDBId);
    }
    FrameWriter<> frame;
    frame.number("type", messageType);
    frame.text("messageId", messageId);
    frame.number("timestamp", millisecondsSinceEpoch());
    frame.number("sequence", static_cast<std::int64_t>(sequence));
    frame.text("origin", originName(currentOrigin));
    frame.json("payload", payload);
    sendToAll(frame.finish());
    return messageId;
}

void MessageHub::sendResponse(const std::string& messageId, rapidjson::Document& payload) {
    if (!requester) {
        return;
    }
    outcome = RequestOutcome::ANSWERED;
    if (payload.GetAllocator().Size() <= Wire::maximumFrameSize) {
        sendTo(*requester, replyFrame(FrameWriter(), currentType, messageId, payload));
        return;
    }
    const std::size_t size = replyFrame(FrameWriter<SizeOutput>(), currentType, messageId, payload);
    if (!backlog->hasRoomFor(size)) {
        refuse(*requester, busy());
        return;
    }
    sendTo(*requester, replyFrame(FrameWriter(StringOutput(size)), currentType, messageId, payload));
}

void MessageHub::registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) {
    handlers[messageType] = std::move(handler);
}

}  // namespace SettingsHost
