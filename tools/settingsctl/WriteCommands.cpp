#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>

#include "Commands.h"
#include "Session.h"

namespace SettingsCtl {

namespace {

std::int64_t millisecondsSinceEpoch() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::string likelyReason(const std::string& key) {
    if (key == "captionsEnabled" || key == "doNotDisturbEnabled") {
        return "it is set on the device only";
    }
    if (key == "orliaLocale") {
        return "it must be a JSON array with at least one locale, for example [\"en-US\"]";
    }
    return "the host did not accept it, or a newer request came before; its log says why";
}

void printResult(const Context& context, const std::string& result, const Change& change) {
    if (context.style.json) {
        printLine(context.style,
                  jsonObject({{"key", change.key}, {"from", change.from}, {"to", change.to}, {"result", result}}));
    } else if (result == "changed") {
        printLine(context.style, changeLine(change.key, change.from, change.to));
    } else if (result == "unchanged") {
        printLine(context.style, escapeControlCharacters(change.key) + ": unchanged");
    }
}

/// Sends a request that has no answer, and a question after it on the same connection: when the question is answered,
/// the request was served.
ExitStatus serve(const Context& context, MessageType type) {
    Session session(context);
    const std::string question = session.newMessageId();
    session.send(bareRequest(type, session.newMessageId()) + bareRequest(IS_SELECTED, question));
    session.receiveReply(question);
    if (context.style.json) {
        printLine(context.style, "{\"done\":true}");
    }
    return DONE;
}

}  // namespace

ExitStatus set(const Context& context, const std::string& key, const std::string& value) {
    Session session(context);
    const std::string before = session.newMessageId();
    const std::string after = session.newMessageId();
    session.send(getSettingsRequest(before, {key}) +
                 setSettingsRequest(session.newMessageId(), millisecondsSinceEpoch(), {key, "", value}) +
                 getSettingsRequest(after, {key}));

    const std::string oldValue = session.receiveReply(before).stringsAt({"payload", "settings"})[key];
    std::optional<Change> accepted;
    const auto remember = [&](const Change& change) {
        if (change.key == key && change.to == value) {
            accepted = change;
        }
    };
    const std::string newValue = session.receiveReply(after, remember).stringsAt({"payload", "settings"})[key];

    if (accepted) {
        printResult(context, "changed", *accepted);
        if (newValue != value && !context.style.quiet) {
            std::fprintf(stderr, "settingsctl: accepted, but read back as '%s'\n",
                         escapeControlCharacters(newValue).c_str());
        }
        return DONE;
    }
    if (newValue == value) {
        printResult(context, "unchanged", {key, oldValue, value});
        return DONE;
    }
    printResult(context, "refused", {key, oldValue, value});
    throw Failure(REFUSED, "'" + key + "' was refused: " + likelyReason(key));
}

ExitStatus openSettings(const Context& context) {
    return serve(context, OPEN_SETTINGS);
}

ExitStatus logOut(const Context& context) {
    return serve(context, LOG_OUT);
}

}  // namespace SettingsCtl
