#include "History.h"
#include "Keys.h"
#include "Results.h"
#include "SettingsClient/Client.h"
#include "Times.h"
#include "Verbs.h"
#include "Wire/Catalogue.h"

namespace SettingsCtl {

namespace {

ExitStatus setTo(const Context& context, SettingsClient::Client& client, const std::string& key,
                 const std::string& value) {
    return printResult(context, value, client.set(key, value));
}

}  // namespace

std::string originOf(const SettingsClient::Event& event) {
    return escaped(event.client.empty() ? event.origin : event.client + ", " + event.origin);
}

ExitStatus history(const Context& context, const std::optional<std::string>& key) {
    if (key) {
        refuseUnknownKeys(context, {*key});
    }
    SettingsClient::Client client = context.client();
    for (const auto& event : client.history(key.value_or(""))) {
        const std::string change = changeLine(context.style, event.key, event.from, event.to);
        if (context.style.json) {
            printLine(context.style, event.frame);
        } else if (context.style.bareValues) {
            printLine(context.style, change);
        } else {
            printLine(context.style, coloured(context.style, Colour::FAINT, localTime(event.timestamp)) + " " + change +
                                         coloured(context.style, Colour::FAINT, " (" + originOf(event) + ")"));
        }
    }
    return DONE;
}

ExitStatus undo(const Context& context, const std::string& key) {
    refuseUnknownKeys(context, {key});
    SettingsClient::Client client = context.client();
    const auto events = client.history(key, 1);
    if (events.empty()) {
        throw Failure(REFUSED, "cannot undo '" + key + "': " + noChangeKnown);
    }
    return setTo(context, client, key, events.back().from);
}

ExitStatus reset(const Context& context, const std::string& key) {
    refuseUnknownKeys(context, {key});
    const auto* const setting = Wire::findSetting(key);
    if (setting == nullptr || !setting->defaultValue) {
        throw Failure(REFUSED, "'" + key + "' has no default");
    }
    SettingsClient::Client client = context.client();
    return setTo(context, client, key, *setting->defaultValue);
}

}  // namespace SettingsCtl
