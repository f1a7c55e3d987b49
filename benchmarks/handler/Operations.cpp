#include "Operations.h"

#include <cstddef>
#include <memory>
#include <utility>

#include "Logging.h"
#include "QuietHandler.h"
#include "support/Texts.h"

namespace Benchmarks {

namespace {

using Handler = SettingsHandler::SettingsHandler;

/// Calls its operation with one request after the other, over and over.
template <typename Ask>
std::function<void()> alternating(std::vector<std::string> requests, Ask ask) {
    return [requests = std::move(requests), ask, next = std::size_t{0}]() mutable {
        ask(requests[next]);
        next = next + 1 == requests.size() ? 0 : next + 1;
    };
}

/// A SetSettings request.
Operation setting(std::string name, const std::vector<std::string>& requests,
                  const std::shared_ptr<QuietHandler>& quiet = std::make_shared<QuietHandler>()) {
    return {std::move(name),
            alternating(requests, [quiet](const std::string& text) { quiet->handler.handleSetSettingRequest(text); })};
}

/// The same request with two values in turn, and with one.
void addRoad(std::vector<Operation>& list, const std::string& name, const std::string& key, const std::string& one,
             const std::string& other) {
    list.push_back(setting("set/" + name + "/changed", {setRequest(key, one), setRequest(key, other)}));
    list.push_back(setting("set/" + name + "/unchanged", {setRequest(key, one)}));
}

void addRoads(std::vector<Operation>& list) {
    addRoad(list, "stored", "deviceName", "Living room", "Kitchen");
    addRoad(list, "entitlement", "tovanEntitlementStatus", "ENTITLED", "NOT_ENTITLED");
    addRoad(list, "applied", "pttAlwaysOnEnabled", "true", "false");
    addRoad(list, "hands-free", "handsFreeEnabled", "true", "false");
    addRoad(list, "friendly name", "friendlyName", "Living room", "Kitchen");
    // The bridge keeps nothing, so that one value is always new to it and another never.
    list.push_back(setting("set/time zone/changed", {setRequest("timezone", "Asia/Tokyo")}));
    list.push_back(setting("set/time zone/unchanged", {setRequest("timezone", "Europe/Berlin")}));
    list.push_back(setting("set/locale/changed", {setRequest("orliaLocale", R"([\"fr-FR\",\"en-US\"])")}));
    list.push_back(setting("set/locale/unchanged", {setRequest("orliaLocale", R"([\"en-US\",\"es-US\"])")}));
}

void addRefusals(std::vector<Operation>& list) {
    const std::string fine = setRequest("deviceName", "Living room");
    const auto refused = [&](const std::string& name, const std::string& request) {
        list.push_back(setting("refused/" + name, {request}));
    };
    refused("not JSON", fine.substr(0, fine.size() - 1));
    refused("no time stamp", R"({"type":24,"payload":{"settingDBId":"deviceName","to":"Kitchen"}})");
    refused("no payload", R"({"type":24,"timestamp":1700000000000})");
    refused("no key", R"({"type":24,"timestamp":1700000000000,"payload":{"to":"Kitchen"}})");
    refused("no value", R"({"type":24,"timestamp":1700000000000,"payload":{"settingDBId":"deviceName"}})");

    const auto newer = std::make_shared<QuietHandler>();
    newer->handler.handleSetSettingRequest(setRequest("deviceName", "Kitchen", "1800000000000"));
    list.push_back(setting("refused/stale", {fine}, newer));

    const auto unwritable = std::make_shared<QuietHandler>();
    unwritable->collaborators.storage.writable = false;
    list.push_back(setting("refused/not written", {fine}, unwritable));

    list.push_back(setting("refused/read only", {setRequest("captionsEnabled", "true")}));
    list.push_back(setting("refused/locale not JSON", {setRequest("orliaLocale", "en-US")}));
}

void addReading(std::vector<Operation>& list) {
    const auto reading = [&](const std::string& name, const std::string& names, const std::string& storedValue) {
        const auto quiet = std::make_shared<QuietHandler>();
        quiet->collaborators.storage.storedValue = storedValue;
        const std::string request = getRequest(names);
        list.push_back({"get/" + name, [=] { quiet->handler.handleGetSettingsRequest(request); }});
    };
    reading("one", R"("deviceName")", "Living room");
    reading("all", "", "Living room");
    reading("all, nothing stored", "", "");
}

void addNotifications(std::vector<Operation>& list) {
    const auto notification = [&](const std::string& name, auto notify) {
        const auto quiet = std::make_shared<QuietHandler>();
        list.push_back({"notify/" + name, [=] { notify(quiet->handler); }});
    };
    const std::string primary = "en-US";
    const std::string other = "fr-FR";
    const std::vector<std::string> locales{"fr-FR", "en-US"};
    const std::string timezone = "Asia/Tokyo";
    notification("locale", [=](OpenHandler& whom) { whom.notifyLocaleChange(other); });
    notification("same locale", [=](OpenHandler& whom) { whom.notifyLocaleChange(primary); });
    notification("locales", [=](OpenHandler& whom) { whom.notifyLocaleChange(locales); });
    notification("time zone", [=](OpenHandler& whom) { whom.notifyTimezoneChange(timezone); });

    const auto quiet = std::make_shared<QuietHandler>();
    const std::string name = "deviceName";
    const std::vector<std::string> values{"Living room", "Kitchen"};
    list.push_back({"notify/system setting", alternating(values, [=](const std::string& v) {
                        quiet->handler.notifySystemSettingChanged(name, v);
                    })});
    list.push_back({"notify/hands-free", [=, enabled = false]() mutable {
                        quiet->handler.notifyHandsfreeStateChanged(enabled = !enabled);
                    }});
}

void addGrowth(std::vector<Operation>& list, int largestCache) {
    for (const int count : {0, 1, 10, 100, 1000}) {
        const auto quiet = std::make_shared<QuietHandler>();
        quiet->addObservers(count);
        list.push_back(setting("observers/" + std::to_string(count),
                               {setRequest("friendlyName", "Living room"), setRequest("friendlyName", "Kitchen")},
                               quiet));
    }
    for (const int count : {15, 1000, 100000}) {
        if (count <= largestCache) {
            const auto quiet = std::make_shared<QuietHandler>();
            quiet->fillCache(count);
            list.push_back(setting("cache/" + std::to_string(count),
                                   {setRequest("deviceName", "Living room"), setRequest("deviceName", "Kitchen")},
                                   quiet));
        }
    }
}

void addLogLines(std::vector<Operation>& list) {
    static const std::string tag = "SettingsHandler";
    static VessaLogger::Log& logger = VessaLogger::Log::instance();
    const auto line = [&](const std::string& name, auto format, auto... args) {
        list.push_back(
            {"log/" + name, [=] { SettingsHandler::log(logger, tag, VessaLogger::INFORMATION, format, args...); }});
    };
    line("0 arguments", "Handling SetSettings request");
    line("1 argument", "SettingDBId: %s", "deviceName");
    line("2 arguments", "%s new value: '%s'", "deviceName", "Living room");
    line("3 arguments", "%s changed from '%s' to '%s'", "deviceName", "Living room", "Kitchen");
}

void addConstruction(std::vector<Operation>& list) {
    const auto quiet = std::make_shared<QuietHandler>();
    auto& with = quiet->collaborators;
    list.push_back({"create and initialise", [quiet, &with] {
                        const auto handler = Handler::create(with.transport, with.storage, with.metrics, with.bridge,
                                                             with.launcher, with.device);
                        handler->initializeSettings();
                    }});
}

}  // namespace

std::vector<Operation> operations(int largestCache) {
    std::vector<Operation> list;
    addRoads(list);
    addRefusals(list);
    addReading(list);
    addNotifications(list);
    addGrowth(list, largestCache);
    addLogLines(list);
    addConstruction(list);
    for (const auto& operation : list) {
        for (int turn = 0; turn < 20; ++turn) {
            operation.run();
        }
    }
    return list;
}

}  // namespace Benchmarks
