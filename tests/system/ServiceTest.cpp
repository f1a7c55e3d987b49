#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <fcntl.h>

#include "HostFixture.h"
#include "support/ListeningSocket.h"
#include "support/NotificationSocket.h"
#include "support/WebClient.h"

namespace SystemTests {

using TestSupport::NotificationSocket;

/// The host under a service manager.
class HostService : public HostTest {
protected:
    HostService() : notifications(folder / "notify") { environment["NOTIFY_SOCKET"] = folder / "notify"; }

    std::string next() { return notifications.receive().value_or("(none)"); }

    /// The number of notifications that have arrived.
    int countWaiting() {
        int count = 0;
        while (notifications.receive(std::chrono::milliseconds(0))) {
            ++count;
        }
        return count;
    }

    /// Passes three sockets to the host, as a service manager does. `names`: LISTEN_FDNAMES.
    void pass(const std::string& names) {
        std::filesystem::create_directory(folder / "passed");
        made.push_back(TestSupport::listeningUnixSocket(folder / "passed/s"));
        made.push_back(TestSupport::listeningUnixSocket(folder / "passed/d"));
        made.push_back(TestSupport::listeningTcpSocket("127.0.0.1"));
        for (const auto& socket : made) {
            sockets.push_back(socket.get());
        }
        environment["LISTEN_FDNAMES"] = names;
    }

    /// Expects this message as the only output.
    void expectCannotStart(const std::string& message) {
        const auto failed = runToEnd();
        EXPECT_EQ(failed.errors, "settings-host: " + message + "\n");
        EXPECT_EQ(failed.output, "");
        EXPECT_EQ(failed.status, 1);
        EXPECT_FALSE(std::filesystem::exists(database())) << "the database was created";
    }

    /// The values of `name` in a unit.
    static Lines unitLines(const std::string& unit, const std::string& name) {
        std::ifstream file(std::string(SYSTEMD_UNITS) + "/" + unit);
        Lines found;
        for (std::string line; std::getline(file, line);) {
            if (line.rfind(name + "=", 0) == 0) {
                found.push_back(line.substr(name.size() + 1));
            }
        }
        return found;
    }

    /// Would a child process of the host inherit its descriptor `number`?
    bool isInherited(int number) {
        std::ifstream file("/proc/" + std::to_string(host->pid()) + "/fdinfo/" + std::to_string(number));
        unsigned long flags = 0;
        for (std::string word; file >> word && word != "flags:";) {
        }
        EXPECT_TRUE(file >> std::oct >> flags) << number;
        return (flags & O_CLOEXEC) == 0;
    }

