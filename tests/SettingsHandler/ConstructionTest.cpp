#include "HandlerFixture.h"

namespace SettingsHandlerTests {

using Construction = HandlerTest;

const Entries registrations{"transport.registerMessageHandler(7)", "transport.registerMessageHandler(18)",
                            "transport.registerMessageHandler(19)", "transport.registerMessageHandler(24)",
                            "transport.registerMessageHandler(22)"};

TEST_F(Construction, RegistersTheFiveRequestsInOrderAndLogsNothing) {
    make<OpenHandler>();
    expectJournal(registrations);
}

TEST_F(Construction, CreateLogsOneLineAfterTheRegistrations) {
    const auto created = SettingsHandler::SettingsHandler::create(transport, storage, metrics, sdk, app, device);
    expectJournal(registrations + Entries{"log 0 SettingsHandler:Initialized Settings Handler"});
    EXPECT_EQ(created.use_count(), 1);
}

TEST_F(Construction, EachMessageTypeReachesItsRequest) {
    deliver(7, "{");
    EXPECT_EQ(journal.take().front(), "log 1 SettingsHandler:Handling GetSettings request");
    deliver(18, "{");
    expectJournal(Entries{"log 3 SettingsHandler:Message ID not found"});
    deliver(19, "{");
    EXPECT_EQ(journal.take().front().rfind("app.launchApp(", 0), 0U);
    deliver(24, "{");
    EXPECT_EQ(journal.take().front(), "log 1 SettingsHandler:Handling SetSettings request");
    deliver(22, "{");
    EXPECT_EQ(journal.take().front(), "sdk.applySetting(handsFreeAlwaysOnEnabled, false)");
}

TEST_F(Construction, SharesTheCollaboratorsUntilItIsDestroyed) {
    const auto before = metrics.use_count();
    {
        const auto another = make<OpenHandler>();
        EXPECT_EQ(metrics.use_count(), before + 1);
        EXPECT_EQ(sdk.use_count(), before + 1);
        EXPECT_EQ(app.use_count(), before + 1);
        EXPECT_EQ(device.use_count(), before + 1);
    }
    EXPECT_EQ(metrics.use_count(), before);
}

TEST_F(Construction, CopiesThePointersStepByStep) {
    // The fixture's own, its handler's, create's argument, the constructor's argument, the member.
    journal.at("transport.registerMessageHandler(7)", [&] { EXPECT_EQ(metrics.use_count(), 5); });
    // The copies for the constructor are destroyed before the line is logged.
    journal.at("log 0 SettingsHandler:Initialized", [&] { EXPECT_EQ(metrics.use_count(), 4); });
    const auto created = SettingsHandler::SettingsHandler::create(transport, storage, metrics, sdk, app, device);
    EXPECT_EQ(metrics.use_count(), 3);
}

TEST_F(Construction, DestructionNeitherUnregistersNorLogs) {
    handler.reset();
    expectJournal(Entries{});
}

TEST_F(Construction, ADerivedHandlersDestructorRunsThroughTheInterface) {
    struct Derived : OpenHandler {
        using OpenHandler::OpenHandler;
        ~Derived() override { *gone = true; }
        bool* gone = nullptr;
    };
    bool gone = false;
    auto derived = std::make_unique<Derived>(transport, storage, metrics, sdk, app, device);
    derived->gone = &gone;
    std::unique_ptr<DeviceAbstractionLayer::HandsfreeStateObserverInterface> second(derived.release());
    second.reset();
    EXPECT_TRUE(gone);
}

TEST_F(Construction, AnExceptionOfTheTransportLeavesCreateAndKeepsEarlierRegistrations) {
    journal.at("transport.registerMessageHandler(19)", [] { throw std::runtime_error("transport"); });
    EXPECT_THROW(SettingsHandler::SettingsHandler::create(transport, storage, metrics, sdk, app, device),
                 std::runtime_error);
    expectJournal((Entries{"transport.registerMessageHandler(7)", "transport.registerMessageHandler(18)",
                           "transport.registerMessageHandler(19)"}));
}

TEST_F(Construction, ReadingBeforeInitialisationWorks) {
    EXPECT_EQ(handler->getSettings({"deviceName"}), (Values{{"deviceName", "TV"}}));
}

}  // namespace SettingsHandlerTests
