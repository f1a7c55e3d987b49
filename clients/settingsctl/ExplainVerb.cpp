#include <algorithm>
#include <map>
#include <optional>

#include "DeviceSwitch.h"
#include "History.h"
#include "Keys.h"
#include "SettingsClient/Client.h"
#include "Times.h"
#include "Verbs.h"
#include "Wire/Catalogue.h"
#include "Wire/ObjectWriter.h"

namespace SettingsCtl {

namespace {

/// What is to be said about one setting.
struct Explanation {
    SettingsClient::Setting setting;
    std::optional<std::string> value;
    std::optional<SettingsClient::Event> lastChange;
};

std::string inQuotes(const std::optional<std::string>& text) {
    return text ? "'" + escaped(*text) + "'" : "none";
}

std::string valuesOf(const SettingsClient::Setting& setting) {
    static const std::map<std::string, std::string> forms{
        {"text", "any text"},
        {"switch", "true, false"},
        {"locales", R"(a JSON array with at least one locale, for example ["en-US"])"},
        {"timezone", "an identifier of the tz database, for example Europe/Paris"},
        {"list", "a JSON array of texts"}};
    const auto form = forms.find(setting.kind);
    return form == forms.end() ? escaped(joined(setting.values)) : form->second;
}

std::string whoMaySet(const SettingsClient::Setting& setting) {
    const auto* const known = Wire::findSetting(setting.key);
    const auto deviceSwitch = known == nullptr ? std::nullopt : deviceSwitchOf(*known);
    return escaped(setting.setBy) + (deviceSwitch ? " only: settingsctl device " + deviceSwitch->verb + " on|off" : "");
}

std::string lastChangeOf(const Explanation& explanation) {
    if (!explanation.lastChange) {
        return std::string("unknown: ") + noChangeKnown;
    }
    const auto& event = *explanation.lastChange;
    return localTime(event.timestamp) + " from " + inQuotes(event.from) + " (" + originOf(event) + ")";
}

void printText(const Context& context, const Explanation& explanation) {
    const auto& setting = explanation.setting;
    const auto print = [&](const std::string& label, const std::string& text) {
        printLine(context.style, "  " + coloured(context.style, Colour::FAINT, label) + text);
    };
    printLine(context.style,
              coloured(context.style, Colour::BOLD, escaped(setting.key)) + ": " +
                  (setting.description.empty() ? "Not in the catalogue." : escaped(setting.description)));
    print("value    ", inQuotes(explanation.value));
    print("changed  ", lastChangeOf(explanation));
    if (setting.kind.empty()) {
        return;
    }
    print("default  ", inQuotes(setting.defaultValue));
    print("values   ", valuesOf(setting));
    print("owner    ", escaped(setting.owner));
    print("set by   ", whoMaySet(setting));
    print("privacy  ", escaped(setting.privacy));
}

void printJson(const Context& context, const Explanation& explanation) {
    const auto& setting = explanation.setting;
    Wire::ObjectWriter writer;
    writer.text("key", setting.key);
    if (!setting.kind.empty()) {
        writer.text("description", setting.description);
        writer.text("kind", setting.kind);
        writer.texts("values", setting.values);
        if (setting.defaultValue) {
            writer.text("default", *setting.defaultValue);
        }
        writer.text("owner", setting.owner);
        writer.text("setBy", setting.setBy);
        writer.text("privacy", setting.privacy);
    }
    if (explanation.value) {
        writer.text("value", *explanation.value);
    }
    if (const auto& event = explanation.lastChange) {
        writer.beginObject("changed");
        writer.number("timestamp", event->timestamp);
        writer.text("from", event->from);
        writer.text("origin", event->origin);
        if (!event->client.empty()) {
            writer.text("client", event->client);
        }
        writer.endObject();
    }
    printLine(context.style, writer.finish());
}

/// The settings to explain: all of the host's catalogue, or the one of `key`, which it may not have.
std::vector<SettingsClient::Setting> settingsOf(SettingsClient::Client& client, const std::optional<std::string>& key) {
    auto settings = client.catalogue();
    if (!key) {
        return settings;
    }
    const auto found =
        std::find_if(settings.begin(), settings.end(), [&](const auto& setting) { return setting.key == *key; });
    if (found != settings.end()) {
        return {*found};
    }
    SettingsClient::Setting unknown;
    unknown.key = *key;
    return {unknown};
}

}  // namespace

ExitStatus explain(const Context& context, const std::optional<std::string>& key) {
    if (key) {
        refuseUnknownKeys(context, {*key});
    }
    SettingsClient::Client client = context.client();
    const auto settings = settingsOf(client, key);
    const auto values = client.get(key ? std::vector{*key} : std::vector<std::string>());
    std::map<std::string, SettingsClient::Event> lastChanges;
    for (const auto& event : client.history(key.value_or(""))) {
        lastChanges[event.key] = event;
    }
    for (const auto& setting : settings) {
        Explanation explanation{setting, {}, {}};
        if (const auto value = values.find(setting.key); value != values.end()) {
            explanation.value = value->second;
        }
        if (const auto change = lastChanges.find(setting.key); change != lastChanges.end()) {
            explanation.lastChange = change->second;
        }
        if (context.style.json) {
            printJson(context, explanation);
        } else {
            printText(context, explanation);
        }
    }
    return DONE;
}

}  // namespace SettingsCtl
