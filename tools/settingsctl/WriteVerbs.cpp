#include <cstdio>
#include <optional>

#include "Session.h"
#include "Verbs.h"

namespace SettingsCtl {

namespace {

std::string likelyReason(const std::string& key) {
    if (key == "captionsEnabled") {
        return "it is set on the device only, with 'settingsctl device captions on|off'";
    }
    if (key == "doNotDisturbEnabled") {
        return "it is set on the device only, with 'settingsctl device do-not-disturb on|off'";
    }
    if (key == "orliaLocale") {
        return "it must be a JSON array with at least one locale, for example [\"en-US\"]";
    }
    return "the host did not accept it, or had seen a newer request; its log says why";
}

void printResult(const Context& context, const std::string& result, const Change& change) {
    if (context.style.json) {
        printLine(context.style,
                  jsonObject({{"key", change.key}, {"from", change.from}, {"to", change.to}, {"result", result}}));
    } else if (result == "changed") {
        printLine(context.style, changeLine(change.key, change.from, change.to));
    } else if (result == "unchanged") {
        printLine(context.style, escaped(change.key) + ": unchanged");
    }
}

void tellOtherValue(const Context& context, const std::string& value) {
    if (!context.style.quiet) {
        std::fprintf(stderr, "settingsctl: accepted, but read back as '%s'\n", escaped(value).c_str());
    }
}

/// Sends a request that has no reply, and a question after it on the same connection: when the question is answered,
/// the request was served.
ExitStatus serve(const Context& context, MessageType type) {
    Session session(context);
    const std::string request = session.newMessageId();
    const std::string question = session.newMessageId();
    session.send(bareRequest(type, request) + bareRequest(IS_SELECTED, question));
    session.receiveReply(question);
    if (context.style.json) {
        printLine(context.style, "{\"ok\":true}");
    }
    return DONE;
}

}  // namespace

ExitStatus set(const Context& context, const std::string& key, const std::string& value) {
    Session session(context);
    const std::string oldValue = session.getSettings({key})[key];

    const std::string request = session.newMessageId();
    const std::string question = session.newMessageId();
    session.send(setSettingsRequest(request, session.newTimestamp(), key, value) + getSettingsRequest(question, {key}));
    std::optional<Change> accepted;
    auto settings = session.receiveSettings(question, [&](const Frame& frame) {
        const auto change = frame.change();
        if (change && change->key == key && change->to == value) {
            accepted = change;
        }
    });
    const std::string& newValue = settings[key];

    if (accepted) {
        printResult(context, "changed", *accepted);
        if (newValue != value) {
            tellOtherValue(context, newValue);
        }
        return DONE;
    }
    if (newValue == value) {
        printResult(context, "unchanged", {key, value, value});
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
