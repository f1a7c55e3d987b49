#include "simulation/MessageTrace.h"

#include <chrono>
#include <cstdint>

#include "Utils/Rapidjson.h"
#include "Wire/FrameInspector.h"
#include "Wire/Utf8.h"

namespace SettingsHost {

namespace {

std::int64_t millisecondsSinceEpoch() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

}  // namespace

void MessageTrace::clientConnected(const Client& client) {
    numbers[&client] = ++lastNumber;
}

void MessageTrace::clientRefused(Origin /*origin*/) {}

void MessageTrace::clientDisconnected(const Client& client, DisconnectReason /*departure*/) {
    numbers.erase(&client);
}

void MessageTrace::frameReceived(const Client& client, const std::string& frame) {
    send("in", &client, frame);
}

void MessageTrace::frameSent(const Client* receiver, const std::string& frame) {
    send("out", receiver, frame);
}

void MessageTrace::frameRefused(const std::string& /*code*/) {}

void MessageTrace::requestHandled(int /*type*/, RequestOutcome /*outcome*/) {}

void MessageTrace::send(const char* direction, const Client* client, const std::string& text) {
    if (watchers.empty()) {
        return;
    }
    // Events fit.
    constexpr std::size_t longestText = 4 * Wire::maximumFrameSize;
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartObject();
    writer.Key("trace");
    writer.StartObject();
    writer.Key("timestamp");
    writer.Int64(millisecondsSinceEpoch());
    writer.Key("direction");
    writer.String(direction);
    writer.Key("door");
    writer.String(client == nullptr ? "all" : originName(client->origin()));
    writer.Key("client");
    const auto number = numbers.find(client);
    if (number == numbers.end()) {
        writer.Null();
    } else {
        writer.Uint64(number->second);
    }
    writer.Key("text");
    writer.String(Wire::withValidUtf8(text.substr(0, longestText)));
    writer.EndObject();
    writer.EndObject();
    const auto frame = std::make_shared<const std::string>(buffer.GetString(), buffer.GetSize());
    for (const auto& watcher : watchers) {
        watcher->send(frame);
    }
}

}  // namespace SettingsHost
