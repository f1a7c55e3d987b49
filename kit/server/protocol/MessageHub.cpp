#include "server/protocol/MessageHub.h"

#include <chrono>
#include <exception>
#include <utility>

#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerKit/Logging.h"
#include "Utils/RapidjsonUtil.h"
#include "Wire/FrameInspector.h"
#include "Wire/Frames.h"
#include "Wire/MessageType.h"
#include "Wire/RefusalCode.h"
#include "Wire/Utf8.h"

namespace SettingsHandlerKit {

namespace {

using Utils::RapidjsonUtil::tryGetStringMember;

Wire::Refusal busy() {
    return {Wire::RefusalCode::busy,
            "too much data is queued for clients that do not read; try again later or request fewer settings"};
}

/// Cut to the length of a key that can be stored, so that no client fills the log.
std::string settingNamedIn(int type, const rapidjson::Value& request) {
    constexpr std::size_t longestKey = 256;
    return type == Wire::SET_SETTINGS ? Wire::withValidUtf8(Wire::requestedSetting(request).substr(0, longestKey)) : "";
}

}  // namespace

MessageHub::MessageHub(std::shared_ptr<TrafficObserver> trafficObserver, std::shared_ptr<RequestContext> requestContext,
                       std::shared_ptr<const Backlog> backlogOfClients, Environment itsEnvironment)
    : traffic(std::move(trafficObserver)),
      context(std::move(requestContext)),
      backlog(std::move(backlogOfClients)),
      environment(std::move(itsEnvironment)),
      messageIdPrefix("host-" + std::to_string(now()) + "-") {}

std::int64_t MessageHub::now() const {
    using namespace std::chrono;
    return duration_cast<milliseconds>(environment.now().time_since_epoch()).count();
}

void MessageHub::connected(const std::shared_ptr<Client>& client) {
    clients.insert(client);
    traffic->clientConnected(*client);
}

void MessageHub::disconnected(const std::shared_ptr<Client>& client, DisconnectReason reason) {
    clients.erase(client);
    traffic->clientDisconnected(*client, reason);
}

void MessageHub::oversized(const std::shared_ptr<Client>& client) {
    refuse(*client, Wire::tooLarge());
}

void MessageHub::refused(Origin origin) {
    traffic->clientRefused(origin);
}

void MessageHub::refuse(Client& client, const Wire::Refusal& reason) {
    sendTo(client, Wire::refusalFrame(reason.code, reason.message));
    traffic->frameRefused(reason.code);
}

void MessageHub::received(const std::shared_ptr<Client>& client, const std::string& frame) {
    receiving = true;
    handle(client, frame);
    receiving = false;
    tellObservers();
}

void MessageHub::handle(const std::shared_ptr<Client>& client, const std::string& frame) {
    traffic->frameReceived(*client, frame);
    rapidjson::Document request;
    if (const auto reason = Wire::inspectFrame(frame, request)) {
        refuse(*client, *reason);
        return;
    }
    const auto type = Wire::requestType(request);
    if (!type || handlers.count(*type) == 0) {
        refuse(*client,
               {Wire::RefusalCode::unknownType, R"("type" must be one of the request types 7, 18, 19, 22, 24)"});
        return;
    }
    const RequestContext::Scope current(*context, {*type, settingNamedIn(*type, request)});
    deliver(client, *type, frame);
}

void MessageHub::deliver(const std::shared_ptr<Client>& client, int type, const std::string& frame) {
    requester = client;
    currentType = type;
    outcome = RequestOutcome::SILENT;
    try {
        perform(client->origin(), [&] { handlers.at(type)(frame); });
        seeOutcome(client);
    } catch (const std::exception& error) {
        writeLog(VessaLogger::ERROR, "a request of type " + std::to_string(type) + " failed: " + error.what());
        outcome = RequestOutcome::FAILED;
    }
    traffic->requestHandled(type, outcome);
    requester.reset();
}

/// Of the request that the handler has just handled.
void MessageHub::seeOutcome(const std::shared_ptr<Client>& client) {
    const auto handler = checkedHandler.lock();
    if (!handler || outcome != RequestOutcome::SILENT) {
        return;
    }
    const Outcome result = handler->outcome();
    if (result.rejected) {
        outcome = RequestOutcome::REJECTED;
    } else if (result.reason == Outcome::Reason::BUSY) {
        refuse(*client, busy());
        outcome = RequestOutcome::ANSWERED;
    }
}

void MessageHub::perform(Origin origin, const std::function<void()>& action) {
    const Origin before = std::exchange(currentOrigin, origin);
    ++performing;
    try {
        action();
    } catch (...) {
        performed(before);
        throw;
    }
    performed(before);
}

void MessageHub::performed(Origin originBefore) {
    currentOrigin = originBefore;
    if (--performing == 0) {
        sendNotice();
        tellObservers();
    }
}

/// Not while a request is handled: an observer that makes one of its own must not reply to this client.
void MessageHub::tellObservers() {
    if (!receiving && performing == 0) {
        settingObservers.deliver();
    }
}

void MessageHub::valueChanged(const std::string& settingDBId) {
    changedKeys.insert(settingDBId);
    if (performing == 0) {
        sendNotice();
        tellObservers();
    }
}

void MessageHub::sendNotice() {
    std::set<std::string> keys;
    keys.swap(changedKeys);
    for (const auto& announced : announcedKeys) {
        keys.erase(announced);
    }
    announcedKeys.clear();
    if (keys.empty()) {
        return;
    }
    if (!clients.empty()) {
        sendToAll(Wire::noticeFrame(keys));
    }
    if (!settingObservers.empty()) {
        for (const auto& key : keys) {
            settingObservers.tell({key, std::nullopt});
        }
    }
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
    ObservedSetting told;
    if (tryGetStringMember(payload, "settingDBId", told.settingDBId) && performing != 0) {
        announcedKeys.insert(told.settingDBId);
    }
    sendToAll(Wire::eventFrame({messageType, messageId, now(), sequence, originName(currentOrigin)}, payload));
    if (!settingObservers.empty()) {
        auto& event = told.event.emplace();
        tryGetStringMember(payload, "from", event.from);
        tryGetStringMember(payload, "to", event.to);
        event.sequence = sequence;
        event.origin = currentOrigin;
        settingObservers.tell(std::move(told));
        tellObservers();
    }
    return messageId;
}

void MessageHub::sendResponse(const std::string& messageId, rapidjson::Document& payload) {
    if (!requester) {
        return;
    }
    outcome = RequestOutcome::ANSWERED;
    const Wire::Reply reply{currentType, messageId, payload};
    if (payload.GetAllocator().Size() <= Wire::maximumFrameSize) {
        sendTo(*requester, Wire::replyFrame(reply));
        return;
    }
    const std::size_t size = Wire::replyFrameSize(reply);
    if (!backlog->hasRoomFor(size)) {
        refuse(*requester, busy());
        return;
    }
    sendTo(*requester, Wire::replyFrame(reply, size));
}

void MessageHub::registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) {
    handlers[messageType] = std::move(handler);
}

}  // namespace SettingsHandlerKit
