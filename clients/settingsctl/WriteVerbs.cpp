#include <algorithm>
#include <limits>

#include "Keys.h"
#include "Results.h"
#include "Verbs.h"
#include "Wire/Catalogue.h"

namespace SettingsCtl {

namespace {

using SettingsClient::Answer;
using SettingsClient::Assignment;

std::vector<Assignment> assignmentsOf(const std::vector<std::string>& keysAndValues) {
    if (keysAndValues.size() % 2 != 0) {
        throw Failure(WRONG_USAGE, "'" + keysAndValues.back() + "' has no VALUE");
    }
    std::vector<Assignment> assignments;
    for (std::size_t index = 0; index < keysAndValues.size(); index += 2) {
        assignments.push_back({keysAndValues[index], keysAndValues[index + 1]});
    }
    return assignments;
}

std::vector<Answer> send(SettingsClient::Client& client, const std::vector<Assignment>& assignments) {
    if (assignments.size() == 1) {
        const Assignment& only = assignments.front();
        return {client.set(only.key, only.value, only.timestamp)};
    }
    return client.setAll(assignments);
}

/// Sends what is stale once more, with newer time stamps than the host has seen.
void overrule(SettingsClient::Client& client, const std::vector<Assignment>& assignments,
              std::vector<Answer>& answers) {
    std::vector<std::size_t> indexes;
    std::vector<Assignment> newer;
    for (std::size_t index = 0; index < assignments.size(); ++index) {
        if (const auto newest = answers.at(index).newest) {
            indexes.push_back(index);
            newer.push_back(assignments[index]);
            newer.back().timestamp = *newest < std::numeric_limits<std::int64_t>::max() ? *newest + 1 : *newest;
        }
    }
    if (!newer.empty()) {
        auto further = send(client, newer);
        for (std::size_t index = 0; index < indexes.size(); ++index) {
            answers[indexes[index]] = std::move(further.at(index));
        }
    }
}

ExitStatus printDone(const Context& context, const Answer& answer) {
    if (!answer.accepted()) {
        printError("refused: " + answer.message);
        return REFUSED;
    }
    if (context.style.json) {
        printLine(context.style, "{\"ok\":true}");
    }
    return DONE;
}

}  // namespace

ExitStatus set(const Context& context, const std::vector<std::string>& keysAndValues, bool force) {
    const auto assignments = assignmentsOf(keysAndValues);
    for (const auto& assignment : assignments) {
        refuseUnknownKeys(context, {assignment.key});
    }
    for (const auto& assignment : assignments) {
        warnOfUnlistedChoice(context, assignment.key, assignment.value);
    }
    auto client = context.client();
    auto answers = send(client, assignments);
    if (force) {
        overrule(client, assignments, answers);
    }
    return printResults(context, assignments, answers);
}

ExitStatus openSettings(const Context& context) {
    return printDone(context, context.client().openSettings());
}

ExitStatus logOut(const Context& context) {
    return printDone(context, context.client().logOut());
}

}  // namespace SettingsCtl
