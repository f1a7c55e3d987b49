#include <thread>

#include "HandlerFixture.h"
#include "ThreadSafeCollaborators.h"

namespace SettingsHandlerTests {

/// For the thread sanitizer only, with cmake/thread-sanitizer.suppressions: shows that only the operations named there
/// race. The maps are filled before and the values do not change, so the races write the same bytes.
TEST(ThreadsWithoutGuard, RaceInTheNamedPlacesOnly) {
    Surroundings surroundings;
    auto& handler = *surroundings.handler;
    handler.initializeSettings();
    handler.setSetting("unknown", "short");
    const std::string request = R"({"timestamp":7,"payload":{"settingDBId":"unknown","to":"short"}})";
    EXPECT_FALSE(handler.handleSetSettingRequest(request));

    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int number = 0; number < 8; ++number) {
        threads.emplace_back([&handler, &request, number] {
            for (int round = 0; round < 200; ++round) {
                EXPECT_FALSE(handler.handleSetSettingRequest(request));
                handler.handleGetSettingsRequest(R"({"messageId":"m","payload":{"settings":["unknown"]}})");
                EXPECT_TRUE(handler.setSetting("deviceName", std::to_string(number) + " " + std::to_string(round)));
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(surroundings.transport->eventsOf("deviceName"), 8 * 200);
    EXPECT_EQ(surroundings.transport->responses, 8 * 200);
}

}  // namespace SettingsHandlerTests