    NotificationSocket notifications;
    std::vector<TestSupport::PlainSocket> made;
};

TEST_F(HostService, NotifiesTheServiceManagerInOrder) {
    start();
    EXPECT_EQ(next(), "STATUS=Opening the database");
    EXPECT_EQ(next(), "READY=1\nSTATUS=Serving at " + socket());
    EXPECT_EQ(get("deviceName"), "TV");
    disconnect();
    host->sendSignal(SIGTERM);
    EXPECT_EQ(next(), "STOPPING=1\nSTATUS=Draining connections");
    EXPECT_EQ(host->wait(), 0);
    EXPECT_EQ(countWaiting(), 0) << "there is no watchdog";
}

TEST_F(HostService, IsNotReadyWhenItCannotStart) {
    std::filesystem::create_directory(folder / "state");
    std::filesystem::create_directory(database());
    EXPECT_EQ(launch()->wait(), 1);
    EXPECT_EQ(next(), "STATUS=Opening the database");
    EXPECT_EQ(countWaiting(), 0);
}

TEST_F(HostService, TheStatusHoldsNoKey) {
    webArguments = {"--listen", "127.0.0.1:0"};
    host = launch();
    const std::string ready = host->output().readLine().value();
    const std::string address = ready.substr(14, ready.find("/?key=") - 14);
    EXPECT_EQ(next(), "STATUS=Opening the database");
    EXPECT_EQ(next(), "READY=1\nSTATUS=Serving at " + socket() + " and " + address);
}

TEST_F(HostService, NotifiesTheWatchdogWhileItsLoopRuns) {
    environment["WATCHDOG_USEC"] = "100000";
    start();
    EXPECT_EQ(next(), "STATUS=Opening the database");
    EXPECT_EQ(next(), "READY=1\nSTATUS=Serving at " + socket());
    for (int count = 0; count < 5; ++count) {
        EXPECT_EQ(next(), "WATCHDOG=1");
    }
    ::kill(host->pid(), SIGSTOP);
    // Sent before it was stopped.
    while (notifications.receive(std::chrono::milliseconds(500))) {
    }
    EXPECT_FALSE(notifications.receive(std::chrono::seconds(1)));
    ::kill(host->pid(), SIGCONT);
    EXPECT_EQ(next(), "WATCHDOG=1");
    stop();
    bool stopping = false;
    while (const auto notice = notifications.receive(std::chrono::milliseconds(0))) {
        stopping = stopping || *notice == "STOPPING=1\nSTATUS=Draining connections";
    }
    EXPECT_TRUE(stopping);
}

TEST_F(HostService, NotifiesTheWatchdogTwicePerInterval) {
    constexpr std::chrono::seconds interval(4);
    environment["WATCHDOG_USEC"] = std::to_string(std::chrono::microseconds(interval).count());
    start();
    EXPECT_EQ(next(), "STATUS=Opening the database");
    EXPECT_EQ(next(), "READY=1\nSTATUS=Serving at " + socket());
    auto last = notifications.received();
    std::chrono::nanoseconds longest{0};
    for (int count = 0; count < 3; ++count) {
        EXPECT_EQ(next(), "WATCHDOG=1");
        longest = std::max(longest, notifications.received() - last);
        last = notifications.received();
    }
    // The rest of the interval is for a busy machine.
    EXPECT_LT(longest, interval * 3 / 4) << longest.count();
}

TEST_F(HostService, IgnoresTheWatchdogOfAnotherProcess) {
    environment["WATCHDOG_USEC"] = "100000";
    environment["WATCHDOG_PID"] = std::to_string(::getpid());
    start();
    EXPECT_EQ(next(), "STATUS=Opening the database");
    EXPECT_EQ(next(), "READY=1\nSTATUS=Serving at " + socket());
    EXPECT_FALSE(notifications.receive(std::chrono::milliseconds(500)));
}

TEST_F(HostService, ServesAtTheSocketsThatWerePassed) {
    webArguments = {"--listen", "127.0.0.1:0"};
    pass("settings:device:web");
    const std::uint16_t port = made[2].port();
    // A client that connects before the host starts is served, too.
    WireTests::HostClient early(folder / "passed/s", WireTests::Listener::SETTINGS);
    early.sendLine(getRequest(R"(["deviceName"])"));
    host = launch();
    const std::string ready = host->output().readLine().value_or("(none)");
    EXPECT_EQ(ready.rfind("ready: http://127.0.0.1:" + std::to_string(port) + "/?key=", 0), 0U) << ready;
    EXPECT_TRUE(contains(ready, " socket: " + (folder / "passed/s"))) << ready;
    for (const int place : {3, 4, 5}) {
        EXPECT_FALSE(isInherited(place)) << place;
    }
    EXPECT_EQ(early.receiveLine(), R"({"type":7,"messageId":"g","payload":{"settings":{"deviceName":"TV"}}})");
    WireTests::HostClient person(folder / "passed/d", WireTests::Listener::DEVICE);
    person.sendLine(R"({"command":"captions","enabled":true})");
    EXPECT_EQ(person.receiveLine(), R"({"ok":true})");
    EXPECT_EQ(WireTests::healthOf(port).status, 200);
    EXPECT_FALSE(std::filesystem::exists(socket())) << "the host created a socket";
    EXPECT_FALSE(std::filesystem::exists(deviceSocket()));
    stop();
    EXPECT_TRUE(std::filesystem::exists(folder / "passed/s")) << "the host removed a passed socket";
    // The next host serves at the same sockets.
    WireTests::HostClient between(folder / "passed/s", WireTests::Listener::SETTINGS);
    between.sendLine(getRequest(R"(["captionsEnabled"])"));
    host = launch();
    EXPECT_EQ(between.receiveLine(), R"({"type":7,"messageId":"g","payload":{"settings":{"captionsEnabled":"true"}}})");
}

TEST_F(HostService, MakesTheSocketsThatWereNotPassed) {
    pass("settings");
    sockets.resize(1);
    host = launch();
    EXPECT_EQ(host->output().readLine(), "ready: socket: " + (folder / "passed/s"));
    EXPECT_EQ(device(R"({"command":"captions","enabled":true})"), R"({"ok":true})");
    EXPECT_FALSE(std::filesystem::exists(socket()));
}

TEST_F(HostService, RefusesPassedSocketsWithoutAListener) {
    pass("settings:device:web");
    expectCannotStart("a socket named 'web' was passed, but there is no such listener");
    webArguments = {"--listen", "127.0.0.1:0"};
    environment["LISTEN_FDNAMES"] = "settings:settings:web";
    expectCannotStart("two sockets named 'settings' were passed");
    environment["LISTEN_FDNAMES"] = "settings:web:device";
    expectCannotStart("the passed socket is not a listening TCP socket");
    environment["LISTEN_FDNAMES"] = "settings:device:";
    expectCannotStart("a socket named '' was passed, but there is no such listener");
    environment.erase("LISTEN_FDNAMES");
    expectCannotStart("a socket named 'unknown' was passed, but there is no such listener");
    environment["LISTEN_FDNAMES"] = "settings:device:web";
    const auto everywhere = TestSupport::listeningTcpSocket("0.0.0.0");
    sockets[2] = everywhere.get();
    expectCannotStart("the passed socket does not listen at a loopback address");
}

TEST_F(HostService, RefusesPassedSocketsThatAreNotOpen) {
    environment["LISTEN_FDNAMES"] = "settings";
    sockets = {-1};
    expectCannotStart("cannot take the passed sockets over: Bad file descriptor");
}

TEST_F(HostService, IsAlwaysRestartedByItsUnits) {
    const std::string service = "settings-host.service";
    EXPECT_EQ(unitLines(service, "StartLimitIntervalSec"), Lines{"0"});
    EXPECT_EQ(unitLines(service, "StartLimitBurst"), Lines{});
    EXPECT_EQ(unitLines(service, "Restart"), Lines{"on-failure"});
    EXPECT_EQ(unitLines(service, "RestartSec"), Lines{"2"});
    EXPECT_EQ(unitLines(service, "RestartPreventExitStatus"), Lines{"2"});
    std::string stopsSockets = R"(+/bin/sh -c 'test "$$EXIT_STATUS" != 2 || exec systemctl stop --no-block)";
    for (const std::string unit : {"settings-host.socket", "settings-host-device.socket", "settings-host-web.socket"}) {
        EXPECT_EQ(unitLines(unit, "TriggerLimitIntervalSec"), Lines{"0"}) << unit;
        EXPECT_EQ(unitLines(unit, "TriggerLimitBurst"), Lines{}) << unit;
        stopsSockets += " " + unit;
    }
    EXPECT_EQ(unitLines(service, "ExecStopPost"), Lines{stopsSockets + "'"});
}

TEST_F(HostService, StartsAsTheUnitsSay) {
    const Lines units{"settings-host.socket", "settings-host-device.socket", "settings-host-web.socket"};
    std::string names;
    for (const auto& unit : units) {
        EXPECT_EQ(unitLines(unit, "Service"), Lines{"settings-host.service"});
        names += (names.empty() ? "" : ":") + unitLines(unit, "FileDescriptorName").at(0);
    }
    pass(names);
    std::istringstream command(unitLines("settings-host.service", "ExecStart").at(0));
    Lines arguments;
    for (std::string word; command >> word;) {
        const std::string state = "/var/lib/settings-host/";
        arguments.push_back(word.rfind(state, 0) == 0 ? folder / ("state/" + word.substr(state.size())) : word);
    }
    EXPECT_EQ(arguments.at(0), "/usr/bin/settings-host");
    arguments[0] = SETTINGS_HOST;
    if (!sandboxSwitch.empty()) {
        arguments.push_back(sandboxSwitch);
    }
    host = std::make_unique<TestSupport::ChildProcess>(arguments, environment, sockets);
    EXPECT_EQ(next(), "STATUS=Opening the database");
    EXPECT_EQ(next(), "READY=1\nSTATUS=Serving at " + (folder / "passed/s") +
                          " and 127.0.0.1:" + std::to_string(made[2].port()));
    EXPECT_TRUE(std::filesystem::exists(database()));
}

}  // namespace SystemTests
