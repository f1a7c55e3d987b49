#include "CommunicationHandler/MessageType.h"
#include "Metrics/MetricsCache.h"
#include "Utils/RapidjsonUtil.h"
#include "floor/Documents.h"
#include "floor/Floor.h"
#include "floor/LogLine.h"
#include "floor/Names.h"

namespace Benchmarks::Floor {

namespace JsonUtil = Utils::RapidjsonUtil;
using VessaLogger::ERROR;
using VessaLogger::INFORMATION;
using VessaLogger::TRACE;

bool Floor::accept(const std::string& request, Change& change) {
    logLine(logger, INFORMATION, "Handling SetSettings request");
    RequestDocument document;
    if (!document.parse(request)) {
        logLine(logger, ERROR, "Payload was not parsed successfully");
        return false;
    }
    long timestamp = 0;
    if (!JsonUtil::tryGetInt64Member(document.root(), collaborators.transport->timestampKey, timestamp)) {
        logLine(logger, ERROR, "SetSetting Message timestamp not found");
        return false;
    }
    rapidjson::Value payload;
    if (!JsonUtil::tryGetObjectMember(document.root(), collaborators.transport->payloadKey, payload)) {
        logLine(logger, ERROR, "SetSetting Message payload not found");
        return false;
    }
    if (!JsonUtil::tryGetStringMember(payload, Names::settingDBId, change.key)) {
        logLine(logger, ERROR, "SetSetting settingId not found in payload or has incorrect format");
        return false;
    }
    logLine(logger, INFORMATION, "isRequestValid");
    const auto [newest, isFirst] = timestamps.emplace(SettingsHandler::settingTypeFromName(change.key), timestamp);
    if (!isFirst && newest->second > timestamp) {
        logLine(logger, ERROR, "Invalid Request: SettingsDBId is invalid or request is older than current request");
        return false;
    }
    newest->second = timestamp;
    if (!JsonUtil::tryGetStringMember(payload, Names::to, change.value)) {
        logLine(logger, ERROR, "to value field in payload not found or has incorrect format");
        return false;
    }
    logLine(logger, TRACE, "setSetting");
    SettingsHandler::settingTypeFromName(change.key);
    logLine(logger, TRACE, "SettingDBId: %s", change.key.c_str());
    return true;
}

std::string Floor::cached(const std::string& key) {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto entry = cache.find(key);
    return entry == cache.end() ? std::string() : entry->second;
}

void Floor::count(const std::string& key, const std::string& value) {
    std::string name;
    name.reserve(key.size() + 1 + value.size());
    name.append(key).append(1, '_').append(value);
    collaborators.metrics->recordCounter(name, 0, 1, 1.0);
    std::unordered_map<std::string, std::string> attributes;
    attributes.emplace(Names::attribute, std::move(name));
    collaborators.metrics->recordEvent(Names::group, Names::source, attributes);
}

void Floor::report(const std::string& key, const std::string& from, const std::string& to) {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        cache[key] = to;
    }
    MessageDocument event;
    event.add(Names::settingDBId, key);
    event.add(Names::from, from);
    event.add(Names::to, to);
    collaborators.transport->sendMessage(CommunicationHandler::SETTING_CHANGED, event.document());
    count(key, to);
}

bool Floor::store(const std::string& key, const std::string& value) {
    const std::string old = cached(key);
    if (old == value) {
        return false;
    }
    if (!collaborators.storage.setValue(key, value)) {
        logLine(logger, ERROR, "%s new value: '%s' value was not written properly", key.c_str(), value.c_str());
        return false;
    }
    logLine(logger, INFORMATION, "%s new value: '%s'", key.c_str(), value.c_str());
    report(key, old, value);
    return true;
}

bool Floor::setStored(const std::string& request) {
    Change change;
    return accept(request, change) && store(change.key, change.value);
}

template <typename HandOver>
bool Floor::apply(const std::string& key, const std::string& value, HandOver handOver) {
    const std::string old = cached(key);
    if (old == value) {
        logLine(logger, INFORMATION, "%s was not updated: new value: '%s' is the same", key.c_str(), value.c_str());
        return false;
    }
    handOver();
    logLine(logger, INFORMATION, "%s changed from '%s' to '%s'", key.c_str(), old.c_str(), value.c_str());
    report(key, old, value);
    return true;
}

void Floor::applySetting(const Change& change) {
    if (!collaborators.bridge->applySetting(change.key, change.value)) {
        count(change.key, "error");
    }
}

