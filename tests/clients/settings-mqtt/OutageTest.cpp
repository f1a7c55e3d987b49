#include <cstring>
#include <fstream>

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "ProgramFixture.h"
#include "support/LineReader.h"
#include "support/ListeningSocket.h"
#include "support/RegularExpression.h"
#include "support/SendAll.h"

namespace SettingsMqttTest {

namespace {

/// The next packet of MQTT, without its length; empty at the end.
std::string packetFrom(int peer) {
    const auto bytes = [peer](std::size_t count) {
        std::string read(count, '\0');
        const auto got = ::recv(peer, read.data(), count, MSG_WAITALL);
        read.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
        return read;
    };
    std::string packet = bytes(1);
    std::size_t length = 0;
    int shift = 0;
    for (std::string digit = packet.empty() ? "" : "\x80"; !digit.empty() && (digit[0] & 0x80) != 0; shift += 7) {
        digit = bytes(1);
        length |= digit.empty() ? 0 : static_cast<std::size_t>(digit[0] & 0x7f) << shift;
    }
    return packet + bytes(length);
}

bool isPublish(const std::string& packet) {
    return (packet[0] & 0xf0) == 0x30;
}

std::string acknowledgementOf(const std::string& published) {
    const auto topicLength = static_cast<std::size_t>(published[1] * 256 + published[2]);
    return "\x40\x02" + published.substr(3 + topicLength, 2);
}

/// The host's end of the bridge's connection.
class HostEnd {
public:
    explicit HostEnd(const TestSupport::PlainSocket& listener)
        : socket(::accept(listener.get(), nullptr, nullptr)), reader(socket.get()) {}

