#include "simulation/DeviceConsole.h"

#include <exception>
#include <utility>

#include "SettingsHandlerKit/Logging.h"
#include "Utils/RapidjsonUtil.h"
#include "Wire/FrameInspector.h"
#include "Wire/Frames.h"

namespace SettingsHost {

namespace {

/// Pages that watch ask for state and faults after every frame; tracing those requests would make them ask again,
/// without end. The key of the pages is not for them, and a saved world is long.
bool isTraced(const std::string& command) {
    return command != "show" && command != "faults" && command != "trace" && command != "page" && command != "save";
}

}  // namespace

DeviceConsole::DeviceConsole(Perform performAction,
                             std::shared_ptr<SettingsHandlerKit::TrafficObserver> trafficObserver,
                             std::shared_ptr<MessageTrace> messageTrace, PageAddress addressOfPages)
    : perform(std::move(performAction)),
      traffic(std::move(trafficObserver)),
      trace(std::move(messageTrace)),
      pageAddress(std::move(addressOfPages)) {}

void DeviceConsole::connected(const std::shared_ptr<SettingsHandlerKit::Client>& client) {
    traffic->clientConnected(*client);
}

void DeviceConsole::disconnected(const std::shared_ptr<SettingsHandlerKit::Client>& client,
                                 SettingsHandlerKit::DisconnectReason reason) {
    trace->unwatch(client);
    traffic->clientDisconnected(*client, reason);
}

void DeviceConsole::received(const std::shared_ptr<SettingsHandlerKit::Client>& client, const std::string& frame) {
    rapidjson::Document request;
    if (const auto refusal = Wire::inspectFrame(frame, request)) {
        traffic->frameReceived(*client, frame);
        refuse(*client, *refusal);
        return;
    }
    std::string command;
    Utils::RapidjsonUtil::tryGetStringMember(request, "command", command);
    if (isTraced(command)) {
        traffic->frameReceived(*client, frame);
    }
    const auto reply = std::make_shared<const std::string>(replyTo(client, command, request));
    client->send(reply);
    if (isTraced(command)) {
        traffic->frameSent(client.get(), *reply);
    }
}

void DeviceConsole::oversized(const std::shared_ptr<SettingsHandlerKit::Client>& client) {
    refuse(*client, Wire::tooLarge());
}

void DeviceConsole::refused(SettingsHandlerKit::Origin origin) {
    traffic->clientRefused(origin);
}

void DeviceConsole::refuse(SettingsHandlerKit::Client& client, const Wire::Refusal& refusal) {
    const auto frame = std::make_shared<const std::string>(Wire::refusalFrame(refusal.code, refusal.message));
    client.send(frame);
    traffic->frameSent(&client, *frame);
    traffic->frameRefused(refusal.code);
}

std::string DeviceConsole::replyTo(const std::shared_ptr<SettingsHandlerKit::Client>& client,
                                   const std::string& command, const rapidjson::Value& request) {
    if (command == "page") {
        return client->listenerKind() == SettingsHandlerKit::ListenerKind::UNIX_SOCKET
                   ? orFailure([&] { return showPage(request); })
                   : Wire::refusalFrame("not-here", "only available at the device socket");
    }
    return command == "trace" ? switchTrace(client, request) : execute(request);
}

std::string DeviceConsole::showPage(const rapidjson::Value& request) {
    const auto newKey = request.FindMember("newKey");
    const bool isGiven = newKey != request.MemberEnd();
    if (isGiven && !newKey->value.IsBool()) {
        return Wire::refusalFrame("bad-argument", R"("newKey" must be true or false)");
    }
    const std::string current = pageAddress.current();
    if (current.empty()) {
        return Wire::refusalFrame("no-pages", "the host serves no pages");
    }
    if (!isGiven || !newKey->value.GetBool()) {
        return Wire::objectFrame("page", {{"address", current}});
    }
    const auto renewed = pageAddress.renewed();
    return renewed ? Wire::objectFrame("page", {{"address", *renewed}})
                   : Wire::refusalFrame("not-written",
                                        "the new key could not be stored: the old key and its cookies stay valid");
}

std::string DeviceConsole::switchTrace(const std::shared_ptr<SettingsHandlerKit::Client>& client,
                                       const rapidjson::Value& request) {
    const auto enabled = request.FindMember("enabled");
    if (enabled == request.MemberEnd() || !enabled->value.IsBool()) {
        return Wire::refusalFrame("bad-argument", R"("enabled" must be true or false)");
    }
    const auto connections = request.FindMember("connections");
    const bool isGiven = connections != request.MemberEnd();
    if (isGiven && !connections->value.IsBool()) {
        return Wire::refusalFrame("bad-argument", R"("connections" must be true or false)");
    }
    if (enabled->value.GetBool()) {
        trace->watch(client,
                     isGiven && connections->value.GetBool() ? MessageTrace::Ends::YES : MessageTrace::Ends::NO);
    } else {
        trace->unwatch(client);
    }
    return R"({"ok":true})";
}

std::string DeviceConsole::execute(const rapidjson::Value& request) {
    return orFailure([&] {
        std::string reply;
        perform([&] { reply = commands->execute(request); });
        return reply;
    });
}

std::string DeviceConsole::orFailure(const std::function<std::string()>& action) {
    try {
        return action();
    } catch (const std::exception& error) {
        SettingsHandlerKit::writeLog(VessaLogger::ERROR, std::string("a device command failed: ") + error.what());
        return Wire::refusalFrame("failed", "internal error; see the host's log");
    }
}

}  // namespace SettingsHost
