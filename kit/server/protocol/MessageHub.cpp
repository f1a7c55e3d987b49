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
#include "server/Hexadecimal.h"

namespace SettingsHandlerKit {

namespace {

using Utils::RapidjsonUtil::tryGetStringMember;

using SharedFrame = Clients::Frame;

SharedFrame shared(std::string frame) {
    return std::make_shared<const std::string>(std::move(frame));
}

/// Of the name of a run.
constexpr std::size_t runBytes = 16;

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
      environment(std::move(itsEnvironment)),
      clients(traffic, std::move(backlogOfClients)),
      queries(clients, history, hexadecimal(environment.random(runBytes))),
      messageIdPrefix("host-" + std::to_string(now()) + "-") {}

std::int64_t MessageHub::now() const {
    using namespace std::chrono;
    return duration_cast<milliseconds>(environment.now().time_since_epoch()).count();
}

void MessageHub::connected(const std::shared_ptr<Client>& client) {
    clients.add(client);
    traffic->clientConnected(*client);
}

void MessageHub::disconnected(const std::shared_ptr<Client>& client, DisconnectReason reason) {
    clients.remove(client);
    traffic->clientDisconnected(*client, reason);
}

void MessageHub::oversized(const std::shared_ptr<Client>& client) {
    clients.refuse(client, Wire::tooLarge());
}

void MessageHub::refused(Origin origin) {
    traffic->clientRefused(origin);
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
        clients.refuse(client, *reason);
        return;
    }
    if (!request.HasMember("type")) {
        if (request.HasMember("batch")) {
            handleBatch(client, request);
            return;
        }
        if (queries.handles(request)) {
            queries.handle(client, request);
            return;
        }
    }
    handleRequest(client, request, frame);
}

void MessageHub::handleRequest(const std::shared_ptr<Client>& client, const rapidjson::Value& request,
                               const std::string& text) {
    const auto type = Wire::requestType(request);
    if (!type || handlers.count(*type) == 0) {
        clients.refuse(
            client, {Wire::RefusalCode::unknownType, R"("type" must be one of the request types 7, 18, 19, 22, 24)"});
        return;
    }
    const RequestContext::Scope current(*context, {*type, settingNamedIn(*type, request)});
    deliver(client, *type, text);
}

void MessageHub::handleBatch(const std::shared_ptr<Client>& client, const rapidjson::Document& /*frame*/) {
    clients.refuse(client, {Wire::RefusalCode::badBatch, "batches are not handled yet"});
}

void MessageHub::deliver(const std::shared_ptr<Client>& client, int type, const std::string& frame) {
    requester = client;
    currentType = type;
    outcome = RequestOutcome::SILENT;
    if (type == Wire::LOG_OUT) {
        history.clear();
    }
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
        clients.refuse(client, Clients::tooMuchQueued());
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
    announce({shared(Wire::noticeFrame(keys)), {keys.begin(), keys.end()}, 0});
    if (!settingObservers.empty()) {
        for (const auto& key : keys) {
            settingObservers.tell({key, std::nullopt});
        }
    }
}

/// Each event and each notice.
void MessageHub::announce(Announcement announcement) {
    const bool isNotice = announcement.sequence == 0;
    if (!isNotice || !clients.empty()) {
        clients.sendToAll(announcement.frame);
    }
    history.add(std::move(announcement));
}

std::string MessageHub::sendMessage(int messageType, rapidjson::Document& payload) {
    ++sequence;
    outcome = RequestOutcome::CHANGED;
    std::string messageId = messageIdPrefix + std::to_string(sequence);
    ObservedSetting told;
    if (tryGetStringMember(payload, "settingDBId", told.settingDBId) && performing != 0) {
        announcedKeys.insert(told.settingDBId);
    }
    announce({shared(Wire::eventFrame({messageType, messageId, now(), sequence, originName(currentOrigin)}, payload)),
              {told.settingDBId},
              sequence});
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
        clients.sendTo(requester, shared(Wire::replyFrame(reply)));
        return;
    }
    const std::size_t size = Wire::replyFrameSize(reply);
    if (!clients.hasRoomFor(size)) {
        clients.refuse(requester, Clients::tooMuchQueued());
        return;
    }
    clients.sendTo(requester, shared(Wire::replyFrame(reply, size)));
}

void MessageHub::registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) {
    handlers[messageType] = std::move(handler);
}

}  // namespace SettingsHandlerKit
