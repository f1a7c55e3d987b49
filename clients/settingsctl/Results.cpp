#include "Results.h"

#include "DeviceSwitch.h"

namespace SettingsCtl {

namespace {

using SettingsClient::Answer;
using SettingsClient::Outcome;

std::string whyReadOnly(const std::string& key) {
    const auto* const setting = Wire::findSetting(key);
    const auto deviceSwitch = setting == nullptr ? std::nullopt : deviceSwitchOf(*setting);
    return "only the device can change it" +
           (deviceSwitch ? ": use 'settingsctl device " + deviceSwitch->verb + " on|off'" : "");
}

std::string reasonFor(const Answer& answer) {
    namespace Reason = SettingsClient::Reason;
    if (answer.reason == Reason::readOnly) {
        return whyReadOnly(answer.key);
    }
    if (answer.reason == Reason::wrongForm) {
        return R"(it must be a JSON array with at least one locale, for example ["en-US"])";
    }
    if (answer.reason == Reason::stale) {
        return "the host has seen a request with a newer time stamp; use 'settingsctl set --force' to set it anyway";
    }
    if (answer.reason == Reason::notStored) {
        return answer.message + "; see the host's log";
    }
    return answer.message.empty() ? "the host did not accept it or has seen a newer request; see the host's log"
                                  : answer.message;
}

void printJson(const Context& context, const std::string& wanted, const Answer& answer) {
    std::map<std::string, std::string> members{{"key", answer.key}, {"to", wanted}};
    switch (answer.outcome) {
        case Outcome::CHANGED:
            members["result"] = "changed";
            members["from"] = answer.from.value_or("");
            break;
        case Outcome::REFUSED:
            members["result"] = "refused";
            members["from"] = answer.value.value_or("");
            members["reason"] = answer.reason;
            break;
        default:
            members["result"] = "unchanged";
            members["from"] = wanted;
    }
    printLine(context.style, jsonObject(members));
}

void printText(const Context& context, const std::string& wanted, const Answer& answer) {
    if (answer.outcome == Outcome::CHANGED) {
        printLine(context.style, changeLine(context.style, answer.key, answer.from.value_or(""), wanted));
    } else if (answer.accepted()) {
        printLine(context.style, context.style.bareValues ? escaped(wanted) : escaped(answer.key) + ": unchanged");
    }
}

void warn(const Context& context, const std::string& wanted, const Answer& answer) {
    if (answer.outcome != Outcome::CHANGED) {
        return;
    }
    if (!answer.applied) {
        printWarning(context.style, "changed, but the voice SDK refused the value");
    } else if (answer.value.value_or("") != wanted) {
        printWarning(context.style, "changed, but the host reports '" + answer.value.value_or("") + "'");
    }
}

}  // namespace

ExitStatus printResult(const Context& context, const std::string& wanted, const Answer& answer) {
    if (context.style.json) {
        printJson(context, wanted, answer);
    } else {
        printText(context, wanted, answer);
    }
    warn(context, wanted, answer);
    if (answer.accepted()) {
        return DONE;
    }
    printError("'" + answer.key + "' was refused: " + reasonFor(answer));
    return REFUSED;
}

ExitStatus printResults(const Context& context, const std::vector<SettingsClient::Assignment>& assignments,
                        const std::vector<Answer>& answers) {
    ExitStatus status = DONE;
    for (std::size_t index = 0; index < assignments.size(); ++index) {
        if (printResult(context, assignments[index].value, answers.at(index)) != DONE) {
            status = REFUSED;
        }
    }
    return status;
}

}  // namespace SettingsCtl
