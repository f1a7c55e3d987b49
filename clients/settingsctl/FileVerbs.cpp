#include <algorithm>
#include <iterator>
#include <map>

#include "Files.h"
#include "Keys.h"
#include "Results.h"
#include "SettingsClient/Client.h"
#include "Verbs.h"
#include "Wire/Catalogue.h"
#include "Wire/FrameInspector.h"
#include "Wire/Locales.h"

namespace SettingsCtl {

namespace {

using SettingsClient::Answer;
using SettingsClient::Assignment;

/// Errors: `Failure` (REFUSED).
rapidjson::Document objectIn(const std::string& file) {
    const std::string text = contentsOf(file);
    rapidjson::Document document;
    if (const auto fault = Wire::inspectFrame(text, document)) {
        throw Failure(REFUSED, "'" + file + "' is not a JSON object, or is nested too deeply");
    }
    return document;
}

/// Why a member of the file is not sent; nothing for one that is.
std::optional<std::string> faultOf(const Context& context, const std::string& key, const rapidjson::Value& value) {
    if (auto unknown = unknownKey(context, key)) {
        return unknown;
    }
    if (!value.IsString()) {
        return "'" + key + "' was refused: its value must be a string";
    }
    return std::nullopt;
}

/// What the file asks for.
struct Wanted {
    std::vector<Assignment> assignments;
    /// A member is none.
    bool hasFaults = false;
};

/// Reports the faults.
Wanted readFile(const Context& context, const std::string& file) {
    const rapidjson::Document object = objectIn(file);
    std::map<std::string, std::string> values;
    Wanted wanted;
    for (const auto& member : object.GetObject()) {
        const std::string key(member.name.GetString(), member.name.GetStringLength());
        if (const auto fault = faultOf(context, key, member.value)) {
            printError(*fault);
            wanted.hasFaults = true;
        } else {
            // Of members with the same name the last one counts.
            values[key] = std::string(member.value.GetString(), member.value.GetStringLength());
        }
    }
    for (const auto& [key, value] : values) {
        warnOfUnlistedChoice(context, key, value);
        wanted.assignments.push_back({key, value});
    }
    return wanted;
}

/// The answer that the host would give, as far as it is known here.
Answer predicted(const Assignment& assignment, const std::map<std::string, std::string>& current) {
    Answer answer;
    answer.key = assignment.key;
    const auto* const setting = Wire::findSetting(assignment.key);
    const auto value = current.find(assignment.key);
    if (value != current.end()) {
        answer.value = value->second;
    }
    if (setting != nullptr && setting->setByDeviceOnly) {
        answer.outcome = SettingsClient::Outcome::REFUSED;
        answer.reason = SettingsClient::Reason::readOnly;
    } else if (setting != nullptr && setting->kind == Wire::SettingKind::LOCALES &&
               !Wire::localesIn(assignment.value)) {
        answer.outcome = SettingsClient::Outcome::REFUSED;
        answer.reason = SettingsClient::Reason::wrongForm;
    } else if (answer.value == assignment.value) {
        answer.outcome = SettingsClient::Outcome::UNCHANGED;
    } else {
        answer.outcome = SettingsClient::Outcome::CHANGED;
        answer.from = answer.value.value_or("");
        answer.value = assignment.value;
    }
    return answer;
}

std::vector<std::string> keysOf(const std::vector<Assignment>& assignments) {
    std::vector<std::string> keys;
    std::transform(assignments.begin(), assignments.end(), std::back_inserter(keys),
                   [](const auto& assignment) { return assignment.key; });
    return keys;
}

/// Prints what would change, and what the host would refuse.
ExitStatus printPrediction(const Context& context, SettingsClient::Client& client,
                           const std::vector<Assignment>& assignments) {
    const auto current = client.get(keysOf(assignments));
    ExitStatus status = DONE;
    for (const auto& assignment : assignments) {
        const Answer answer = predicted(assignment, current);
        if (answer.outcome != SettingsClient::Outcome::UNCHANGED &&
            printResult(context, assignment.value, answer) != DONE) {
            status = REFUSED;
        }
    }
    return status;
}

}  // namespace

ExitStatus dump(const Context& context) {
    std::map<std::string, std::string> values;
    std::string lines;
    for (const auto& [key, value] : context.client().get()) {
        const auto* const setting = Wire::findSetting(key);
        if (setting != nullptr && !setting->setByDeviceOnly) {
            values[key] = value;
            lines += (lines.empty() ? "{\n  " : ",\n  ") + jsonString(key) + ": " + jsonString(value);
        }
    }
    // A setting a line, for people and for tools that compare lines.
    printLine(context.style, context.style.json || values.empty() ? jsonObject(values) : lines + "\n}");
    return DONE;
}

ExitStatus load(const Context& context, const std::string& file, bool dryRun) {
    const Wanted wanted = readFile(context, file);
    if (wanted.assignments.empty()) {
        return wanted.hasFaults ? REFUSED : DONE;
    }
    SettingsClient::Client client = context.client();
    const ExitStatus status = dryRun ? printPrediction(context, client, wanted.assignments)
                                     : printResults(context, wanted.assignments, client.setAll(wanted.assignments));
    return wanted.hasFaults ? REFUSED : status;
}

}  // namespace SettingsCtl
