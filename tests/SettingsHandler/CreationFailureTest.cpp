#include <atomic>
#include <cstdlib>
#include <memory>
#include <new>

#include <gtest/gtest.h>

#include "SettingsHandler/SettingsHandler.h"
#include "SettingsHandlerTesting/Mocks.h"
#include "SettingsHandlerTesting/platform/PlatformDoubles.h"

// A separate program, because it replaces the allocation functions of the whole program.

namespace {

/// Number of allocations that still succeed; negative: all.
std::atomic<long> allocationsLeft{-1};
std::atomic<long> blocksInUse{0};

void* allocate(std::size_t size) {
    if (allocationsLeft >= 0 && allocationsLeft-- == 0) {
        throw std::bad_alloc();
    }
    void* const block = std::malloc(size == 0 ? 1 : size);  // NOLINT: this is the allocation function
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++blocksInUse;
    return block;
}

void release(void* block) noexcept {
    if (block != nullptr) {
        --blocksInUse;
        std::free(block);  // NOLINT: this is the deallocation function
    }
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
    release(block);
}

namespace {

/// Keeps no copy of the registered functions, so that only the handler's own memory is counted.
class ForgetfulTransport : public CommunicationHandler::CommunicationHandlerInterface {
public:
    std::string sendMessage(int /*messageType*/, rapidjson::Document& /*payload*/) override { return {}; }
    void sendResponse(const std::string& /*messageId*/, rapidjson::Document& /*payload*/) override {}
    void registerMessageHandler(int /*messageType*/, std::function<void(const std::string&)> /*handler*/) override {
        ++registrations;
    }
    int registrations = 0;
};

class CreationFailure : public ::testing::Test {
protected:
    /// Calls `create` with a failure of the allocation after `successes` others. Returns: whether a handler was made.
    bool createsWithAllocations(long successes) {
        const long before = blocksInUse;
        std::shared_ptr<SettingsHandler::SettingsHandler> handler;
        bool threw = false;
        allocationsLeft = successes;
        try {
            handler = SettingsHandler::SettingsHandler::create(transport, storage, metrics, sdk, app, device);
        } catch (const std::bad_alloc&) {
            threw = true;
        }
        allocationsLeft = -1;
        EXPECT_NE(threw, handler != nullptr);
        lines = journal.take().size();
        const bool created = handler != nullptr;
        handler.reset();
        EXPECT_EQ(blocksInUse, before) << "memory was lost with " << successes << " allocations";
        return created;
    }

    void expectNoCollaboratorIsHeld() const {
        EXPECT_EQ(transport.use_count(), 1);
        EXPECT_EQ(metrics.use_count(), 1);
        EXPECT_EQ(sdk.use_count(), 1);
        EXPECT_EQ(app.use_count(), 1);
        EXPECT_EQ(device.use_count(), 1);
    }

    SettingsHandlerTesting::Journal journal;
    SettingsHandlerTesting::PlatformRecording recording{journal};
    /// Number of log lines of the last attempt.
    std::size_t lines = 0;
    std::shared_ptr<ForgetfulTransport> transport = std::make_shared<ForgetfulTransport>();
    SettingsHandlerTesting::MockStorage storage;
    std::shared_ptr<SettingsHandlerTesting::MockMetrics> metrics =
        std::make_shared<SettingsHandlerTesting::MockMetrics>();
    std::shared_ptr<SettingsHandlerTesting::MockSdkBridge> sdk =
        std::make_shared<SettingsHandlerTesting::MockSdkBridge>();
    std::shared_ptr<SettingsHandlerTesting::MockAppLaunch> app =
        std::make_shared<SettingsHandlerTesting::MockAppLaunch>();
    std::shared_ptr<SettingsHandlerTesting::MockDeviceInfo> device =
        std::make_shared<SettingsHandlerTesting::MockDeviceInfo>();
};

TEST_F(CreationFailure, OfTheHandlersOwnMemoryHappensBeforeAnyRegistration) {
    EXPECT_FALSE(createsWithAllocations(0));
    EXPECT_EQ(transport->registrations, 0);
    expectNoCollaboratorIsHeld();
}

TEST_F(CreationFailure, OfTheControlBlockDestroysTheHandlerAndKeepsTheRegistrations) {
    EXPECT_FALSE(createsWithAllocations(1));
    EXPECT_EQ(transport->registrations, 5);
    EXPECT_EQ(lines, 0U);
    expectNoCollaboratorIsHeld();
}

TEST_F(CreationFailure, AtAnyLaterStepLeaksNothing) {
    long successes = 2;
    while (!createsWithAllocations(successes)) {
        expectNoCollaboratorIsHeld();
        ++successes;
        ASSERT_LT(successes, 1000);
    }
    EXPECT_GT(successes, 2) << "the log line allocates, so some step must have failed";
    EXPECT_EQ(lines, 1U);
    expectNoCollaboratorIsHeld();
}

TEST_F(CreationFailure, IsTestedWithSeparateBlocksForHandlerAndControlBlock) {
    const long before = blocksInUse;
    const auto handler = SettingsHandler::SettingsHandler::create(transport, storage, metrics, sdk, app, device);
    journal.take();
    EXPECT_EQ(blocksInUse - before, 2);
}

}  // namespace
