#include "simulation/MessageTrace.h"

#include <chrono>
#include <cstdint>

#include "Wire/FrameInspector.h"
#include "Wire/ObjectWriter.h"

namespace SettingsHost {

namespace {

std::int64_t millisecondsSinceEpoch() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

/// What all frames begin with. `client`: null for a frame to every client.
void begin(Wire::ObjectWriter<>& trace, const char* direction, const SettingsHandlerKit::Client* client,
           unsigned long number) {
    trace.beginObject("trace");
    trace.number("timestamp", millisecondsSinceEpoch());
    trace.text("direction", direction);
    trace.text("door", client == nullptr ? "all" : SettingsHandlerKit::originName(client->origin()));
    if (client == nullptr) {
        trace.null("client");
    } else {
        trace.number("client", number);
    }
}

}  // namespace

void MessageTrace::clientConnected(const SettingsHandlerKit::Client& client) {
    numbers[&client] = ++lastNumber;
}

void MessageTrace::clientRefused(SettingsHandlerKit::Origin /*origin*/) {}

void MessageTrace::clientDisconnected(const SettingsHandlerKit::Client& client,
                                      SettingsHandlerKit::DisconnectReason reason) {
    tellEnd(client, reason == SettingsHandlerKit::DisconnectReason::CLOSED ? "in" : "out");
}

void MessageTrace::frameReceived(const SettingsHandlerKit::Client& client, const std::string& frame) {
    send("in", &client, frame);
}

void MessageTrace::frameSent(const SettingsHandlerKit::Client* receiver, const std::string& frame) {
    send("out", receiver, frame);
}

void MessageTrace::frameRefused(const std::string& /*code*/) {}

void MessageTrace::requestHandled(int /*type*/, SettingsHandlerKit::RequestOutcome /*outcome*/) {}

void MessageTrace::send(const char* direction, const SettingsHandlerKit::Client* client, const std::string& text) {
    const auto number = numbers.find(client);
    if (watchers.empty() || (client != nullptr && number == numbers.end())) {
        return;
    }
    // Events fit.
    constexpr std::size_t longestText = 4 * Wire::maximumFrameSize;
    Wire::ObjectWriter<> trace;
    begin(trace, direction, client, client == nullptr ? 0 : number->second);
    trace.text("text", text.substr(0, longestText));
    trace.endObject();
    const auto frame = std::make_shared<const std::string>(trace.finish());
    for (const auto& [watcher, ends] : watchers) {
        watcher->send(frame);
    }
}

void MessageTrace::tellEnd(const SettingsHandlerKit::Client& client, const char* direction) {
    const auto number = numbers.find(&client);
    // One that was cut has been told.
    if (number != numbers.end()) {
        Wire::ObjectWriter<> trace;
        begin(trace, direction, &client, number->second);
        trace.boolean("closed", true);
        trace.endObject();
        const auto frame = std::make_shared<const std::string>(trace.finish());
        for (const auto& [watcher, ends] : watchers) {
            if (ends == Ends::YES) {
                watcher->send(frame);
            }
        }
        numbers.erase(number);
    }
}

}  // namespace SettingsHost
