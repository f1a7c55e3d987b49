#include <atomic>
#include <thread>

#include "HandlerFixture.h"

namespace SettingsHandlerTests {

/// Collaborators that any thread may call; the fakes with their journal would serialise everything.
class QuietTransport : public CommunicationHandler::CommunicationHandlerInterface {
public:
    std::atomic<int> events{0};
    std::string sendMessage(int, rapidjson::Document&) override {
        ++events;
        return {};
    }
    void sendResponse(const std::string&, rapidjson::Document&) override {}
    void registerMessageHandler(int, std::function<void(const std::string&)>) override {}
};

class QuietStorage : public SDKWrapper::StorageManagerInterface {
public:
    void getValue(const std::string&, std::string& value) override { value.clear(); }
    bool setValue(const std::string&, const std::string&) override { return true; }
    bool removeValue(const std::string&) override { return true; }
    bool clearStorage() override { return true; }
};

class QuietMetrics : public Metrics::MetricsDelegateInterface {
public:
    void recordEvent(const std::string&, const std::string&,
                     const std::unordered_map<std::string, std::string>&) override {}
    void recordCounter(const std::string&, int, int, double) override {}
};

class QuietSdk : public teskVessa::SDKBridgeInterface {
public:
    void setHandsFreeEnabled(bool) override {}
    bool applySetting(std::string, std::string) override { return true; }
    void setTimezone(std::string) override {}
    std::string getTimezone() override { return "zone"; }
    void setLocales(std::vector<std::string>) override {}
    std::vector<std::string> getLocales() override { return {"en-US"}; }
    bool isCaptionsEnabled() override { return true; }
    bool isDoNotDisturbEnabled() override { return false; }
};

class QuietDevice : public DeviceAbstractionLayer::OrliaDeviceInfoInterface, public DeviceAbstractionLayer::AppLaunch {
public:
    std::map<std::string, std::string> getDeviceInfo() override { return {{"currentHandsFreeStatus", "on"}}; }
    bool launchApp(std::string, std::string) override { return true; }
};

/// An observer that calls back into the handler and comes and goes.
class Restless : public VessaNativeCommon::FriendlyNameObserverInterface,
                 public VessaNativeCommon::OrliaLocaleObserverInterface,
                 public teskVessa::NativeBridgeInterface,
                 public std::enable_shared_from_this<Restless> {
public:
    explicit Restless(SettingsHandler::SettingsHandlerInterface& owner) : handler(owner) {}
    void notifyFriendlyNameChanged(const std::string&) override {
        ++told;
        handler.removeFriendlyNameObserver(shared_from_this());
        handler.addFriendlyNameObserver(shared_from_this());
    }
    void notifyOrliaLocaleChanged(const std::string&) override {
        ++told;
        handler.getCurrentSettingsMap();
    }
    void notifyEntitlementStatusChanged(const std::string&) override {
        ++told;
        handler.removeEntitlementStatusObserver(shared_from_this());
        handler.addEntitlementStatusObserver(shared_from_this());
    }
    std::atomic<int> told{0};

private:
    SettingsHandler::SettingsHandlerInterface& handler;
};

/// One round of everything that several threads may do at once.
void useHandler(SettingsHandler::SettingsHandlerInterface& handler, int thread, int round) {
    const std::string value = std::to_string(thread) + " " + std::to_string(round);
    handler.setSetting("deviceName", value);
    handler.setSetting("friendlyName", value);
    handler.setSetting("tovanEntitlementStatus", value);
    handler.setSetting("handsFreeEnabled", value);
    handler.setSetting("timezone", value);
    handler.setSetting("orliaLocale", "[\"" + value + "\"]");
    handler.setSetting("unknown " + std::to_string(round % 10), value);
    handler.getCurrentSettingsMap();
    handler.getSettings({"deviceName", "orliaLocale", "handsFreeEnabled"});
    handler.notifyHandsfreeStateChanged(round % 2 == 0);
    handler.notifySystemSettingChanged("captionsStyles", value);
    const auto passing = std::make_shared<Restless>(handler);
    handler.addFriendlyNameObserver(passing);
    handler.addEntitlementStatusObserver(passing);
    handler.removeFriendlyNameObserver(passing);
    handler.removeEntitlementStatusObserver(passing);
    if (round % 10 == 0) {
        handler.initializeSettings();
    }
}

TEST(Threads, EightUseTheGuardedOperationsAtOnce) {
    const auto transport = std::make_shared<QuietTransport>();
    QuietStorage storage;
    const auto device = std::make_shared<QuietDevice>();
    const auto handler = SettingsHandler::SettingsHandler::create(transport, storage, std::make_shared<QuietMetrics>(),
                                                                  std::make_shared<QuietSdk>(), device, device);
    const auto observer = std::make_shared<Restless>(*handler);
    handler->addFriendlyNameObserver(observer);
    handler->addEntitlementStatusObserver(observer);
    handler->addOrliaLocaleObserver(observer);

    constexpr int threadCount = 8;
    constexpr int rounds = 50;
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&handler, thread] {
            for (int round = 0; round < rounds; ++round) {
                useHandler(*handler, thread, round);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    // Locale and time zone are compared with the SDK and always change; each is an event.
    EXPECT_GE(transport->events, 2 * threadCount * rounds);
    EXPECT_GE(observer->told, threadCount * rounds);
    handler->removeFriendlyNameObserver(observer);
    handler->removeEntitlementStatusObserver(observer);
    EXPECT_EQ(handler->getCurrentSettingsMap().count("deviceName"), 1U);
}

}  // namespace SettingsHandlerTests
