#include "server/protocol/Requests.h"

#include <exception>
#include <utility>

#include "SettingsHandlerKit/SettingDescriptions.h"
#include "Wire/AnswerFrame.h"
#include "Wire/FrameInspector.h"
#include "Wire/Frames.h"
#include "Wire/MessageType.h"
#include "Wire/RefusalCode.h"
#include "Wire/Utf8.h"

namespace SettingsHandlerKit {

namespace {

const rapidjson::Value* memberOf(const rapidjson::Value& object, const char* name) {
    const auto found = object.FindMember(name);
    return found == object.MemberEnd() ? nullptr : &found->value;
}

std::string_view textOf(const rapidjson::Value& string) {
    return {string.GetString(), string.GetStringLength()};
}

bool asksForAnswer(int type, const rapidjson::Value& request) {
    const auto* const answer = memberOf(request, "answer");
    return answer != nullptr && answer->IsTrue() && type != Wire::GET_SETTINGS && type != Wire::IS_ORLIA_SELECTED_VA;
}

/// Cut to the length of a key that can be stored, so that no client fills the log.
std::string forLog(std::optional<std::string_view> settingDBId) {
    constexpr std::size_t longestKey = 256;
    return settingDBId ? Wire::withValidUtf8(settingDBId->substr(0, longestKey)) : "";
}

/// Does the handler write it to the storage itself? The friendly name is stored, but by the voice SDK.
bool isWrittenToStorage(std::string_view settingDBId) {
    const SettingDescription* const setting = describeSetting(settingDBId);
    return setting == nullptr ||
           (setting->owner == SettingOwner::STORAGE && setting->type != SettingsHandler::FRIENDLY_NAME);
}

std::string_view outcomeName(int type, Outcome::Kind kind) {
    if (kind == Outcome::Kind::REFUSED) {
        return Wire::AnswerOutcome::refused;
    }
    if (type != Wire::SET_SETTINGS) {
        return Wire::AnswerOutcome::done;
    }
    return kind == Outcome::Kind::CHANGED ? Wire::AnswerOutcome::changed : Wire::AnswerOutcome::unchanged;
}

std::string_view reasonName(Outcome::Reason reason) {
    switch (reason) {
        case Outcome::Reason::INCOMPLETE:
            return Wire::AnswerReason::incomplete;
        case Outcome::Reason::STALE:
            return Wire::AnswerReason::stale;
        case Outcome::Reason::READ_ONLY:
            return Wire::AnswerReason::readOnly;
        case Outcome::Reason::WRONG_FORM:
            return Wire::AnswerReason::wrongForm;
        default:
            return Wire::AnswerReason::notStored;
    }
}

Outcome notStoredOutcome() {
    Outcome outcome;
    outcome.kind = Outcome::Kind::REFUSED;
    outcome.reason = Outcome::Reason::NOT_STORED;
    outcome.message = "the batch could not be stored";
    return outcome;
}

}  // namespace

Requests::Requests(Clients& allClients, Announcements& itsAnnouncements,
                   std::shared_ptr<TrafficObserver> trafficObserver, std::shared_ptr<RequestContext> requestContext)
    : clients(allClients),
      announcements(itsAnnouncements),
      traffic(std::move(trafficObserver)),
      context(std::move(requestContext)) {}

void Requests::registerHandler(int type, std::function<void(const std::string&)> handler) {
    handlers[type] = std::move(handler);
}

void Requests::handle(const Request& request, Delivery delivery) {
    const auto type = Wire::requestType(request.members);
    if (!type || !hasHandler(*type)) {
        clients.refuse(request.client, {Wire::RefusalCode::unknownType,
                                        R"("type" must be one of the request types 7, 18, 19, 22, 24)"});
        return;
    }
    current = {};
    current.requester = request.client;
    current.type = *type;
    current.index = request.index;
    current.eventBefore = announcements.newest();
    const auto answering = asksForAnswer(*type, request.members) ? checkedHandler.lock() : nullptr;
    if (const auto clientName = checkedName(request, answering != nullptr)) {
        handle(request, *clientName, answering.get(), delivery);
    }
    current.requester.reset();
}

void Requests::handle(const Request& request, const std::string& clientName, CheckedSettingsHandler* answering,
                      Delivery delivery) {
    if (current.type == Wire::SET_SETTINGS) {
        current.change = Wire::requestedChange(request.members);
    }
    const RequestContext::Scope scope(*context, {current.type, forLog(current.change.settingDBId)});
    const bool isDelivered = delivery == Delivery::NORMAL || current.type != Wire::SET_SETTINGS;
    if (isDelivered) {
        deliver(request, clientName);
    }
    if (answering != nullptr) {
        answer(*answering, isDelivered ? answering->outcome() : notStoredOutcome());
    }
    if (delivery == Delivery::NORMAL) {
        traffic->requestHandled(current.type, current.outcome);
    }
}

/// Refuses a request that asks for an answer without a message id, or has the name of a client that is not allowed.
/// Returns: the name of the client that it is from.
std::optional<std::string> Requests::checkedName(const Request& request, bool isAnswered) {
    const auto* const messageId = isAnswered ? memberOf(request.members, "messageId") : nullptr;
    if (messageId != nullptr && messageId->IsString()) {
        current.messageId = textOf(*messageId);
    } else if (isAnswered) {
        refuse({Wire::RefusalCode::noMessageId, R"("answer" needs a "messageId" that is a string)"});
        return std::nullopt;
    }
    auto name = nameFor(request);
    if (!name) {
        refuse({Wire::RefusalCode::badRequest,
                R"("client" must be 1 to 64 characters, none of them a control character)"});
    }
    return name;
}

/// Returns: the name of the client that the request is from; nothing when it gives one that is not allowed.
std::optional<std::string> Requests::nameFor(const Request& request) const {
    const auto* const given =
        request.client->listenerKind() == ListenerKind::UNIX_SOCKET ? memberOf(request.members, "client") : nullptr;
    if (given == nullptr) {
        return clients.nameOf(request.client);
    }
    if (!given->IsString() || !Wire::isClientName(textOf(*given))) {
        return std::nullopt;
    }
    return std::string(textOf(*given));
}

void Requests::deliver(const Request& request, const std::string& clientName) {
    if (current.type == Wire::LOG_OUT) {
        announcements.forget();
    }
    try {
        announcements.perform({request.client->origin(), clientName}, [&] { handlers.at(current.type)(request.text); });
        seeOutcome();
    } catch (const std::exception& error) {
        writeLog(VessaLogger::ERROR, "a request of type " + std::to_string(current.type) + " failed: " + error.what());
        current.outcome = RequestOutcome::FAILED;
    }
}

/// Of a request that was neither replied to nor led to an event.
void Requests::seeOutcome() {
    const auto handler = checkedHandler.lock();
    if (!handler || current.outcome != RequestOutcome::SILENT) {
        return;
    }
    const Outcome result = handler->outcome();
    if (result.rejected) {
        current.outcome = RequestOutcome::REJECTED;
    } else if (result.reason == Outcome::Reason::BUSY) {
        refuse(Clients::tooMuchQueued());
        current.outcome = RequestOutcome::ANSWERED;
    }
}

void Requests::answer(CheckedSettingsHandler& handler, const Outcome& outcome) {
    Wire::Answer answer;
    answer.type = current.type;
    answer.messageId = current.messageId;
    answer.outcome = outcomeName(current.type, outcome.kind);
    if (outcome.kind == Outcome::Kind::REFUSED) {
        answer.reason = reasonName(outcome.reason);
        answer.message = outcome.message;
    }
    answer.settingDBId = current.change.settingDBId;
    std::optional<std::string> value;
    if (outcome.kind == Outcome::Kind::CHANGED && hasWrittenValue()) {
        answer.value = current.change.to;
    } else if (answer.settingDBId) {
        value = currentValue(handler, std::string(*answer.settingDBId));
        answer.value = value;
    }
    answer.applied = outcome.applied;
    if (outcome.reason == Outcome::Reason::STALE) {
        answer.newest = outcome.newest;
    }
    send(Wire::answerFrame(answer));
}

/// Does GetSettings report the value that the request has written? Nothing else was written meanwhile, and it is stored
/// as it is; an empty one reads as the default.
bool Requests::hasWrittenValue() const {
    return announcements.newest() == current.eventBefore + 1 && current.change.to && !current.change.to->empty() &&
           isWrittenToStorage(*current.change.settingDBId);
}

/// Returns: what GetSettings reports now; nothing when there is no value.
std::optional<std::string> Requests::currentValue(CheckedSettingsHandler& handler, const std::string& settingDBId) {
    try {
        const auto values = handler.getSettings({settingDBId});
        const auto found = values.find(settingDBId);
        return found == values.end() ? std::nullopt : std::optional<std::string>(found->second);
    } catch (const std::exception& error) {
        writeLog(VessaLogger::ERROR, std::string("cannot read a value for an answer: ") + error.what());
        return std::nullopt;
    }
}

void Requests::refuse(const Wire::Refusal& reason) {
    clients.refuse(current.requester, reason, current.index);
}

void Requests::reply(const std::string& messageId, rapidjson::Document& payload) {
    if (!current.requester) {
        return;
    }
    current.outcome = RequestOutcome::ANSWERED;
    const Wire::Reply reply{current.type, messageId, payload};
    if (payload.GetAllocator().Size() <= Wire::maximumFrameSize) {
        send(Wire::replyFrame(reply));
        return;
    }
    const std::size_t size = Wire::replyFrameSize(reply);
    if (!clients.hasRoomFor(size)) {
        refuse(Clients::tooMuchQueued());
        return;
    }
    clients.sendTo(current.requester, std::make_shared<const std::string>(Wire::replyFrame(reply, size)));
}

/// To the requester, if there is room.
void Requests::send(std::string frame) {
    if (!clients.hasRoomFor(frame.size())) {
        refuse(Clients::tooMuchQueued());
        return;
    }
    clients.sendTo(current.requester, std::make_shared<const std::string>(std::move(frame)));
}

}  // namespace SettingsHandlerKit
