#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Version1.h"

/// Collaborators as they were compiled against version 1.0. Each records its calls. The library must never call a
/// reserved operation: other implementers may have their own operations there.
namespace AbiTests {

using Calls = std::vector<std::string>;

inline std::string text(bool value) {
    return value ? "true" : "false";
}

inline std::string text(const rapidjson::Document& document) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    document.Accept(writer);
    return buffer.GetString();
}

class OldTransport : public CommunicationHandler::CommunicationHandlerInterface {
public:
    /// With its own names of the envelope's members, so that a library that reads them at another offset of the object
    /// finds nothing.
    explicit OldTransport(Calls& written) : CommunicationHandlerInterface("id", "at", "body"), calls(written) {}

    void reserved1() override { calls.emplace_back("transport, place 0"); }
    void reserved2() override { calls.emplace_back("transport, place 1"); }
    void reserved3() override { calls.emplace_back("transport, place 2"); }
    void reserved4() override { calls.emplace_back("transport, place 3"); }
    std::string sendMessage(int type, rapidjson::Document& payload) override {
        calls.push_back("send " + std::to_string(type) + " " + text(payload));
        return "sent";
    }
    void sendResponse(const std::string& messageId, rapidjson::Document& payload) override {
        calls.push_back("answer " + messageId + " " + text(payload));
    }
    void registerMessageHandler(int type, std::function<void(const std::string&)> handler) override {
        handlers[type] = std::move(handler);
    }

    std::map<int, std::function<void(const std::string&)>> handlers;

private:
    Calls& calls;
};

class OldStorage : public SDKWrapper::StorageManagerInterface {
public:
    explicit OldStorage(Calls& written) : calls(written) {}

    void reserved1() override { calls.emplace_back("storage, place 0"); }
    void reserved2() override { calls.emplace_back("storage, place 1"); }
    void getValue(const std::string& key, std::string& value) override { value = values[key]; }
    bool setValue(const std::string& key, const std::string& value) override {
        calls.push_back("store " + key + "=" + value);
        values[key] = value;
        return true;
    }
    void reserved5() override { calls.emplace_back("storage, place 4"); }
    void reserved6() override { calls.emplace_back("storage, place 5"); }
    bool removeValue(const std::string& key) override {
        calls.push_back("remove " + key);
        return values.erase(key) != 0;
    }
    void reserved8() override { calls.emplace_back("storage, place 7"); }
    bool clearStorage() override {
        calls.emplace_back("clear");
        values.clear();
        return true;
    }

    std::map<std::string, std::string> values;

private:
    Calls& calls;
};

class OldMetrics : public Metrics::MetricsDelegateInterface {
public:
    explicit OldMetrics(Calls& written) : calls(written) {}

    void reserved1() override { calls.emplace_back("metrics, place 0"); }
    void reserved2() override { calls.emplace_back("metrics, place 1"); }
    void reserved3() override { calls.emplace_back("metrics, place 2"); }
    void recordEvent(const std::string& group, const std::string& source,
                     const std::unordered_map<std::string, std::string>& attributes) override {
        calls.push_back("event " + group + " " + source + " with " + std::to_string(attributes.size()));
    }
    void recordCounter(const std::string& name, int first, int second, double third) override {
        calls.push_back("count " + name + " " + std::to_string(first) + " " + std::to_string(second) + " " +
                        std::to_string(third));
    }

private:
    Calls& calls;
};

class OldBridge : public teskVessa::SDKBridgeInterface {
public:
    explicit OldBridge(Calls& written) : calls(written) {}

    void setHandsFreeEnabled(bool enabled) override { calls.push_back("hands-free " + text(enabled)); }
    bool applySetting(std::string settingDBId, std::string value) override {
        calls.push_back("apply " + settingDBId + "=" + value);
        return true;
    }
    void setTimezone(std::string wanted) override {
        calls.push_back("time zone " + wanted);
        timezone = std::move(wanted);
    }
    std::string getTimezone() override { return timezone; }
    void setLocales(std::vector<std::string> wanted) override {
        calls.push_back("locales " + std::to_string(wanted.size()) + " " + wanted.front());
        locales = std::move(wanted);
    }
    std::vector<std::string> getLocales() override { return locales; }
    void reserved7() override { calls.emplace_back("bridge, place 6"); }
    bool isCaptionsEnabled() override { return true; }
    void reserved9() override { calls.emplace_back("bridge, place 8"); }
    bool isDoNotDisturbEnabled() override { return false; }

    std::string timezone = "Europe/Paris";
    std::vector<std::string> locales{"fr-FR"};

private:
    Calls& calls;
};

class OldLauncher : public DeviceAbstractionLayer::AppLaunch {
public:
    explicit OldLauncher(Calls& written) : calls(written) {}

    bool launchApp(std::string name, std::string argument) override {
        calls.push_back("launch with '" + argument + "'" + (name.empty() ? ", no name" : ""));
        return true;
    }

private:
    Calls& calls;
};

class OldDeviceInfo : public DeviceAbstractionLayer::OrliaDeviceInfoInterface {
public:
    explicit OldDeviceInfo(Calls& written) : calls(written) {}

    void reserved1() override { calls.emplace_back("device, place 0"); }
    void reserved2() override { calls.emplace_back("device, place 1"); }
    void reserved3() override { calls.emplace_back("device, place 2"); }
    void reserved4() override { calls.emplace_back("device, place 3"); }
    void reserved5() override { calls.emplace_back("device, place 4"); }
    void reserved6() override { calls.emplace_back("device, place 5"); }
    void reserved7() override { calls.emplace_back("device, place 6"); }
    void reserved8() override { calls.emplace_back("device, place 7"); }
    std::map<std::string, std::string> getDeviceInfo() override { return {{"currentHandsFreeStatus", "on"}}; }

private:
    Calls& calls;
};

class OldObserver : public VessaNativeCommon::OrliaLocaleObserverInterface,
                    public VessaNativeCommon::FriendlyNameObserverInterface,
                    public teskVessa::NativeBridgeInterface {
public:
    explicit OldObserver(Calls& written) : calls(written) {}

    void notifyOrliaLocaleChanged(const std::string& locale) override { calls.push_back("observer: locale " + locale); }
    void notifyFriendlyNameChanged(const std::string& name) override { calls.push_back("observer: name " + name); }
    void reserved1() override { calls.emplace_back("observer, place 0"); }
    void reserved2() override { calls.emplace_back("observer, place 1"); }
    void notifyEntitlementStatusChanged(const std::string& status) override {
        calls.push_back("observer: entitlement " + status);
    }

private:
    Calls& calls;
};

}  // namespace AbiTests
