#include <thread>

#include <sys/resource.h>

#include "HostFixture.h"
#include "support/Repeated.h"

namespace SystemTests {

using HostListeners = HostTest;

TEST_F(HostListeners, AClientThatNeverReadsIsDisconnectedAndDelaysNobody) {
    start({"--log-level", "3"});
    WireTests::HostClient slow(socket());
    slow.sendLine(getRequest("[]", "slow"));
    const std::string value(30000, 'v');
    for (int number = 0; number < 100; ++number) {
        set("deviceName", "\"" + std::to_string(number) + value + "\"");
    }
    ASSERT_TRUE(slow.receiveLine());
    int expected = 1;
    while (const auto line = slow.receiveLine()) {
        EXPECT_EQ(parsed(*line)["sequence"].GetInt(), expected) << "a gap";
        ++expected;
    }
    EXPECT_TRUE(slow.closedByPeer());
    EXPECT_LT(expected, 100);
    EXPECT_EQ(get("timezone"), "America/Vancouver");
}

TEST_F(HostListeners, ASingleReplyLargerThanTheLimitReachesAClientThatReads) {
    start({"--log-level", "3"});
    // One byte in the storage, six in a frame.
    const std::string value = TestSupport::repeated(R"(\u0001)", 10000);
    std::string keys;
    for (int number = 0; number < 30; ++number) {
        const std::string key = "key" + std::to_string(number);
        set(key, "\"" + value + "\"");
        keys += (keys.empty() ? "\"" : ",\"") + key + "\"";
    }
    const auto reply = ask(getRequest("[" + keys + "]"));
    EXPECT_EQ(reply["payload"]["settings"].MemberCount(), 30U);
}

TEST_F(HostListeners, AFloodFromOneClientDelaysNobody) {
    start({"--log-level", "3"});
    client();
    ASSERT_EQ(get("deviceName"), "TV");
    WireTests::HostClient flood(socket());
    std::string frames;
    constexpr std::size_t requests = TestSupport::sanitized ? 4000 : 20000;
    for (std::size_t number = 0; number < requests; ++number) {
        frames += R"({"type":18,"messageId":"m"})"
                  "\n";
    }
    std::thread sender([&] {
        flood.send(frames);
        flood.finishSending();
    });
    std::size_t answered = 0;
    std::thread reader([&] {
        while (flood.receiveLine()) {
            ++answered;
        }
    });
    for (int number = 0; number < 20; ++number) {
        EXPECT_EQ(get("deviceName"), "TV");
    }
    sender.join();
    reader.join();
    EXPECT_EQ(answered, requests);
}

TEST_F(HostListeners, AtTheDescriptorLimitConnectedClientsAreServed) {
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    rlimit low = before;
    low.rlim_cur = 64;
    ::setrlimit(RLIMIT_NOFILE, &low);
    auto launched = launch({"--log-level", "3"});
    ::setrlimit(RLIMIT_NOFILE, &before);
    host = std::move(launched);
    ASSERT_TRUE(host->output().readLine());
    EXPECT_EQ(get("deviceName"), "TV");
    std::vector<std::unique_ptr<WireTests::HostClient>> connections;
    connections.reserve(100);
    for (int number = 0; number < 100; ++number) {
        connections.push_back(std::make_unique<WireTests::HostClient>(socket()));
    }
    EXPECT_EQ(get("deviceName"), "TV");
    const long ticks = TestSupport::processorTicks(host->pid());
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_LT(TestSupport::processorTicks(host->pid()) - ticks, 15) << "the host spins";
    connections.clear();
    EXPECT_EQ(get("deviceName"), "TV");
    // The host accepts those that waited first, so one that comes now may be rejected once more.
    std::optional<std::string> reply;
    while (!reply) {
        WireTests::HostClient late(socket());
        late.sendLine(getRequest(R"(["deviceName"])"));
        reply = late.receiveLine();
    }
    EXPECT_EQ(*reply, R"({"type":7,"messageId":"g","payload":{"settings":{"deviceName":"TV"}}})");
}

TEST_F(HostListeners, FramesMayComeByteByByte) {
    start();
    for (const char byte : getRequest(R"(["deviceName"])") + "\r\n") {
        client().send(std::string(1, byte));
    }
    EXPECT_EQ(client().receiveLine(), R"({"type":7,"messageId":"g","payload":{"settings":{"deviceName":"TV"}}})");
}

TEST_F(HostListeners, TheDeviceSocketRefusesInvalidFrames) {
    start();
    EXPECT_TRUE(contains(device("nonsense"), "\"not-json\""));
    EXPECT_TRUE(contains(device("[]"), "\"not-an-object\""));
    EXPECT_TRUE(contains(device("{\"a\":" + std::string(40, '[') + std::string(40, ']') + "}"), "\"too-deep\""));
    EXPECT_TRUE(contains(device(std::string(70000, 'x')), "\"too-large\""));
    EXPECT_TRUE(contains(device("{}"), "\"unknown-command\""));
    EXPECT_TRUE(contains(device(R"({"command":"show"})"), R"({"device":{)"));
}

TEST_F(HostListeners, EventsGoToSettingsClientsOnly) {
    start();
    WireTests::HostClient person(deviceSocket());
    person.sendLine(R"({"command":"captions","enabled":true})");
    EXPECT_EQ(person.receiveLine(), R"({"ok":true})");
    set("deviceName", "\"Den\"");
    person.sendLine(R"({"command":"captions","enabled":true})");
    EXPECT_EQ(person.receiveLine(), R"({"ok":true})");
}

}  // namespace SystemTests