    void send(const std::string& line) const { EXPECT_TRUE(TestSupport::sendAll(socket.get(), line + "\n")); }
    /// Sends `members` to the next request, which has `word`.
    void answer(const std::string& word, const std::string& members) {
        const std::string request = reader.readLine().value_or("");
        EXPECT_NE(request.find('"' + word + '"'), std::string::npos) << request;
        const auto id = TestSupport::matchOf(request, R"(.*("messageId":"[^"]*").*)");
        send("{" + (id.empty() ? "" : id[1]) + "," + members + "}");
    }

private:
    TestSupport::PlainSocket socket;
    TestSupport::LineReader reader;
};

/// The rest of this process, and what it starts, has a network of its own.
void enterNetwork() {
    const uid_t user = ::geteuid();
    const gid_t group = ::getegid();
    if (::unshare(user == 0 ? CLONE_NEWNET : CLONE_NEWUSER | CLONE_NEWNET) != 0) {
        throw std::runtime_error(std::string("unshare: ") + std::strerror(errno));
    }
    if (user != 0) {
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << user << ' ' << user << " 1";
        std::ofstream("/proc/self/gid_map") << group << ' ' << group << " 1";
    }
}

void setNetwork(bool isUp) {
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    const bool isRead = ::ioctl(socket, SIOCGIFFLAGS, &request) == 0;
    request.ifr_flags = static_cast<short>(isUp ? request.ifr_flags | IFF_UP : request.ifr_flags & ~IFF_UP);
    const bool isDone = isRead && ::ioctl(socket, SIOCSIFFLAGS, &request) == 0;
    ::close(socket);
    if (!isDone) {
        throw std::runtime_error("the network of the test cannot be switched");
    }
}

}  // namespace

TEST_F(MqttProgram, ComesBackAfterTheBrokerWasKilled) {
    RunningBridge bridge(host, broker.address());
    bridge.awaitLog("connected to the broker");
    broker.kill();
    bridge.awaitLog("lost the connection to the broker");
    set("captionsFontSize", "FONT_LARGE");
    set("captionsFontSize", "FONT_SMALL");
    // It waits until the subscriber is there.
    bridge.sendSignal(SIGSTOP);
    broker.start();
    Subscriber subscriber(broker.port(), {"settings/tv/#"});
    bridge.sendSignal(SIGCONT);
    // Its memory is empty, so all of this is new: first all states, then the newest event.
    const auto messages = subscriber.until("settings/tv/event");
    EXPECT_NE(std::find(messages.begin(), messages.end(), "settings/tv/state/captionsFontSize FONT_SMALL"),
              messages.end());
    EXPECT_NE(std::find(messages.begin(), messages.end(), "settings/tv/state/timezone America/Vancouver"),
              messages.end());
    EXPECT_NE(std::find(messages.begin(), messages.end(), "settings/tv/availability online"), messages.end());
    EXPECT_NE(messages.back().find(R"("from":"FONT_LARGE","to":"FONT_SMALL","sequence":2)"), std::string::npos);
}

TEST(MqttNetwork, LosesNoChangeWhileTheNetworkIsCut) {
    enterNetwork();
    setNetwork(true);
    SettingsCtlTests::RunningHost host;
    RunningBroker broker;
    RunningBridge bridge(host, broker.address());
    bridge.awaitLog("connected to the broker");
    setNetwork(false);
    ASSERT_EQ(host.run({"set", "captionsFontSize", "FONT_LARGE"}).status, 0);
    bridge.awaitLog("lost the connection to the broker");
    ASSERT_EQ(host.run({"set", "captionsStyles", "STYLE_BLACK_ON_WHITE"}).status, 0);
    bridge.sendSignal(SIGSTOP);
    setNetwork(true);
    Subscriber subscriber(broker.port(), {"settings/tv/event", "settings/tv/state/#"});
    bridge.sendSignal(SIGCONT);
    auto messages = subscriber.until(R"(settings/tv/event {"key":"captionsStyles")");
    EXPECT_NE(std::find(messages.begin(), messages.end(), "settings/tv/state/captionsFontSize FONT_LARGE"),
              messages.end());
    EXPECT_NE(std::find_if(messages.begin(), messages.end(),
                           [](const std::string& message) {
                               return message.rfind(R"(settings/tv/event {"key":"captionsFontSize")", 0) == 0;
                           }),
              messages.end());
}

TEST_F(MqttProgram, TheBrokerSaysWhenTheBridgeWasKilled) {
    RunningBridge bridge(host, broker.address());
    Subscriber subscriber(broker.port(), {"settings/tv/availability"});
    subscriber.await("settings/tv/availability online");
    bridge.kill();
    EXPECT_EQ(subscriber.next(), "settings/tv/availability offline");
    bridge.start();
    EXPECT_EQ(subscriber.next(), "settings/tv/availability online");
}

TEST_F(MqttProgram, SaysWhenTheHostIsGoneAndIsRightAfterItsRestart) {
    RunningBridge bridge(host, broker.address());
    Subscriber subscriber(broker.port(), {"settings/tv/state/captionsFontSize", "settings/tv/availability"});
    subscriber.await("settings/tv/availability online");
    host.killAndRestart();
    EXPECT_EQ(subscriber.next(), "settings/tv/availability offline");
    EXPECT_EQ(subscriber.next(), "settings/tv/availability online");
    set("captionsFontSize", "FONT_LARGE");
    EXPECT_EQ(subscriber.next(), "settings/tv/state/captionsFontSize FONT_LARGE");
}

TEST_F(MqttProgram, ReadsAgainWhatABusyHostRefused) {
    const TestSupport::TemporaryDirectory folder;
    const auto listener = TestSupport::listeningUnixSocket(folder / "socket");
    Subscriber subscriber(broker.port(), {"settings/tv/state/timezone"});
    RunningBridge bridge(host, broker.address(), "tv", {"--socket", folder / "socket"});
    HostEnd busyHost(listener);
    const std::string busy = R"("error":{"code":"busy","message":"too much waits"})";
    const std::string catalogue = R"("catalogue":{"settings":[{"key":"timezone","number":1,"kind":"text",)"
                                  R"("setBy":"anyone","privacy":"preference"}]})";
    const std::string values = R"("type":7,"payload":{"settings":{"timezone":")";
    busyHost.answer("hello", R"("hello":{"version":"1.1.0","run":"r","sequence":0})");
    busyHost.answer("catalogue", busy);
    busyHost.answer("catalogue", catalogue);
    busyHost.answer("settings", values + R"(Asia/Tokyo"}})");
    EXPECT_EQ(subscriber.next(), "settings/tv/state/timezone Asia/Tokyo");
    busyHost.send(R"({"notice":{"reread":["timezone"]}})");
    busyHost.answer("settings", busy);
    busyHost.answer("catalogue", catalogue);
    busyHost.answer("settings", values + R"(Europe/Paris"}})");
    EXPECT_EQ(subscriber.next(), "settings/tv/state/timezone Europe/Paris");
}

