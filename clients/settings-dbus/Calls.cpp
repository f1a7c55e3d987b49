#include "Calls.h"

#include <map>

#include "Wire/RefusalCode.h"

namespace SettingsDbus {

namespace {

using SettingsClient::Answer;
using SettingsClient::Client;

/// The error for a reason of an answer or the code of a refusal.
const char* errorFor(const std::string& reason) {
    static const std::map<std::string, const char*> errors{
        {SettingsClient::Reason::readOnly, ErrorName::readOnly},
        {SettingsClient::Reason::stale, ErrorName::stale},
        {SettingsClient::Reason::wrongForm, ErrorName::wrongForm},
        {SettingsClient::Reason::notStored, ErrorName::notStored},
        {Wire::RefusalCode::busy, ErrorName::unavailable},
        {Wire::RefusalCode::tooLarge, ErrorName::invalidArguments},
    };
    const auto found = errors.find(reason);
    return found == errors.end() ? ErrorName::failed : found->second;
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
        throw CallError(ErrorName::failed, "no change of '" + key + "' is known");
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

Message Calls::replyTo(const Call& call) {
    sd_bus_message* reply = nullptr;
    check("the reply", sd_bus_message_new_method_return(call.message.get(), &reply));
    Message owned(reply, &sd_bus_message_unref);
    Client& host = settings.host();
    host.actFor(callers.nameOf(call.message.get()));
    execute(host, call, reply);
    return owned;
}

void Calls::carryOut(const Call& call) {
    Message reply(nullptr, &sd_bus_message_unref);
    std::string name;
    std::string text;
    try {
        reply = replyTo(call);
    } catch (const CallError& error) {
        name = error.name;
        text = error.what();
    } catch (const SettingsClient::RequestRefused& refusal) {
        name = errorFor(refusal.code());
        text = refusal.message();
    } catch (const SettingsClient::NotSupported& error) {
        name = ErrorName::notSupported;
        text = error.what();
    } catch (const BusError& error) {
        name = ErrorName::failed;
        text = error.what();
    } catch (const std::runtime_error& error) {
        name = ErrorName::unavailable;
        text = error.what();
    }
    settings.tellChanges();
    if (reply) {
        sd_bus_send(nullptr, reply.get(), nullptr);
    } else {
        sd_bus_reply_method_errorf(call.message.get(), name.c_str(), "%s", text.c_str());
    }
}

}  // namespace SettingsDbus
