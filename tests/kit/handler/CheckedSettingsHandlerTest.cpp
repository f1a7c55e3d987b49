#include <future>

#include "CheckedHandlerFixture.h"

namespace SettingsHandlerKit {

namespace {

using namespace SettingsHandlerTesting;

template <typename World>
void useRequests(World& world, bool refused) {
    world.storage.refusesWrites = refused;
    world.storage.refusesClearing = refused;
    world.sdkBridge->refusesSettings = refused;
    for (const auto& [key, type] : SettingsHandler::stringToSettingsNamesTypeMapping) {
        world.transport->request(24, changePayload(key, R"(["es-ES"])"));
        world.transport->request(24, changePayload(key, R"(["es-ES"])"));
        world->setSetting(key, "direct");
        world.transport->deliver(24, requestText(*world.transport, 24, "m", 0, changePayload(key, "stale")));
        world.deviceLayer.changeSystemSetting(key, "device");
    }
    world.transport->request(7, settingsPayload());
    world.transport->request(7, settingsPayload({"unknown", "timezone", "never"}));
    world.transport->request(18);
    world.transport->request(19);
    for (const auto& [key, value] : world->getCurrentSettingsMap()) {
        world.journal.add(std::string(key).append(" = ").append(value));
    }
    world.transport->request(22);
}

/// Uses everything that the handler offers. Returns: what happened around it.
template <typename Handler>
Entries useEverything() {
    BasicTestHandler<Handler> world;
    const PlatformRecording recording(world.journal);
    const auto locale = std::make_shared<FakeLocaleObserver>(world.journal, "locale");
    const auto friendlyName = std::make_shared<FakeFriendlyNameObserver>(world.journal, "friendlyName");
    const auto entitlement = std::make_shared<FakeEntitlementObserver>(world.journal, "entitlement");
    world->addOrliaLocaleObserver(locale);
    world->addFriendlyNameObserver(friendlyName);
    world->addEntitlementStatusObserver(entitlement);
    world.storage.put("orliaLocale", R"(["de-DE", "fr-FR"])");
    world.storage.put("unknown", std::string(100, 'v'));
    world->migrateExistingDeviceSettings();
    for (const bool refused : {true, false}) {
        useRequests(world, refused);
    }
    for (const int type : {7, 18, 24}) {
        world.transport->deliver(type, "{");
    }
    world.deviceLayer.changeLocale("it-IT");
    world.deviceLayer.changeLocales({"it-IT", "en-GB"});
    world.deviceLayer.changeTimezone("Europe/Rome");
    world.deviceLayer.switchHandsFree(true);
    world->removeFriendlyNameObserver(friendlyName);
    world->removeEntitlementStatusObserver(entitlement);
    return world.journal.take();
}

}  // namespace

TEST(CheckedSettingsHandlerTest, DoesEverythingElseAsThePlainHandler) {
    Entries checked = useEverything<CheckedSettingsHandler>();
    // Looks at the stored locale before the migration.
    ASSERT_EQ(checked.front(), "storage.getValue(orliaLocale)");
    checked.erase(checked.begin());
    const Entries plain = useEverything<SettingsHandler::SettingsHandler>();
    EXPECT_EQ(checked, plain);
    EXPECT_GT(plain.size(), 1000U);
}

namespace {

struct Collaborators {
    Journal journal;
    std::shared_ptr<FakeTransport> transport = std::make_shared<FakeTransport>(journal);
    FakeStorage storage{journal};
    std::shared_ptr<FakeMetrics> metrics = std::make_shared<FakeMetrics>(journal);
    std::shared_ptr<FakeSdkBridge> bridge = std::make_shared<FakeSdkBridge>(journal);
    std::shared_ptr<FakeAppLaunch> launcher = std::make_shared<FakeAppLaunch>(journal);
    std::shared_ptr<FakeDeviceInfo> info = std::make_shared<FakeDeviceInfo>(journal);

