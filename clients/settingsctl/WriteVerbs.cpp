#include <cstdio>
#include <optional>

#include "DeviceSwitch.h"
#include "Verbs.h"
#include "Wire/Requests.h"

namespace SettingsCtl {

namespace {

/// Why the host refused to change the setting, as far as the catalogue tells: the host sends no reason.
std::string likelyReason(const std::string& key) {
    const auto* const setting = Wire::findSetting(key);
    if (const auto deviceSwitch = setting == nullptr ? std::nullopt : deviceSwitchOf(*setting)) {
        return "only the device can change it: use 'settingsctl device " + deviceSwitch->verb + " on|off'";
    }
    if (setting != nullptr && setting->kind == Wire::SettingKind::LOCALES) {
        return "it must be a JSON array with at least one locale, for example [\"en-US\"]";
    }
    return "the host did not accept it or has seen a newer request; see the host's log";
}

void printResult(const Context& context, const std::string& result, const Wire::Change& change) {
    if (context.style.json) {
        printLine(context.style,
                  jsonObject({{"key", change.key}, {"from", change.from}, {"to", change.to}, {"result", result}}));
    } else if (result == "changed") {
        printLine(context.style, changeLine(context.style, change.key, change.from, change.to));
    } else if (result == "unchanged") {
        printLine(context.style, escaped(change.key) + ": unchanged");
    }
}

void warnOfOtherValue(const Context& context, const std::string& value) {
    if (!context.style.quiet) {
        std::fprintf(stderr, "settingsctl: accepted, but read back as '%s'\n", escaped(value).c_str());
    }
}

/// Sends a request that has no reply, then one that has: its reply means that the first request was served.
ExitStatus sendAndWait(const Context& context, Wire::MessageType type) {
    auto session = context.openSession();
    const std::string request = session.newMessageId();
    const std::string query = session.newMessageId();
    session.send({Wire::bareRequest(type, request), Wire::bareRequest(Wire::IS_ORLIA_SELECTED_VA, query)});
    session.receiveReply(query);
    if (context.style.json) {
        printLine(context.style, "{\"ok\":true}");
    }
    return DONE;
}

}  // namespace

ExitStatus set(const Context& context, const std::string& key, const std::string& value) {
    auto session = context.openSession();
    const std::string oldValue = session.getSettings({key})[key];

    const std::string request = session.newMessageId();
    const std::string query = session.newMessageId();
    session.send({Wire::setSettingsRequest(request, session.newTimestamp(), key, value),
                  Wire::getSettingsRequest(query, {key})});
    std::optional<Wire::Change> accepted;
    auto settings = session.receiveSettings(query, [&](const Wire::HostFrame& frame) {
        const auto change = frame.change();
        if (change && change->key == key && change->to == value) {
            accepted = change;
        }
    });
    const std::string& newValue = settings[key];

    if (accepted) {
        printResult(context, "changed", *accepted);
        if (newValue != value) {
            warnOfOtherValue(context, newValue);
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
    return sendAndWait(context, Wire::OPEN_VA_SETTINGS);
}

ExitStatus logOut(const Context& context) {
    return sendAndWait(context, Wire::LOG_OUT);
}

}  // namespace SettingsCtl
