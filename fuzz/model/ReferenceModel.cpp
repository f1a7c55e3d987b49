#include "model/ReferenceModel.h"

#include <utility>

#include "model/Json.h"

namespace SettingsHandlerFuzz {

namespace {

const char* const none = "CUSTOM_DEFAULT_VALUE";

/// Keys and defaults of all settings, by hand: the second opinion.
const std::map<std::string, std::string>& catalogue() {
    static const std::map<std::string, std::string> defaults{
        {"deviceName", "TV"},
        {"companionDevice", R"(["",""])"},
        {"orliaLocale", none},
        {"captionsEnabled", none},
        {"captionsFontSize", "FONT_MEDIUM"},
        {"captionsStyles", "STYLE_WHITE_ON_BLACK"},
        {"doNotDisturbEnabled", none},
        {"handsFreeEnabled", "false"},
        {"handsFreeAlwaysOnEnabled", "false"},
        {"handsFreeAlwaysOnDiscovered", "false"},
        {"pttAlwaysOnEnabled", "false"},
        {"pttAlwaysOnDiscovered", "false"},
        {"friendlyName", "TV"},
        {"tovanEntitlementStatus", none},
        {"timezone", none},
    };
    return defaults;
}

bool isKnown(const std::string& key) {
    return catalogue().count(key) > 0;
}

std::string word(bool value) {
    return value ? "true" : "false";
}

/// `text` up to its first NUL character, as a C string shows it.
std::string shown(const std::string& text) {
    return text.substr(0, text.find('\0'));
}

}  // namespace

void ReferenceModel::record(const std::string& entry) {
    // Enough for most inputs, in one allocation.
    if (journal.capacity() == 0) {
        journal.reserve(32);
    }
    journal.push_back(entry);
}

void ReferenceModel::line(int level, const std::string& text) {
    record("log " + std::to_string(level) + " SettingsHandler:" + text);
}

std::vector<std::string> ReferenceModel::take() {
    return std::exchange(journal, {});
}

// Reading

std::string ReferenceModel::deviceMode(const std::string& infoKey) {
    record("device.getDeviceInfo()");
    const auto entry = around.deviceInfo.find(infoKey);
    return word(entry != around.deviceInfo.end() && entry->second == "on");
}

std::string ReferenceModel::storedValue(const std::string& key) {
    record("storage.getValue(" + key + ")");
    const auto entry = around.stored.find(key);
    return entry == around.stored.end() ? "" : entry->second;
}

/// The value at its owner, or its default; empty when there is neither.
std::string ReferenceModel::ownersValue(const std::string& key) {
    if (key == "orliaLocale") {
        record("sdk.getLocales()");
        return arrayText(around.locales);
    }
    if (key == "timezone") {
        record("sdk.getTimezone()");
        return around.timezone;
    }
    if (key == "captionsEnabled") {
        record("sdk.isCaptionsEnabled()");
        return word(around.captionsEnabled);
    }
    if (key == "doNotDisturbEnabled") {
        record("sdk.isDoNotDisturbEnabled()");
        return word(around.doNotDisturbEnabled);
    }
    if (key == "handsFreeEnabled") {
        return deviceMode("currentHandsFreeStatus");
    }
    if (key == "handsFreeAlwaysOnEnabled") {
        return deviceMode("currentAlwaysOnVoiceMode");
    }
    if (key == "pttAlwaysOnEnabled") {
        return deviceMode("currentAlwaysOnPTTMode");
    }
    std::string value = storedValue(key);
    if (!value.empty()) {
        return value;
    }
    std::string byDefault = isKnown(key) ? catalogue().at(key) : none;
    if (byDefault == none) {
        line(3, "Default value was not found for " + shown(key));
        return "";
    }
    line(1, "Default value retrieved for " + shown(key));
    return byDefault;
}

std::map<std::string, std::string> ReferenceModel::getSettings(const std::vector<std::string>& names) {
    line(0, "getSettings");
    std::map<std::string, std::string> result;
    for (const auto& key : names.empty() ? *allKeys : names) {
        line(0, "SettingDBId: " + shown(key));
        const std::string value = ownersValue(key);
        // The time zone is reported even when it is empty.
        if (value.empty() && key != "timezone") {
            continue;
        }
        result[key] = value;
        if (!isKnown(key)) {
            cache[key] = value;
        }
    }
    return result;
}

std::map<std::string, std::string> ReferenceModel::getCurrentSettingsMap() {
    line(1, "getCurrentSettingsMap");
    for (const char* const key :
         {"doNotDisturbEnabled", "captionsEnabled", "orliaLocale", "timezone", "handsFreeEnabled"}) {
        cache[key] = ownersValue(key);
    }
    return cache;
}

void ReferenceModel::initializeSettings() {
    cache = getSettings({});
    record("log 1 Setting initial hands free status value %s:" + cache["handsFreeEnabled"]);
    switchHandsFree(cache["handsFreeEnabled"] == "true");
    const std::string alwaysOn = cache["handsFreeAlwaysOnEnabled"];
    record("log 1 Setting initial hands free always on status value %s:" + alwaysOn);
    apply("handsFreeAlwaysOnEnabled", alwaysOn);
    record("log 1 Setting initial PTT always on status value %s:" + alwaysOn);
    apply("pttAlwaysOnEnabled", cache["pttAlwaysOnEnabled"]);
}

void ReferenceModel::migrateExistingDeviceSettings() {
    line(1, "migrateExistingDeviceSettings");
    for (const std::string key : {"orliaLocale", "timezone"}) {
        const std::string value = storedValue(key);
        if (value.empty()) {
            line(1, "No value retrieved for " + key);
        } else if (setSetting(key, value)) {
            line(1, key + " migrated successfully");
            record("storage.removeValue(" + key + ")");
            if (!around.refusesRemoval) {
                around.stored.erase(key);
            }
        } else {
            line(3, key + " was not migrated successfully");
        }
    }
}

// Writing

std::string ReferenceModel::cached(const std::string& key) const {
    const auto entry = cache.find(key);
    return entry == cache.end() ? "" : entry->second;
}

bool ReferenceModel::storeValue(const std::string& key, const std::string& value) {
    record("storage.setValue(" + key + ", " + value + ")");
    if (!around.refusesWrites) {
        around.stored[key] = value;
    }
    return !around.refusesWrites;
}

bool ReferenceModel::store(const std::string& key, const std::string& value) {
    const bool stored = storeValue(key, value);
    if (stored) {
        lastAnswer.stored = !value.empty();
    } else {
        refuse("not-stored");
    }
    return stored;
}

bool ReferenceModel::clearStorage() {
    record("storage.clearStorage()");
    if (!around.refusesClearing) {
        around.stored.clear();
    }
    return !around.refusesClearing;
}

bool ReferenceModel::applySetting(const std::string& key, const std::string& value) {
    record("sdk.applySetting(" + key + ", " + value + ")");
    return !around.refusesSettings;
}

bool ReferenceModel::apply(const std::string& key, const std::string& value) {
    const bool accepted = applySetting(key, value);
    lastAnswer.applied = lastAnswer.applied && accepted;
    return accepted;
}

void ReferenceModel::switchHandsFree(bool enabled) {
    record("sdk.setHandsFreeEnabled(" + word(enabled) + ")");
}

void ReferenceModel::launchSettings() {
    record("app.launchApp(settings-app, )");
}

void ReferenceModel::sendEvent(const std::string& /*key*/, const std::string& payload) {
    record("transport.sendMessage(25, " + payload + ")");
}

void ReferenceModel::sendReply(const std::string& messageId, const std::string& payload) {
    record("transport.sendResponse(" + messageId + ", " + payload + ")");
}

void ReferenceModel::useLocales(const std::vector<std::string>& locales) {
    std::string joined;
    for (const auto& locale : locales) {
        joined += (joined.empty() ? "" : "|") + locale;
    }
    record("sdk.setLocales(" + joined + ")");
    around.locales = locales;
}

void ReferenceModel::useTimezone(const std::string& timezone) {
    record("sdk.setTimezone(" + timezone + ")");
    around.timezone = timezone;
}

void ReferenceModel::count(const std::string& key, const std::string& value) {
    record("metrics.recordCounter(" + key + "_" + value + ", 0, 1, 1)");
    record("metrics.recordEvent(app_events, AUTO, interaction_name=" + key + "_" + value + ")");
}

void ReferenceModel::changed(const std::string& key, const std::string& from, const std::string& to) {
    cache[key] = to;
    lastAnswer.outcome = "changed";
    sendEvent(key, R"({"settingDBId":)" + stringText(key) + R"(,"from":)" + stringText(from) + R"(,"to":)" +
                       stringText(to) + "}");
    count(key, to);
}

bool ReferenceModel::setSetting(const std::string& key, const std::string& value) {
    line(0, "setSetting");
    line(0, "SettingDBId: " + shown(key));
    if (key == "orliaLocale") {
        return setLocale(value);
    }
    if (key == "timezone") {
        return setTimezone(value);
    }
    if (key == "captionsEnabled" || key == "doNotDisturbEnabled") {
        line(3, "Invalid SDK SettingDBId: " + key);
        refuse("read-only");
        return false;
    }
    if (key == "tovanEntitlementStatus") {
        return setEntitlement(value);
    }
    const bool applied = key == "handsFreeEnabled" || key == "handsFreeAlwaysOnEnabled" ||
                         key == "pttAlwaysOnEnabled" || key == "friendlyName";
    return applied ? setApplied(key, value) : setStored(key, value);
}

bool ReferenceModel::setLocale(const std::string& value) {
    const auto elements = arrayElements(value);
    if (!elements) {
        refuse("wrong-form");
        line(3, "orliaLocale is not in the proper format");
        return false;
    }
    std::vector<std::string> locales;
    for (const auto& element : *elements) {
        if (element && !element->empty()) {
            locales.push_back(*element);
        }
    }
    if (locales.empty()) {
        refuse("wrong-form");
        line(3, "orliaLocale is empty or not in the correct format");
        return false;
    }
    const std::string old = ownersValue("orliaLocale");
    if (old == value) {
        line(0, "orliaLocale was not changed, oldValue is the same as newValue: oldValue(" + shown(old) +
                    "), newValue(" + shown(value) + ")");
        return false;
    }
    useLocales(locales);
    changed("orliaLocale", old, value);
    line(1, "OrliaLocale changed from '" + shown(old) + "' to '" + shown(value) + "'");
    record("metricsCache.setOrliaLocale(" + locales.front() + ")");
    tell(localeObservers, false, ".orliaLocale(" + locales.front() + ")");
    return true;
}

bool ReferenceModel::setTimezone(const std::string& value) {
    const std::string old = ownersValue("timezone");
    if (old == value) {
        line(0, "orliaTimezone was not changed, oldValue is the same as newValue: oldValue(" + shown(old) +
                    "), newValue(" + shown(value) + ")");
        return false;
    }
    useTimezone(value);
    changed("timezone", old, value);
    line(1, "OrliaTimezone changed from '" + shown(old) + "' to '" + shown(value) + "'");
    return true;
}

bool ReferenceModel::setEntitlement(const std::string& value) {
    const std::string key = "tovanEntitlementStatus";
    const std::string old = cached(key);
    if (old == value) {
        line(1, key + " was not updated. New value: '" + shown(value) + "' was not saved.");
        return false;
    }
    if (store(key, value)) {
        line(1, key + " changed from '" + shown(old) + "' to '" + shown(value) + "'");
        line(1, "onEntitlementStatusChanged: " + shown(value));
        tell(entitlementObservers, true, ".entitlementStatus(" + value + ")");
        changed(key, old, value);
    }
    return true;
}

bool ReferenceModel::setApplied(const std::string& key, const std::string& value) {
    const std::string old = cached(key);
    if (old == value) {
        line(1, key + " was not updated: new value: '" + shown(value) + "' is the same");
        return false;
    }
    if (key == "handsFreeEnabled") {
        switchHandsFree(value == "true");
    } else if (!apply(key, value)) {
        count(key, "error");
    }
    if (key == "friendlyName") {
        tell(friendlyNameObservers, true, ".friendlyName(" + value + ")");
    }
    line(1, key + " changed from '" + shown(old) + "' to '" + shown(value) + "'");
    changed(key, old, value);
    return true;
}

bool ReferenceModel::setStored(const std::string& key, const std::string& value) {
    const std::string old = cached(key);
    if (old == value) {
        return false;
    }
    if (!store(key, value)) {
        line(3, shown(key) + " new value: '" + shown(value) + "' value was not written properly");
        return false;
    }
    line(1, shown(key) + " new value: '" + shown(value) + "'");
    changed(key, old, value);
    return true;
}

// Requests

void ReferenceModel::refuse(const std::string& reason) {
    lastAnswer.outcome = "refused";
    lastAnswer.reason = reason;
}

/// The newest time stamp of the setting, if it is newer.
std::optional<long> ReferenceModel::newerThan(const std::string& key, long timestamp) const {
    const auto newest = newestTimestamps.find(isKnown(key) ? key : "");
    return newest != newestTimestamps.end() && newest->second > timestamp ? std::optional(newest->second)
                                                                          : std::nullopt;
}

Answer ReferenceModel::answerToRejected(const std::string& text) const {
    const Envelope envelope(text);
    const auto timestamp = envelope.integer("timestamp");
    Answer answer{"refused", "incomplete", envelope.payloadText("settingDBId"), true, false, std::nullopt};
    if (timestamp && answer.key && envelope.payloadText("to")) {
        answer.newest = newerThan(*answer.key, *timestamp);
        answer.reason = answer.newest ? "stale" : "wrong-form";
    }
    return answer;
}

void ReferenceModel::request(int type, const std::string& text) {
    lastAnswer = {};
    switch (type) {
        case 7:
            return getRequest(text);
        case 18:
            return selectionRequest(text);
        case 19:
            return launchSettings();
        case 22:
            return logOutRequest();
        default:
            return setRequest(text);
    }
}

void ReferenceModel::getRequest(const std::string& text) {
    line(1, "Handling GetSettings request");
    const Envelope envelope(text);
    if (!envelope.isJson()) {
        return line(3, "Payload was not parsed successfully");
    }
    const auto messageId = envelope.text("messageId");
    if (!messageId) {
        return line(3, "GetSettings Message Id not found or has incorrect format");
    }
    if (!envelope.hasPayload()) {
        return line(3, "SetSetting Message payload not found");
    }
    const auto names = envelope.payloadTexts("settings");
    if (!names) {
        return line(3, "GetSettings settings field not found in payload or has incorrect format");
    }
    std::string members;
    for (const auto& [key, value] : getSettings(*names)) {
        members += (members.empty() ? "" : ",") + stringText(key) + ":" + stringText(value);
    }
    sendReply(*messageId, R"({"settings":{)" + members + "}}");
}

void ReferenceModel::setRequest(const std::string& text) {
    line(1, "Handling SetSettings request");
    const Envelope envelope(text);
    refuse("incomplete");
    if (!envelope.isJson()) {
        return line(3, "Payload was not parsed successfully");
    }
    lastAnswer.key = envelope.payloadText("settingDBId");
    const auto timestamp = envelope.integer("timestamp");
    if (!timestamp) {
        return line(3, "SetSetting Message timestamp not found");
    }
    if (!envelope.hasPayload()) {
        return line(3, "SetSetting Message payload not found");
    }
    const auto key = envelope.payloadText("settingDBId");
    if (!key) {
        return line(3, "SetSetting settingId not found in payload or has incorrect format");
    }
    line(1, "isRequestValid");
    const auto value = envelope.payloadText("to");
    if (const auto newest = newerThan(*key, *timestamp)) {
        if (value) {
            refuse("stale");
            lastAnswer.newest = newest;
        }
        return line(3, "Invalid Request: SettingsDBId is invalid or request is older than current request");
    }
    newestTimestamps[isKnown(*key) ? *key : ""] = *timestamp;
    if (!value) {
        return line(3, "to value field in payload not found or has incorrect format");
    }
    lastAnswer.outcome = "unchanged";
    lastAnswer.reason.clear();
    setSetting(*key, *value);
}

void ReferenceModel::selectionRequest(const std::string& text) {
    const Envelope envelope(text);
    if (!envelope.has("messageId")) {
        return line(3, "Message ID not found");
    }
    const auto messageId = envelope.text("messageId");
    if (!messageId) {
        return line(3, "Message ID has incorrect format");
    }
    sendReply(*messageId, R"({"isOrliaSelectedAsVA":true})");
}

void ReferenceModel::logOutRequest() {
    apply("handsFreeAlwaysOnEnabled", "false");
    apply("pttAlwaysOnEnabled", "false");
    switchHandsFree(false);
    if (!clearStorage()) {
        line(3, "Error clearing storage on logout");
        refuse("not-stored");
    }
    cache = getSettings({});
}

// Notifications

void ReferenceModel::notifyLocaleChange(const std::string& locale) {
    line(1, "notifyLocaleChange: Notified of locale change. New value: " + shown(locale));
    record("sdk.getLocales()");
    if (around.locales.empty()) {
        line(1, "Current locale is empty");
    } else if (around.locales.front() == locale) {
        line(1, "notifyLocaleChange: Incoming primary locale (" + shown(locale) +
                    ") is identical to current primary locale (" + arrayText(around.locales) + ")");
        return;
    }
    useLocales({locale});
}

void ReferenceModel::notifyLocalesChange(const std::vector<std::string>& locales) {
    line(1, "Notified of locale change. New value: " + arrayText(locales));
    useLocales(locales);
}

void ReferenceModel::notifyTimezoneChange(const std::string& timezone) {
    useTimezone(timezone);
}

void ReferenceModel::notifySystemSettingChanged(const std::string& name, const std::string& value) {
    lastAnswer = {};
    lastAnswer.outcome = "unchanged";
    line(1, "Notified of system setting changing: " + shown(name) + ". New value: " + shown(value));
    setSetting(name, value);
}

void ReferenceModel::notifyHandsfreeStateChanged(bool enabled) {
    line(1, "Notified of HandsFreeState changing. New value: " + word(enabled));
    setSetting("handsFreeEnabled", word(enabled));
}

// Observers

void ReferenceModel::add(std::set<int>& registry, Observer observer, const std::string& operation) {
    if (observer) {
        registry.insert(*observer);
    } else {
        line(2, operation + ": Given observer is null");
    }
}

void ReferenceModel::remove(std::set<int>& registry, Observer observer, const std::string& operation) {
    if (observer) {
        registry.erase(*observer);
    } else {
        line(2, operation + ": Given observer is null");
    }
}

void ReferenceModel::tell(std::set<int>& registry, bool mayRemoveThemselves, const std::string& what) {
    for (const int observer : registry) {
        record("observer" + std::to_string(observer) + what);
    }
    if (mayRemoveThemselves) {
        registry.erase(selfRemover);
    }
}

void ReferenceModel::addLocaleObserver(Observer observer) {
    add(localeObservers, observer, "addOrliaLocaleObserver");
}

void ReferenceModel::addFriendlyNameObserver(Observer observer) {
    add(friendlyNameObservers, observer, "addFriendlyNameObserver");
}

void ReferenceModel::removeFriendlyNameObserver(Observer observer) {
    remove(friendlyNameObservers, observer, "removeFriendlyNameObserver");
}

void ReferenceModel::addEntitlementObserver(Observer observer) {
    add(entitlementObservers, observer, "addEntitlementStatusObserver");
}

void ReferenceModel::removeEntitlementObserver(Observer observer) {
    remove(entitlementObservers, observer, "removeEntitlementStatusObserver");
}

}  // namespace SettingsHandlerFuzz
