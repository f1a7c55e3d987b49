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

}  // namespace

void MessageTrace::clientConnected(const SettingsHandlerKit::Client& client) {
    numbers[&client] = ++lastNumber;
}

void MessageTrace::clientRefused(SettingsHandlerKit::Origin /*origin*/) {}

void MessageTrace::clientDisconnected(const SettingsHandlerKit::Client& client,
                                      SettingsHandlerKit::DisconnectReason /*reason*/) {
    numbers.erase(&client);
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
    if (watchers.empty()) {
        return;
    }
    // Events fit.
    constexpr std::size_t longestText = 4 * Wire::maximumFrameSize;
    Wire::ObjectWriter<> trace;
    trace.beginObject("trace");
    trace.number("timestamp", millisecondsSinceEpoch());
    trace.text("direction", direction);
    trace.text("door", client == nullptr ? "all" : SettingsHandlerKit::originName(client->origin()));
    const auto number = numbers.find(client);
    if (number == numbers.end()) {
        trace.null("client");
    } else {
        trace.number("client", number->second);
    }
    trace.text("text", text.substr(0, longestText));
    trace.endObject();
    const auto frame = std::make_shared<const std::string>(trace.finish());
    for (const auto& watcher : watchers) {
        watcher->send(frame);
    }
}

}  // namespace SettingsHost
