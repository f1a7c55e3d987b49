#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <malloc.h>

#include "ThreadSafeCollaborators.h"
#include "Wire/Catalogue.h"

// A separate program, because it replaces the allocation functions of the whole program: those of C, which C++ and
// the JSON library call.

extern "C" {
void* __libc_malloc(std::size_t size);                           // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t count, std::size_t size);        // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* block, std::size_t size);             // NOLINT(bugprone-reserved-identifier)
void* __libc_memalign(std::size_t alignment, std::size_t size);  // NOLINT(bugprone-reserved-identifier)
void __libc_free(void* block);                                   // NOLINT(bugprone-reserved-identifier)
}

namespace {

std::atomic<long> allocations{0};
std::atomic<long> blocksInUse{0};
std::atomic<long> bytesInUse{0};

/// Each block is larger than requested and keeps the requested size at its end, because the allocator's own overhead
/// differs from block to block.
std::size_t withNote(std::size_t size) {
    return size + sizeof(std::size_t);
}

char* noteIn(void* block) {
    return static_cast<char*>(block) + malloc_usable_size(block) - sizeof(std::size_t);
}

void* taken(void* block, std::size_t size) {
    if (block != nullptr) {
        std::memcpy(noteIn(block), &size, sizeof(size));
        ++allocations;
        ++blocksInUse;
        bytesInUse += static_cast<long>(size);
    }
    return block;
}

void* givenBack(void* block) {
    if (block != nullptr) {
        std::size_t size = 0;
        std::memcpy(&size, noteIn(block), sizeof(size));
        --blocksInUse;
        bytesInUse -= static_cast<long>(size);
    }
    return block;
}

}  // namespace

