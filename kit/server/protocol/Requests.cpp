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
std::string forLog(const std::optional<std::string>& settingDBId) {
    constexpr std::size_t longestKey = 256;
    return settingDBId ? Wire::withValidUtf8(settingDBId->substr(0, longestKey)) : "";
}

/// Does the handler write it to the storage itself? The friendly name is stored, but by the voice SDK.
bool isWrittenToStorage(const std::string& settingDBId) {
    const SettingDescription* const setting = describeSetting(settingDBId);
    return setting == nullptr ||
           (setting->owner == SettingOwner::STORAGE && setting->type != SettingsHandler::FRIENDLY_NAME);
}

/// Returns: the value that a request has written to the storage; nothing when GetSettings may report another one.
std::optional<std::string_view> storedValueIn(const rapidjson::Value& request, const std::string& settingDBId) {
    const auto value = textOf(*memberOf(*memberOf(request, "payload"), "to"));
    return !value.empty() && isWrittenToStorage(settingDBId) ? std::optional<std::string_view>(value) : std::nullopt;
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
    const auto handler = asksForAnswer(*type, request.members) ? checkedHandler.lock() : nullptr;
    const auto* const messageId = memberOf(request.members, "messageId");
    if (handler && (messageId == nullptr || !messageId->IsString())) {
        clients.refuse(request.client,
                       {Wire::RefusalCode::noMessageId, R"("answer" needs a "messageId" that is a string)"},
                       request.index);
        return;
    }
    const auto clientName = nameFor(request);
    if (!clientName) {
        clients.refuse(
            request.client,
            {Wire::RefusalCode::badRequest, R"("client" must be 1 to 64 characters, none of them a control character)"},
            request.index);
        return;
    }
    const auto setting = *type == Wire::SET_SETTINGS ? Wire::requestedSetting(request.members) : std::nullopt;
    const RequestContext::Scope scope(*context, {*type, forLog(setting)});
    current =
        Current{request.client, *type, request.index, RequestOutcome::SILENT, std::nullopt, announcements.newest()};
    if (handler) {
        current.key = setting;
    }
    const bool isDelivered = delivery == Delivery::NORMAL || *type != Wire::SET_SETTINGS;
    if (isDelivered) {
        deliver(request, *clientName);
    }
    if (handler) {
        answer(*handler, request.members, isDelivered ? handler->outcome() : notStoredOutcome());
    }
    if (delivery == Delivery::NORMAL) {
        traffic->requestHandled(*type, current.outcome);
    }
    current.requester.reset();
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
        clients.refuse(current.requester, Clients::tooMuchQueued(), current.index);
        current.outcome = RequestOutcome::ANSWERED;
    }
}

void Requests::answer(CheckedSettingsHandler& handler, const rapidjson::Value& request, const Outcome& outcome) {
    Wire::Answer answer;
    answer.type = current.type;
    answer.messageId = textOf(*memberOf(request, "messageId"));
    answer.outcome = outcomeName(current.type, outcome.kind);
    if (outcome.kind == Outcome::Kind::REFUSED) {
        answer.reason = reasonName(outcome.reason);
        answer.message = outcome.message;
    }
    std::optional<std::string> value;
    if (current.key) {
        answer.settingDBId = *current.key;
        // No other event: it still has the value that was written just now.
        answer.value = outcome.kind == Outcome::Kind::CHANGED && announcements.newest() == current.eventBefore + 1
                           ? storedValueIn(request, *current.key)
                           : std::nullopt;
        if (!answer.value) {
            value = currentValue(handler);
            answer.value = value;
        }
    }
    answer.applied = outcome.applied;
    if (outcome.reason == Outcome::Reason::STALE) {
        answer.newest = outcome.newest;
    }
    send(Wire::answerFrame(answer));
}

/// Returns: what GetSettings reports now for the setting of the request; nothing when it has no value.
std::optional<std::string> Requests::currentValue(CheckedSettingsHandler& handler) const {
    try {
        const auto values = handler.getSettings({*current.key});
        const auto found = values.find(*current.key);
        return found == values.end() ? std::nullopt : std::optional<std::string>(found->second);
    } catch (const std::exception& error) {
        writeLog(VessaLogger::ERROR, std::string("cannot read a value for an answer: ") + error.what());
        return std::nullopt;
    }
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
        clients.refuse(current.requester, Clients::tooMuchQueued(), current.index);
        return;
    }
    clients.sendTo(current.requester, std::make_shared<const std::string>(Wire::replyFrame(reply, size)));
}

/// To the requester, if there is room.
void Requests::send(std::string frame) {
    if (!clients.hasRoomFor(frame.size())) {
        clients.refuse(current.requester, Clients::tooMuchQueued(), current.index);
        return;
    }
    clients.sendTo(current.requester, std::make_shared<const std::string>(std::move(frame)));
}

}  // namespace SettingsHandlerKit
