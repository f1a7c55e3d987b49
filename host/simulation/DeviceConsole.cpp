#include "simulation/DeviceConsole.h"

#include <exception>
#include <utility>

#include "Utils/RapidjsonUtil.h"
#include "Wire/FrameInspector.h"
#include "Wire/Frames.h"
#include "service/logging/HostLog.h"

namespace SettingsHost {

namespace {

rapidjson::Document parsed(const std::string& frame) {
    rapidjson::Document document;
    document.Parse<Utils::jsonParseFlags>(frame.c_str());
    return document;
}

std::string commandOf(const std::string& frame) {
    const rapidjson::Document request = parsed(frame);
    std::string command;
    Utils::RapidjsonUtil::tryGetStringMember(request, "command", command);
    return command;
}

/// Pages that watch ask for the state whenever something happens. Showing that to each other would never end. The key
/// of the pages is not for them.
bool isTraced(const std::string& command) {
    return command != "show" && command != "trace" && command != "page";
}

}  // namespace

DeviceConsole::DeviceConsole(DeviceCommands deviceCommands, std::shared_ptr<MessageHub> messageHub,
                             std::shared_ptr<TrafficObserver> trafficObserver,
                             std::shared_ptr<MessageTrace> messageTrace, PageAddress addressOfPages)
    : commands(std::move(deviceCommands)),
      hub(std::move(messageHub)),
      traffic(std::move(trafficObserver)),
      trace(std::move(messageTrace)),
      pageAddress(std::move(addressOfPages)) {}

void DeviceConsole::arrived(const std::shared_ptr<Client>& client) {
    traffic->clientConnected(*client);
}

void DeviceConsole::left(const std::shared_ptr<Client>& client, DisconnectReason departure) {
    trace->unwatch(client);
    traffic->clientDisconnected(*client, departure);
}

void DeviceConsole::receive(const std::shared_ptr<Client>& client, const std::string& frame, DeviceListener listener) {
    if (const auto refusal = Wire::inspectFrame(frame)) {
        traffic->frameReceived(*client, frame);
        refuse(client, refusal->code, refusal->message);
        return;
    }
    const std::string command = commandOf(frame);
    if (isTraced(command)) {
        traffic->frameReceived(*client, frame);
    }
    const auto answer = std::make_shared<const std::string>(answerTo(client, command, frame, listener));
    client->send(answer);
    if (isTraced(command)) {
        traffic->frameSent(client.get(), *answer);
    }
}

void DeviceConsole::refuseTooLarge(const std::shared_ptr<Client>& client) {
    const Wire::Refusal refusal = Wire::tooLarge();
    refuse(client, refusal.code, refusal.message);
}

void DeviceConsole::refuse(const std::shared_ptr<Client>& client, const std::string& code, const std::string& message) {
    const auto answer = std::make_shared<const std::string>(Wire::refusalFrame(code, message));
    client->send(answer);
    traffic->frameSent(client.get(), *answer);
    traffic->frameRefused(code);
}

std::string DeviceConsole::answerTo(const std::shared_ptr<Client>& client, const std::string& command,
                                    const std::string& frame, DeviceListener listener) {
    if (command == "page") {
        return listener == DeviceListener::SOCKET
                   ? orFailure([&] { return showPage(frame); })
                   : Wire::refusalFrame("not-here", "only the device socket answers this");
    }
    return command == "trace" ? switchTrace(client, frame) : execute(frame);
}

std::string DeviceConsole::showPage(const std::string& frame) {
    const rapidjson::Document request = parsed(frame);
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
                                        "the new key could not be stored: the old key and its cookies still hold");
}

std::string DeviceConsole::switchTrace(const std::shared_ptr<Client>& client, const std::string& frame) {
    const rapidjson::Document request = parsed(frame);
    const auto enabled = request.FindMember("enabled");
    if (enabled == request.MemberEnd() || !enabled->value.IsBool()) {
        return Wire::refusalFrame("bad-argument", R"("enabled" must be true or false)");
    }
    if (enabled->value.GetBool()) {
        trace->watch(client);
    } else {
        trace->unwatch(client);
    }
    return R"({"ok":true})";
}

std::string DeviceConsole::execute(const std::string& frame) {
    return orFailure([&] {
        std::string answer;
        hub->perform(Origin::DEVICE, [&] { answer = commands.execute(frame); });
        return answer;
    });
}

std::string DeviceConsole::orFailure(const std::function<std::string()>& action) {
    try {
        return action();
    } catch (const std::exception& error) {
        logHost(VessaLogger::ERROR, std::string("a device command failed: ") + error.what());
        return Wire::refusalFrame("failed", "the host could not carry it out; its log says why");
    }
}

}  // namespace SettingsHost
