#include <atomic>
#include <shared_mutex>
#include <thread>

#include "HandlerFixture.h"
#include "ThreadSafeCollaborators.h"

namespace SettingsHandlerTests {

constexpr int threadCount = 8;
constexpr int rounds = 100;
constexpr int changes = threadCount * rounds;

/// Counts its notifications.
class Listener : public VessaNativeCommon::FriendlyNameObserverInterface,
                 public VessaNativeCommon::OrliaLocaleObserverInterface,
                 public teskVessa::NativeBridgeInterface {
public:
    void notifyFriendlyNameChanged(const std::string& /*friendlyName*/) override { ++friendlyNames; }
    void notifyOrliaLocaleChanged(const std::string& /*locale*/) override { ++locales; }
    void notifyEntitlementStatusChanged(const std::string& /*status*/) override { ++entitlements; }

    std::atomic<int> friendlyNames{0};
    std::atomic<int> locales{0};
    std::atomic<int> entitlements{0};
};

/// Adds and removes observers, and reads and sets settings, when it is notified.
class Restless : public VessaNativeCommon::FriendlyNameObserverInterface,
                 public VessaNativeCommon::OrliaLocaleObserverInterface,
                 public teskVessa::NativeBridgeInterface,
                 public std::enable_shared_from_this<Restless> {
public:
    explicit Restless(SettingsHandler::SettingsHandlerInterface& owner) : handler(owner) {}

    void notifyFriendlyNameChanged(const std::string& friendlyName) override {
        handler.removeFriendlyNameObserver(shared_from_this());
        handler.setSetting("set by an observer", friendlyName);
        handler.addFriendlyNameObserver(shared_from_this());
    }
    void notifyOrliaLocaleChanged(const std::string& /*locale*/) override {
        handler.getCurrentSettingsMap();
        const auto passing = std::make_shared<Restless>(handler);
        handler.addFriendlyNameObserver(passing);
        handler.removeFriendlyNameObserver(passing);
    }
    void notifyEntitlementStatusChanged(const std::string& /*status*/) override {
        handler.removeEntitlementStatusObserver(shared_from_this());
        handler.getSettings({"friendlyName", "timezone"});
        handler.addEntitlementStatusObserver(shared_from_this());
    }

private:
    SettingsHandler::SettingsHandlerInterface& handler;
};

/// Operations that any thread may call at any time.
void change(SettingsHandler::SettingsHandler& handler, int thread, const std::string& value) {
    handler.setSetting("deviceName", value);
    handler.setSetting("friendlyName", value);
    handler.setSetting("tovanEntitlementStatus", value);
    handler.setSetting("handsFreeEnabled", value);
    handler.setSetting("pttAlwaysOnEnabled", value);
    handler.setSetting("timezone", value);
    handler.setSetting("orliaLocale", "[\"" + value + "\"]");
    handler.setSetting("captionsEnabled", value);
    handler.setSetting("key of " + std::to_string(thread), value);
}

void read(SettingsHandler::SettingsHandler& handler) {
    handler.getCurrentSettingsMap();
    handler.getSettings({"deviceName", "orliaLocale", "handsFreeEnabled"});
    handler.handleGetSettingsRequest(R"({"messageId":"m","payload":{"settings":[]}})");
    handler.handleIsOrliaSelectedVARequest(R"({"messageId":"m"})");
    handler.handleOpenVASettingsRequest("");
}

void notify(SettingsHandler::SettingsHandler& handler, int round, const std::string& value) {
    handler.notifyHandsfreeStateChanged(round % 2 == 0);
    handler.notifySystemSettingChanged("captionsStyles", value);
    handler.notifyLocaleChange("of the device " + value);
    handler.notifyLocaleChange(std::vector<std::string>{"of the device " + value, "en-US"});
    handler.notifyTimezoneChange("of the device " + value);
    handler.notifyNetworkConnectionChanged(value);
    handler.notifyMicrophoneAvailabilityChanged(value);
    handler.notifyAudioGuidanceChanged(true);
    handler.notifyDeviceModeChanged(value);
}

void comeAndGo(SettingsHandler::SettingsHandler& handler) {
    const auto passing = std::make_shared<Restless>(handler);
    handler.addFriendlyNameObserver(passing);
    handler.addEntitlementStatusObserver(passing);
    std::this_thread::yield();
    handler.removeFriendlyNameObserver(passing);
    handler.removeEntitlementStatusObserver(passing);
    handler.addFriendlyNameObserver(nullptr);
    handler.removeEntitlementStatusObserver(nullptr);
}

std::string valueOf(int thread, int round) {
    return std::to_string(thread) + " " + std::to_string(round);
}

void useGuarded(SettingsHandler::SettingsHandler& handler, int thread, int round) {
    const std::string value = valueOf(thread, round);
    change(handler, thread, value);
    read(handler);
    notify(handler, round, value);
    comeAndGo(handler);
    if (round % 10 == 0) {
        handler.initializeSettings();
    }
}

class Threads : public ::testing::Test {
protected:
    void SetUp() override {
        const auto restless = std::make_shared<Restless>(*surroundings.handler);
        surroundings.handler->addFriendlyNameObserver(restless);
        surroundings.handler->addEntitlementStatusObserver(restless);
        surroundings.handler->addOrliaLocaleObserver(restless);
        surroundings.handler->addFriendlyNameObserver(listener);
        surroundings.handler->addEntitlementStatusObserver(listener);
        surroundings.handler->addOrliaLocaleObserver(listener);
    }

