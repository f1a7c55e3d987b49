#include "handler/Outcomes.h"

#include <utility>

#include "CommunicationHandler/MessageType.h"
#include "SettingsHandlerKit/SettingDescriptions.h"
#include "handler/SetRequest.h"

namespace SettingsHandlerKit {

namespace {

using Kind = Outcome::Kind;
using Reason = Outcome::Reason;

constexpr const char* notStored = "the value could not be stored";
constexpr const char* failed = "the service failed while it handled this";

Outcome refusal(Reason reason, std::string message, const std::string& settingDBId = "") {
    Outcome outcome;
    outcome.kind = Kind::REFUSED;
    outcome.reason = reason;
    outcome.settingDBId = settingDBId;
    outcome.message = std::move(message);
    return outcome;
}

bool isReadOnly(const std::string& settingDBId) {
    const SettingDescription* setting = describeSetting(settingDBId);
    return setting != nullptr && setting->setBy == SetBy::DEVICE;
}

bool hasWrongForm(const std::string& settingDBId, const std::string& value) {
    const SettingDescription* setting = describeSetting(settingDBId);
    return setting != nullptr && setting->kind == SettingKind::LOCALES && !asLocales(value);
}

/// Of a `setSetting` that changed nothing although no owner refused the value.
Outcome outcomeOfNoChange(const std::string& settingDBId, const std::string& value) {
    if (isReadOnly(settingDBId)) {
        return refusal(Reason::READ_ONLY, "only the device changes this setting", settingDBId);
    }
    if (hasWrongForm(settingDBId, value)) {
        return refusal(Reason::WRONG_FORM, "must be a JSON array with at least one locale", settingDBId);
    }
    Outcome outcome;
    outcome.kind = Kind::UNCHANGED;
    outcome.settingDBId = settingDBId;
    return outcome;
}

/// Incomplete or stale, if it is; otherwise `other` with the setting of the request.
Outcome outcomeOfSetRequest(const std::string& text, const RequestSurroundings& around, Outcome other) {
    const SetRequest request = readSetRequest(text, around.transport);
    if (!request.missing.empty()) {
        return refusal(Reason::INCOMPLETE, request.missing, request.settingDBId);
    }
    const auto newest = around.newest.find(request.settingDBId);
    if (newest && *newest > request.timestamp) {
        Outcome outcome =
            refusal(Reason::STALE, "a request with the newer time stamp " + std::to_string(*newest) + " was accepted",
                    request.settingDBId);
        outcome.newest = *newest;
        return outcome;
    }
    other.settingDBId = request.settingDBId;
    return other;
}

}  // namespace

void setWriteOutcome(Outcome& outcome, const Operation& write, bool changed, const std::string& settingDBId,
                     const std::string& value) {
    if (write.storageRefused) {
        outcome = refusal(Reason::NOT_STORED, notStored, settingDBId);
        return;
    }
    if (!changed) {
        outcome = outcomeOfNoChange(settingDBId, value);
        return;
    }
    outcome.kind = Kind::CHANGED;
    outcome.reason = Reason::NONE;
    outcome.settingDBId = settingDBId;
    outcome.applied = !write.sdkRefused;
    outcome.newest = 0;
    outcome.rejected = false;
    outcome.message.clear();
}

Outcome outcomeOfFailure(const Operation& write, const std::string& settingDBId) {
    if (!write.done) {
        return refusal(Reason::NOT_STORED, failed, settingDBId);
    }
    Outcome outcome;
    outcome.kind = Kind::CHANGED;
    outcome.settingDBId = settingDBId;
    outcome.applied = !write.sdkRefused;
    return outcome;
}

Outcome outcomeOfRejection(const std::string& settingDBId) {
    Outcome outcome = refusal(Reason::WRONG_FORM, "must be a JSON array of at most 32 levels", settingDBId);
    outcome.rejected = true;
    return outcome;
}

Outcome outcomeOfRequest(const Operation& request, const std::string& text, const RequestSurroundings& around) {
    switch (request.type) {
        case CommunicationHandler::SET_SETTINGS:
            return outcomeOfSetRequest(text, around, refusal(Reason::NONE, "the service did not take it"));
        case CommunicationHandler::LOG_OUT:
            return request.done ? Outcome() : refusal(Reason::NOT_STORED, "the storage could not be cleared");
        case CommunicationHandler::OPEN_VA_SETTINGS:
            return {};
        default:
            return request.done ? Outcome()
                                : refusal(Reason::INCOMPLETE, "the request is not JSON, or a member is missing");
    }
}

Outcome outcomeOfFailure(const Operation& request, const std::string& text, const RequestSurroundings& around) {
    if (request.done) {
        return {};
    }
    switch (request.type) {
        case CommunicationHandler::SET_SETTINGS:
            return outcomeOfSetRequest(text, around, refusal(Reason::NOT_STORED, failed));
        case CommunicationHandler::LOG_OUT:
            return refusal(Reason::NOT_STORED, failed);
        default:
            return refusal(Reason::NONE, failed);
    }
}

Outcome outcomeOfRejection(const std::string& text, const RequestSurroundings& around) {
    Outcome outcome = outcomeOfSetRequest(text, around, outcomeOfRejection(std::string()));
    outcome.rejected = true;
    return outcome;
}

Outcome busyOutcome(const std::string& error) {
    return refusal(Reason::BUSY, error);
}

}  // namespace SettingsHandlerKit