extern "C" {
void* malloc(std::size_t size) noexcept {
    return taken(__libc_malloc(withNote(size)), size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
    return taken(__libc_calloc(1, withNote(count * size)), count * size);
}
void* realloc(void* block, std::size_t size) noexcept {
    return taken(__libc_realloc(givenBack(block), withNote(size)), size);
}
void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return taken(__libc_memalign(alignment, withNote(size)), size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return memalign(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    *block = memalign(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}
void free(void* block) noexcept {
    __libc_free(givenBack(block));
}
}

namespace SettingsHandlerTests {

struct Memory {
    long blocks = blocksInUse;
    long bytes = bytesInUse;
};

/// A handler that is used until every map, registry and buffer has its final size.
class Allocations : public ::testing::Test {
protected:
    void SetUp() override {
        surroundings.storage.setValue("kept by older software", "a value that fits into no small buffer");
        surroundings.handler->initializeSettings();
    }

    /// Expects that the same memory is in use after 10,000 calls of `request(n)` as after 1,000, and that the second
    /// thousand calls make as many allocations as the last.
    void expectSteady(const std::string& what, const std::function<void(int)>& request) {
        int done = 0;
        const auto doUntil = [&](int end) {
            for (; done < end; ++done) {
                request(done);
            }
        };
        doUntil(1000);
        const Memory early;
        const long before = allocations;
        doUntil(2000);
        const long first = allocations - before;
        doUntil(9000);
        const long middle = allocations;
        doUntil(10000);
        const long last = allocations - middle;
        const Memory late;
        EXPECT_EQ(late.blocks, early.blocks) << what;
        EXPECT_EQ(late.bytes, early.bytes) << what;
        EXPECT_EQ(last, first) << what;
        RecordProperty(what, static_cast<int>(first / 1000));
    }

    void expectSteady(const std::string& what, const std::string& request) {
        expectSteady(what, [&](int) { surroundings.handler->handleSetSettingRequest(request); });
    }

    static std::string setRequest(const std::string& key, const std::string& value) {
        return R"({"type":24,"timestamp":1,"payload":{"settingDBId":")" + key + R"(","to":")" + value + "\"}}";
    }

    Surroundings surroundings;
    SettingsHandler::SettingsHandler& handler = *surroundings.handler;
};

TEST_F(Allocations, OfChangesAreFreed) {
    std::vector<std::string> keys{"an unknown key"};
    for (const auto& setting : Wire::catalogue()) {
        if (!setting.setByDeviceOnly && setting.kind != Wire::SettingKind::LOCALES) {
            keys.push_back(setting.key);
        }
    }
    for (const auto& key : keys) {
        const std::vector<std::string> requests{setRequest(key, "one value that fits into no small buffer"),
                                                setRequest(key, "two value that fits into no small buffer")};
        expectSteady(key, [&](int number) {
            EXPECT_TRUE(handler.handleSetSettingRequest(requests[static_cast<std::size_t>(number % 2)]));
        });
    }
    const std::vector<std::string> requests{setRequest("orliaLocale", R"([\"fr-FR\", \"en-US\"])"),
                                            setRequest("orliaLocale", R"([\"de-DE\", \"en-US\"])")};
    expectSteady("orliaLocale", [&](int number) {
        EXPECT_TRUE(handler.handleSetSettingRequest(requests[static_cast<std::size_t>(number % 2)]));
    });
}

TEST_F(Allocations, OfRefusedRequestsAreFreed) {
    handler.handleSetSettingRequest(setRequest("deviceName", "the value it has already, and so no change"));
    expectSteady("unchanged", setRequest("deviceName", "the value it has already, and so no change"));
    expectSteady("not JSON", std::string("this is not JSON at all"));
    expectSteady("no object", std::string("[1,2,3]"));
    expectSteady("no time stamp", std::string(R"({"payload":{"settingDBId":"deviceName","to":"x"}})"));
    expectSteady("too old", std::string(R"({"timestamp":0,"payload":{"settingDBId":"deviceName","to":"x"}})"));
    expectSteady("no payload", std::string(R"({"timestamp":1})"));
    expectSteady("no key", std::string(R"({"timestamp":1,"payload":{"to":"x"}})"));
    expectSteady("no value", std::string(R"({"timestamp":1,"payload":{"settingDBId":"deviceName"}})"));
    expectSteady("the device's alone", setRequest("captionsEnabled", "true"));
    expectSteady("no locales", setRequest("orliaLocale", "[]"));
    expectSteady("locales that are not JSON", setRequest("orliaLocale", "fr-FR"));
}

TEST_F(Allocations, OfReadRequestsAreFreed) {
    expectSteady("all settings",
                 [this](int) { handler.handleGetSettingsRequest(R"({"messageId":"m","payload":{"settings":[]}})"); });
    expectSteady("some settings", [this](int) {
        handler.handleGetSettingsRequest(
            R"({"messageId":"m","payload":{"settings":["timezone","kept by older software","unknown"]}})");
    });
    expectSteady("no payload", [this](int) { handler.handleGetSettingsRequest(R"({"messageId":"m"})"); });
    expectSteady("is it selected", [this](int) { handler.handleIsOrliaSelectedVARequest(R"({"messageId":"m"})"); });
    expectSteady("open the settings", [this](int) { handler.handleOpenVASettingsRequest(""); });
    expectSteady("the current map", [this](int) { handler.getCurrentSettingsMap(); });
}

TEST_F(Allocations, OfNotificationsAreFreed) {
    const std::vector<std::string> values{"one value that fits into no small buffer",
                                          "two value that fits into no small buffer"};
    const auto value = [&](int number) { return values[static_cast<std::size_t>(number % 2)]; };
    expectSteady("a locale", [&](int number) { handler.notifyLocaleChange(value(number)); });
    expectSteady("locales", [&](int number) {
        handler.notifyLocaleChange(std::vector<std::string>{value(number), "en-US"});
    });
    expectSteady("a time zone", [&](int number) { handler.notifyTimezoneChange(value(number)); });
    expectSteady("a setting", [&](int number) { handler.notifySystemSettingChanged("captionsStyles", value(number)); });
    expectSteady("hands-free", [&](int number) { handler.notifyHandsfreeStateChanged(number % 2 == 0); });
}

/// Ignores its notifications.
class Indifferent : public VessaNativeCommon::FriendlyNameObserverInterface,
                    public VessaNativeCommon::OrliaLocaleObserverInterface,
                    public teskVessa::NativeBridgeInterface {
public:
    void notifyFriendlyNameChanged(const std::string& /*friendlyName*/) override {}
    void notifyOrliaLocaleChanged(const std::string& /*locale*/) override {}
    void notifyEntitlementStatusChanged(const std::string& /*status*/) override {}
};

TEST_F(Allocations, OfAddedAndRemovedObserversAreFreed) {
    const auto steady = std::make_shared<Indifferent>();
    handler.addFriendlyNameObserver(steady);
    handler.addEntitlementStatusObserver(steady);
    handler.addOrliaLocaleObserver(steady);
    expectSteady("observers", [&](int number) {
        const auto passing = std::make_shared<Indifferent>();
        const std::string value = number % 2 == 0 ? "even" : "odd";
        handler.addFriendlyNameObserver(passing);
        handler.addEntitlementStatusObserver(passing);
        handler.setSetting("friendlyName", value);
        handler.setSetting("tovanEntitlementStatus", value);
        handler.setSetting("orliaLocale", "[\"" + value + "\"]");
        handler.removeFriendlyNameObserver(passing);
        handler.removeEntitlementStatusObserver(passing);
    });
}

TEST_F(Allocations, OfInitialisationsAndLogOutsAreFreed) {
    expectSteady("a start", [this](int) {
        handler.initializeSettings();
        handler.migrateExistingDeviceSettings();
    });
    expectSteady("a log-out", [this](int number) {
        handler.setSetting("key " + std::to_string(number % 10), "a value that fits into no small buffer");
        handler.handleLogOutRequest();
    });
}

TEST(AllocationCounts, IncludeThoseOfTheJsonLibrary) {
    const long before = allocations;
    const Memory memory;
    {
        const rapidjson::Document document(rapidjson::kArrayType);
        rapidjson::Document copy;
        copy.CopyFrom(document, copy.GetAllocator());
        copy.PushBack(1, copy.GetAllocator());
        EXPECT_GT(allocations, before);
        EXPECT_GT(blocksInUse, memory.blocks);
        EXPECT_GT(bytesInUse, memory.bytes);
    }
    EXPECT_EQ(blocksInUse, memory.blocks);
    EXPECT_EQ(bytesInUse, memory.bytes);
}

}  // namespace SettingsHandlerTests