    std::shared_ptr<CheckedSettingsHandler> create() {
        return CheckedSettingsHandler::create(transport, storage, metrics, bridge, launcher, info);
    }
};

}  // namespace

TEST(CheckedSettingsHandlerTest, IsCreatedLikeThePlainHandler) {
    Collaborators with;
    const PlatformRecording recording(with.journal);
    const auto handler = with.create();
    EXPECT_EQ(with.journal.take(),
              (Entries{"transport.registerMessageHandler(7)", "transport.registerMessageHandler(18)",
                       "transport.registerMessageHandler(19)", "transport.registerMessageHandler(24)",
                       "transport.registerMessageHandler(22)", "log 0 SettingsHandler:Initialized Settings Handler"}));
}

TEST(CheckedSettingsHandlerTest, NamesANullCollaborator) {
    const auto messageWithout = [](auto Collaborators::*collaborator) -> std::string {
        Collaborators with;
        (with.*collaborator).reset();
        try {
            with.create();
        } catch (const std::invalid_argument& error) {
            EXPECT_TRUE(with.journal.take().empty()) << "nothing is registered before";
            return error.what();
        }
        return "";
    };
    const std::string beginning = "CheckedSettingsHandler: ";
    EXPECT_EQ(messageWithout(&Collaborators::transport),
              beginning +
                  "transport is null; pass a CommunicationHandler::CommunicationHandlerInterface that delivers "
                  "the requests");
    EXPECT_EQ(messageWithout(&Collaborators::metrics),
              beginning + "metrics is null; pass a Metrics::MetricsDelegateInterface; its operations may do nothing");
    EXPECT_EQ(messageWithout(&Collaborators::bridge),
              beginning + "bridge is null; pass a teskVessa::SDKBridgeInterface to the voice SDK");
    EXPECT_EQ(messageWithout(&Collaborators::launcher),
              beginning + "launcher is null; pass a DeviceAbstractionLayer::AppLaunch; its launchApp may return false");
    EXPECT_EQ(
        messageWithout(&Collaborators::info),
        beginning + "info is null; pass a DeviceAbstractionLayer::OrliaDeviceInfoInterface; its map may be empty");
}

TEST(CheckedSettingsHandlerTest, SharesTheCollaboratorsUntilItIsDestroyed) {
    Collaborators with;
    auto handler = with.create();
    for (const long count : {with.transport.use_count(), with.metrics.use_count(), with.bridge.use_count(),
                             with.launcher.use_count(), with.info.use_count()}) {
        EXPECT_GT(count, 1);
    }
    handler.reset();
    for (const long count : {with.transport.use_count(), with.metrics.use_count(), with.bridge.use_count(),
                             with.launcher.use_count(), with.info.use_count()}) {
        EXPECT_EQ(count, 1);
    }
}

/// Threads may use the handler as they may use the plain one, and each has its own outcomes.
TEST(CheckedSettingsHandlerTest, EachThreadHasItsOwnOutcome) {
    BasicTestHandler<CheckedSettingsHandler> world;
    constexpr int threads = 8;
    std::vector<std::future<void>> running;
    running.reserve(threads);
    for (int number = 0; number < threads; ++number) {
        running.push_back(std::async(std::launch::async, [&world, number] {
            const std::string key = "key" + std::to_string(number);
            for (int round = 0; round < 50; ++round) {
                EXPECT_TRUE(world->setSetting(key, std::to_string(round)));
                EXPECT_EQ(world->outcome(), outcomeOf(Kind::CHANGED, key));
                EXPECT_FALSE(world->setSetting("captionsEnabled", "true"));
                EXPECT_EQ(world->outcome(), refusedFor(Reason::READ_ONLY, "captionsEnabled"));
            }
        }));
    }
    for (auto& thread : running) {
        thread.get();
    }
    EXPECT_EQ(world->outcome(), Outcome());
}

TEST(CheckedSettingsHandlerTest, KeepsTheOutcomesOfTheLastThreadsOnly) {
    BasicTestHandler<CheckedSettingsHandler> world;
    world->setSetting("deviceName", "Den");
    const auto useOtherThreads = [&](int count) {
        // All alive at once, so that none gets the id of another.
        std::promise<void> end;
        const auto ended = end.get_future().share();
        std::vector<std::promise<void>> done(static_cast<std::size_t>(count));
        std::vector<std::thread> running;
        running.reserve(done.size());
        for (auto& its : done) {
            running.emplace_back([&] {
                world->setSetting("captionsEnabled", "true");
                its.set_value();
                ended.wait();
            });
        }
        for (auto& its : done) {
            its.get_future().wait();
        }
        end.set_value();
        for (auto& thread : running) {
            thread.join();
        }
    };
    useOtherThreads(16);
    EXPECT_EQ(world->outcome(), outcomeOf(Kind::CHANGED, "deviceName"));
    useOtherThreads(17);
    EXPECT_EQ(world->outcome(), Outcome());
    world.journal.at("storage.setValue(key", [&] { EXPECT_EQ(world->outcome(), Outcome()) << "of no other thread"; });
    world->setSetting("key", "value");
    EXPECT_TRUE(world.journal.allActionsRun());
    world.journal.at("storage.setValue(deviceName", [&] { useOtherThreads(40); });
    world->setSetting("deviceName", "Attic");
    EXPECT_EQ(world->outcome(), outcomeOf(Kind::CHANGED, "deviceName"))
        << "an operation in progress is never forgotten";
}

/// The memory for replies and for the cache is limited.
class Memory : public CheckedHandler {
protected:
    static constexpr std::size_t large = 60000;

    Memory() {
        for (int number = 0; number < 40; ++number) {
            world.storage.put("k" + std::to_string(number), std::string(large, 'v'));
        }
        handler = CheckedSettingsHandler::create(world.transport, world.storage, world.metrics, world.sdkBridge,
                                                 world.appLaunch, world.deviceInfo, {[this](std::size_t bytes) {
                                                     askedRoom.push_back(bytes);
                                                     return bytes <= room;
                                                 }});
        world.journal.take();
    }

    /// Asks for the keys k`from` to k`to`, without the last one. Returns: whether there was a reply.
    bool ask(int from, int to) {
        std::vector<std::string> keys;
        for (int number = from; number < to; ++number) {
            keys.push_back("k" + std::to_string(number));
        }
        const bool answered = !world.transport->request(7, settingsPayload(keys)).empty();
        EXPECT_EQ(handler->outcome(), answered ? Outcome() : refusedFor(Reason::BUSY));
        return answered;
    }