TEST_F(MqttProgram, WaitsForAnUpdateOfAHostOfVersion1) {
    const TestSupport::TemporaryDirectory folder;
    const auto listener = TestSupport::listeningUnixSocket(folder / "socket");
    RunningBridge bridge(host, broker.address(), "tv", {"--socket", folder / "socket"});
    {
        const HostEnd oldHost(listener);
        oldHost.send(R"({"error":{"code":"unknown-type","message":"the frame has no type"}})");
        bridge.awaitLog("warning cannot read the settings: the host at " + std::string(folder / "socket") +
                        " is of version 1.0 and has no ");
    }
    HostEnd newHost(listener);
    newHost.answer("hello", R"("hello":{"version":"1.1.0","run":"r","sequence":0})");
    // It may have missed something.
    newHost.answer("settings", R"("type":7,"payload":{"settings":{}})");
    newHost.answer("catalogue", R"("catalogue":{"settings":[]})");
}

TEST_F(MqttProgram, TakesLeaveWhenTheBrokerHasAcknowledgedEverything) {
    const auto listener = TestSupport::listeningTcpSocket("127.0.0.1");
    RunningBridge bridge(host, "127.0.0.1:" + std::to_string(listener.port()));
    const int peer = ::accept(listener.get(), nullptr, nullptr);
    ASSERT_GE(peer, 0);
    const auto send = [peer](const std::string& packet) {
        EXPECT_EQ(::send(peer, packet.data(), packet.size(), MSG_NOSIGNAL), static_cast<ssize_t>(packet.size()));
    };
    const auto nextPublished = [peer] {
        std::string packet = packetFrom(peer);
        while (!packet.empty() && !isPublish(packet)) {
            packet = packetFrom(peer);
        }
        return packet;
    };
    send(std::string("\x20\x03\x00\x00\x00", 5));
    std::string published = nextPublished();
    bridge.sendSignal(SIGTERM);
    while (!published.empty() && published.find("offline") == std::string::npos) {
        send(acknowledgementOf(published));
        published = nextPublished();
    }
    // It still answers: a command, at least once.
    send(std::string("\x32\x06\x00\x01x\x00\x07\x00", 8));
    EXPECT_EQ(packetFrom(peer).substr(0, 3), std::string("\x40\x00\x07", 3));
    send(acknowledgementOf(published));
    EXPECT_EQ(packetFrom(peer).substr(0, 1), "\xe0");
    EXPECT_EQ(packetFrom(peer), "");
    ::close(peer);
    EXPECT_EQ(bridge.wait(), 0);
}

TEST_F(MqttProgram, ACommandIsNotStaleAfterOneOfAClientWhoseClockIsAhead) {
    RunningBridge bridge(host, broker.address());
    Subscriber subscriber(broker.port(), {"settings/tv/outcome", "settings/tv/availability"});
    subscriber.await("settings/tv/availability online");
    TestSupport::LineClient client(host.socketPath());
    client.sendLine(
        R"({"type":24,"messageId":"m","answer":true,"timestamp":4000000000000,"payload":{"settingDBId":"timezone","to":"Asia/Tokyo"}})");
    ASSERT_TRUE(client.receiveLine());
    publish(broker.port(), "settings/tv/set/timezone", "Europe/Paris");
    EXPECT_EQ(subscriber.next(), outcome(R"("key":"timezone","outcome":"changed","value":"Europe/Paris")"));
}

}  // namespace SettingsMqttTest