bool Floor::setApplied(const std::string& request) {
    Change change;
    return accept(request, change) && apply(change.key, change.value, [&] { applySetting(change); });
}

bool Floor::switchHandsFree(const std::string& key, const std::string& value) {
    return apply(key, value, [&] { collaborators.bridge->setHandsFreeEnabled(value == "true"); });
}

bool Floor::setHandsFree(const std::string& request) {
    Change change;
    return accept(request, change) && switchHandsFree(change.key, change.value);
}

bool Floor::setFriendlyName(const std::string& request) {
    Change change;
    return accept(request, change) && apply(change.key, change.value, [&] {
               applySetting(change);
               tellObservers(change.value);
           });
}

bool Floor::setEntitlementStatus(const std::string& request) {
    Change change;
    if (!accept(request, change)) {
        return false;
    }
    const std::string old = cached(change.key);
    if (old == change.value) {
        logLine(logger, INFORMATION, "%s was not updated. New value: '%s' was not saved.", change.key.c_str(),
                change.value.c_str());
        return false;
    }
    if (collaborators.storage.setValue(change.key, change.value)) {
        logLine(logger, INFORMATION, "%s changed from '%s' to '%s'", change.key.c_str(), old.c_str(),
                change.value.c_str());
        logLine(logger, INFORMATION, "onEntitlementStatusChanged: %s", change.value.c_str());
        { const std::lock_guard<std::mutex> lock(mutex); }
        report(change.key, old, change.value);
    }
    return true;
}

bool Floor::setTimezone(const std::string& request) {
    Change change;
    if (!accept(request, change)) {
        return false;
    }
    const std::string old = collaborators.bridge->getTimezone();
    if (old == change.value) {
        logLine(logger, TRACE,
                "orliaTimezone was not changed, oldValue is the same as newValue: oldValue(%s), newValue(%s)",
                old.c_str(), change.value.c_str());
        return false;
    }
    collaborators.bridge->setTimezone(change.value);
    report(change.key, old, change.value);
    logLine(logger, INFORMATION, "OrliaTimezone changed from '%s' to '%s'", old.c_str(), change.value.c_str());
    return true;
}

bool Floor::setLocale(const std::string& request) {
    Change change;
    if (!accept(request, change)) {
        return false;
    }
    RequestDocument list;
    if (!list.parse(change.value)) {
        logLine(logger, ERROR, "orliaLocale is not in the proper format");
        return false;
    }
    std::vector<std::string> locales;
    locales.reserve(list.root().Size());
    for (const auto& element : list.root().GetArray()) {
        if (element.IsString() && element.GetStringLength() > 0) {
            locales.emplace_back(element.GetString(), element.GetStringLength());
        }
    }
    if (locales.empty()) {
        logLine(logger, ERROR, "orliaLocale is empty or not in the correct format");
        return false;
    }
    const std::string old = JsonUtil::stringifyVector(collaborators.bridge->getLocales());
    if (old == change.value) {
        logLine(logger, TRACE,
                "orliaLocale was not changed, oldValue is the same as newValue: oldValue(%s), newValue(%s)",
                old.c_str(), change.value.c_str());
        return false;
    }
    collaborators.bridge->setLocales(locales);
    report(change.key, old, change.value);
    logLine(logger, INFORMATION, "OrliaLocale changed from '%s' to '%s'", old.c_str(), change.value.c_str());
    Metrics::MetricsCache::instance().setOrliaLocale(locales[0]);
    const std::lock_guard<std::mutex> lock(mutex);
    return true;
}

bool Floor::setReadOnly(const std::string& request) {
    Change change;
    if (accept(request, change)) {
        logLine(logger, ERROR, "Invalid SDK SettingDBId: %s", change.key.c_str());
    }
    return false;
}

void Floor::addFriendlyNameObserver(const std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface>& observer) {
    const std::lock_guard<std::mutex> lock(mutex);
    observers.insert(observer);
}

void Floor::tellObservers(const std::string& friendlyName) {
    std::unordered_set<std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface>> snapshot;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        snapshot = observers;
    }
    for (const auto& observer : snapshot) {
        observer->notifyFriendlyNameChanged(friendlyName);
    }
}

void Floor::fillCache(int count) {
    for (int number = 0; number < count; ++number) {
        cache["key " + std::to_string(number)] = "value";
    }
}

}  // namespace Benchmarks::Floor