    /// Returns: whether the cache was rebuilt since the last call.
    bool wasRebuilt() {
        const Entries entries = world.journal.take();
        return std::find(entries.begin(), entries.end(), "sdk.setHandsFreeEnabled(false)") != entries.end();
    }

    std::vector<std::size_t> askedRoom;
    std::size_t room = 100000000;
    std::shared_ptr<CheckedSettingsHandler> handler;
};

TEST_F(Memory, AReplyBeyondTwiceOfWhatMayBeStoredIsNotMade) {
    EXPECT_TRUE(ask(0, 34));
    world.journal.take();
    EXPECT_FALSE(ask(0, 35)) << "35 times 60,000 are more than 2 MiB";
    const Entries entries = world.journal.take();
    EXPECT_EQ(std::count(entries.begin(), entries.end(),
                         "log 2 settings-host:refused a GetSettings request: its values exceed the memory limit"),
              1);
    EXPECT_TRUE(ask(6, 40)) << "each request begins anew";
    EXPECT_EQ(handler->getSettings({"k1", "k2"}).size(), 2U);
}

TEST_F(Memory, AReplyWithoutRoomIsNotMade) {
    room = 300000;
    EXPECT_TRUE(ask(0, 2));
    EXPECT_FALSE(ask(0, 17));
    EXPECT_EQ(askedRoom, (std::vector<std::size_t>{240000, 240000, 360000})) << "a small reply needs no room";
    room = 0;
    std::vector<std::string> all;
    for (const auto& [key, value] : world.storage.values) {
        all.push_back(key);
    }
    EXPECT_EQ(handler->getSettings(all).size(), all.size()) << "the service itself reads everything";
    handler->handleGetSettingsRequest(R"({"messageId":"m","payload":{"settings":["k1","k2"]}})");
    EXPECT_EQ(handler->outcome(), refusedFor(Reason::BUSY)) << "a direct call";
}

TEST_F(Memory, AKeyThatIsNamedOftenCountsOnce) {
    const std::string reply = world.transport->request(7, settingsPayload(std::vector<std::string>(1000, "k1")));
    EXPECT_EQ(reply, R"({"settings":{"k1":")" + std::string(large, 'v') + "\"}}");
}

TEST_F(Memory, TheCacheIsRebuiltAfterTheRequestThatMadeItTooLarge) {
    EXPECT_TRUE(ask(0, 17));
    EXPECT_TRUE(ask(0, 17));
    EXPECT_FALSE(wasRebuilt());
    EXPECT_TRUE(ask(17, 18));
    EXPECT_TRUE(wasRebuilt());
    EXPECT_EQ(handler->getCurrentSettingsMap().count("k1"), 0U);
    world.transport->request(18);
    EXPECT_FALSE(wasRebuilt());
    EXPECT_TRUE(ask(0, 17));
    world.transport->request(24, changePayload("k1", "short"));
    world.transport->request(24, changePayload("k30", std::string(large, 'w')));
    EXPECT_FALSE(wasRebuilt()) << "what became short is not kept any more";
    world.transport->request(24, changePayload("k31", std::string(large, 'w')));
    EXPECT_EQ(handler->outcome(), outcomeOf(Kind::CHANGED, "k31"));
    EXPECT_TRUE(wasRebuilt()) << "what is set is kept too";
    EXPECT_TRUE(ask(0, 17));
    world.transport->request(22);
    wasRebuilt();
    world.transport->request(24, changePayload("k32", std::string(large, 'w')));
    world.transport->request(24, changePayload("k33", std::string(large, 'w')));
    EXPECT_FALSE(wasRebuilt()) << "a log-out empties the cache";
}

TEST_F(Memory, AFailureWhileTheCacheIsRebuiltIsLogged) {
    EXPECT_TRUE(ask(0, 17));
    world.journal.at("sdk.setHandsFreeEnabled", [] { throw std::runtime_error("thrown by a test"); });
    world.journal.at("sdk.getTimezone", [this] { handler->setSetting("captionsEnabled", "true"); });
    world.transport->request(24, changePayload("k17", std::string(large, 'w')));
    EXPECT_TRUE(world.journal.allActionsRun());
    EXPECT_EQ(handler->outcome(), outcomeOf(Kind::CHANGED, "k17")) << "it has no influence on the outcome";
    EXPECT_EQ(world.journal.take().back(), "log 3 settings-host:cannot rebuild the handler's cache: thrown by a test");
}

TEST_F(Memory, IsBoundedAfterARequestThatFailedToo) {
    EXPECT_TRUE(ask(0, 17));
    world.journal.take();
    world.journal.at("transport.sendResponse", [] { throw std::runtime_error("thrown by a test"); });
    EXPECT_THROW(world.transport->request(7, settingsPayload({"k20"})), std::runtime_error);
    EXPECT_TRUE(wasRebuilt());
}

}  // namespace SettingsHandlerKit
