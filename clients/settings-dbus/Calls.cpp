#include "Calls.h"

#include <cstdint>
#include <optional>

#include "Wire/FrameInspector.h"
#include "Wire/RefusalCode.h"
#include "Wire/Utf8.h"

namespace SettingsDbus {

namespace {

using SettingsClient::Answer;
using SettingsClient::Client;

constexpr std::size_t maximumCallers = 256;

/// Empty when the bus does not tell it.
std::string programOf(sd_bus* bus, const std::string& uniqueName) {
    sd_bus_creds* found = nullptr;
    constexpr std::uint64_t wanted = SD_BUS_CREDS_PID | SD_BUS_CREDS_COMM | SD_BUS_CREDS_AUGMENT;
    const char* program = nullptr;
    const bool isKnown = sd_bus_get_name_creds(bus, uniqueName.c_str(), wanted, &found) >= 0 &&
                         sd_bus_creds_get_comm(found, &program) >= 0;
    const std::unique_ptr<sd_bus_creds, decltype(&sd_bus_creds_unref)> credentials(found, &sd_bus_creds_unref);
    return isKnown ? program : "";
}

/// The error for a reason of an answer or the code of a refusal.
const char* errorFor(const std::string& reason) {
    static const std::map<std::string, const char*> errors{
        {SettingsClient::Reason::readOnly, ErrorName::readOnly},
        {SettingsClient::Reason::stale, ErrorName::stale},
        {SettingsClient::Reason::wrongForm, ErrorName::wrongForm},
        {SettingsClient::Reason::notStored, ErrorName::notStored},
        {Wire::RefusalCode::busy, ErrorName::unavailable},
        {Wire::RefusalCode::tooLarge, SD_BUS_ERROR_INVALID_ARGS},
    };
    const auto found = errors.find(reason);
    return found == errors.end() ? SD_BUS_ERROR_FAILED : found->second;
}

void requireAcceptance(const Answer& answer) {
    if (!answer.accepted()) {
        throw CallError(errorFor(answer.reason), answer.message.empty() ? "the host refused it" : answer.message);
    }
}

std::string outcomeOf(const Answer& answer) {
    if (answer.accepted()) {
        return answer.outcome == SettingsClient::Outcome::CHANGED ? "changed" : "unchanged";
    }
    return answer.reason.empty() ? "refused" : answer.reason;
}

void undo(Client& host, const std::string& key) {
    const auto events = host.history(key, 1);
    if (events.empty()) {
        throw CallError(SD_BUS_ERROR_FAILED, "cannot undo '" + key + "': the host has no record of a change");
    }
    requireAcceptance(host.set(key, events.back().from));
}

void setMany(Client& host, const Call& call, sd_bus_message* reply) {
    std::vector<SettingsClient::Assignment> assignments;
    for (const auto& [key, value] : call.assignments) {
        assignments.push_back({key, value});
    }
    std::map<std::string, std::string> outcomes;
    for (const auto& answer : host.setAll(assignments)) {
        outcomes[answer.key] = outcomeOf(answer);
    }
    check("the reply", sd_bus_message_open_container(reply, 'a', "{ss}"));
    for (const auto& [key, outcome] : outcomes) {
        check("the reply", sd_bus_message_append(reply, "{ss}", key.c_str(), outcome.c_str()));
    }
    check("the reply", sd_bus_message_close_container(reply));
}

void execute(Client& host, const Call& call, sd_bus_message* reply) {
    if (call.method == "SetMany") {
        setMany(host, call, reply);
    } else if (call.method == "LogOut") {
        requireAcceptance(host.logOut());
    } else if (call.method == "OpenSettings") {
        requireAcceptance(host.openSettings());
    } else if (call.method == "Undo") {
        undo(host, call.assignments.front().first);
    } else {
        const auto& [key, value] = call.assignments.front();
        requireAcceptance(host.set(key, value));
    }
}

}  // namespace

/// The caller's unique name and, where the bus gives it, its program: ":1.42 busctl".
const std::string& Calls::callerOf(const Call& call) {
    const std::string uniqueName = senderOf(call);
    const auto known = callers.find(uniqueName);
    if (known != callers.end()) {
        return known->second;
    }
    if (callers.size() >= maximumCallers) {
        callers.clear();
    }
    const std::string program = programOf(sd_bus_message_get_bus(call.message.get()), uniqueName);
    const std::string name = uniqueName + " " + program;
    const bool isUsable = !program.empty() && Wire::isValidUtf8(name) && Wire::isClientName(name);
    return callers.emplace(uniqueName, isUsable ? name : uniqueName).first->second;
}

Message Calls::replyTo(const Call& call) {
    sd_bus_message* reply = nullptr;
    check("the reply", sd_bus_message_new_method_return(call.message.get(), &reply));
    Message owned(reply, &sd_bus_message_unref);
    Client& host = settings.host();
    host.actFor(callerOf(call));
    execute(host, call, reply);
    return owned;
}

void Calls::carryOut(const Call& call) {
    Message reply(nullptr, &sd_bus_message_unref);
    std::optional<CallError> failure;
    try {
        reply = replyTo(call);
    } catch (const CallError& error) {
        failure.emplace(error);
    } catch (const SettingsClient::RequestRefused& refusal) {
        failure.emplace(errorFor(refusal.code()), refusal.message());
    } catch (const std::runtime_error& error) {
        failure.emplace(ErrorName::unavailable, error.what());
    }
    // Signals before the answer: whoever has it can rely on what it knows.
    settings.tellChanges();
    if (failure) {
        sd_bus_reply_method_errorf(call.message.get(), failure->name.c_str(), "%s", failure->what());
    } else {
        sd_bus_send(nullptr, reply.get(), nullptr);
    }
}

}  // namespace SettingsDbus