    /// Runs `action(thread, round)` on all threads for all rounds.
    static void onAllThreads(const std::function<void(int, int)>& action) {
        std::vector<std::thread> threads;
        threads.reserve(threadCount);
        for (int thread = 0; thread < threadCount; ++thread) {
            threads.emplace_back([&action, thread] {
                for (int round = 0; round < rounds; ++round) {
                    action(thread, round);
                }
            });
        }
        for (auto& thread : threads) {
            thread.join();
        }
    }

    /// Every value is unique, so every write is a change, whatever the order of the threads.
    void expectNoChangeWasLost() {
        auto& transport = *surroundings.transport;
        for (const auto* key : {"deviceName", "friendlyName", "tovanEntitlementStatus", "pttAlwaysOnEnabled",
                                "timezone", "orliaLocale"}) {
            EXPECT_EQ(transport.eventsOf(key), changes) << key;
        }
        EXPECT_GE(transport.eventsOf("handsFreeEnabled"), changes);
        EXPECT_EQ(transport.eventsOf("captionsEnabled"), 0);
        EXPECT_EQ(surroundings.metrics->counters, transport.allEvents());
        EXPECT_EQ(surroundings.metrics->events, transport.allEvents());
        EXPECT_EQ(listener->friendlyNames, changes);
        EXPECT_EQ(listener->entitlements, changes);
        EXPECT_EQ(listener->locales, changes);
        EXPECT_EQ(surroundings.device->launches, changes);
    }

    Surroundings surroundings;
    std::shared_ptr<Listener> listener = std::make_shared<Listener>();
};

TEST_F(Threads, EightUseTheGuardedOperationsAtOnce) {
    onAllThreads([this](int thread, int round) { useGuarded(*surroundings.handler, thread, round); });

    expectNoChangeWasLost();
    EXPECT_EQ(surroundings.transport->responses, 2 * changes);
    const auto last = surroundings.handler->getCurrentSettingsMap();
    for (int thread = 0; thread < threadCount; ++thread) {
        const std::string key = "key of " + std::to_string(thread);
        EXPECT_EQ(surroundings.transport->eventsOf(key), rounds);
        EXPECT_EQ(surroundings.stored(key), valueOf(thread, rounds - 1));
    }
    EXPECT_EQ(last.count("deviceName"), 1U);
}

TEST_F(Threads, TakeTurnsWithTheOperationsThatHaveNoGuard) {
    auto& handler = *surroundings.handler;
    surroundings.storage.setValue("never written", "kept by older software");
    // Callers must ensure that no other thread uses the handler while one of these operations runs.
    std::shared_mutex turn;
    std::atomic<int> accepted{0};
    onAllThreads([&](int thread, int round) {
        {
            const std::shared_lock<std::shared_mutex> together(turn);
            useGuarded(handler, thread, round);
        }
        const std::unique_lock<std::shared_mutex> alone(turn);
        const std::string value = "asked by " + valueOf(thread, round);
        accepted += handler.handleSetSettingRequest(
                        R"({"timestamp":1,"payload":{"settingDBId":"companionDevice","to":")" + value + "\"}}")
                        ? 1
                        : 0;
        handler.getSettings({"never written", "key of " + std::to_string(thread)});
        if (round % 10 == 9) {
            handler.migrateExistingDeviceSettings();
            handler.handleLogOutRequest();
        }
    });

    EXPECT_EQ(accepted, changes);
    EXPECT_EQ(surroundings.transport->eventsOf("companionDevice"), changes);
    expectNoChangeWasLost();
}

}  // namespace SettingsHandlerTests
