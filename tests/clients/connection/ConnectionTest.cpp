#include <atomic>
#include <csignal>
#include <exception>
#include <fstream>
#include <future>
#include <optional>
#include <thread>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include "ErrorOf.h"
#include "SettingsClient/Errors.h"
#include "clients/support/Peer.h"
#include "connection/Connection.h"
#include "support/TemporaryDirectory.h"

using namespace SettingsClient;
using namespace ClientTests;
using namespace std::chrono_literals;

namespace {

using TestSupport::waitTimeout;

std::vector<SocketCandidate> at(const std::string& path) {
    return {{path, "", ""}};
}

class ClientConnection : public testing::Test {
protected:
    TestSupport::TemporaryDirectory folder;
    std::string path = folder / "host.sock";
};

}  // namespace

TEST_F(ClientConnection, AssemblesALineSplitAnywhere) {
    const ListeningSocket listener(path);
    Connection connection(at(path), waitTimeout);
    const Peer host = listener.accept();
    const std::string text = "{\"a\":\"\xc3\xbc\"}\r\nnext\n";
    for (std::size_t split = 0; split <= text.size(); ++split) {
        std::vector<std::string> lines;
        const auto receiveAvailableLines = [&] {
            try {
                for (;;) {
                    lines.push_back(connection.receive(std::chrono::steady_clock::now()));
                }
            } catch (const ConnectionError&) {
            }
        };
        host.send(text.substr(0, split));
        receiveAvailableLines();
        host.send(text.substr(split));
        receiveAvailableLines();
        EXPECT_EQ(lines, (std::vector<std::string>{"{\"a\":\"\xc3\xbc\"}\r", "next"})) << split;
    }
}

TEST_F(ClientConnection, ReceivesLinesUpToTheLimitInAnyPieces) {
    const ListeningSocket listener(path);
    Connection connection(at(path), waitTimeout);
    const Peer host = listener.accept();
    std::vector<std::string> lines{std::string(Connection::maximumLineSize - 1, 'a'), "b",
                                   std::string(Connection::maximumLineSize - 1, 'c'), std::string(70000, 'd')};
    std::thread sender([&] {
        for (const auto& line : lines) {
            host.sendLine(line);
        }
    });
    for (const auto& line : lines) {
        EXPECT_TRUE(connection.receive(connection.deadline()) == line) << line.front();
    }
    sender.join();
}

TEST_F(ClientConnection, FailsForALineOverTheLimit) {
    const ListeningSocket listener(path);
    std::optional<Connection> connection(std::in_place, at(path), waitTimeout);
    const Peer host = listener.accept();
    bool whole = true;
    // Read in many pieces, each of them below the limit.
    std::thread sender([&] { whole = host.send(std::string(8 * Connection::maximumLineSize, 'a')); });
    EXPECT_EQ(errorOf([&] { connection->receive(connection->deadline()); }),
              "the host at " + path + " sent a line longer than 1 MiB");
    connection.reset();
    sender.join();
    EXPECT_FALSE(whole) << "everything was received";
}

TEST_F(ClientConnection, FailsAtTheDeadline) {
    const ListeningSocket listener(path);
    Connection connection(at(path), 10ms);
    // The second one sleeps at once, the third one is over before it would sleep.
    for (const auto deadline : {connection.deadline(), connection.deadline(), Connection::Deadline()}) {
        EXPECT_EQ(errorOf([&] { connection.receive(deadline); }), "the host at " + path + " does not reply");
    }
}

TEST_F(ClientConnection, SleepsUntilALateReplyComes) {
    const ListeningSocket listener(path);
    Connection connection(at(path), waitTimeout);
    const Peer host = listener.accept();
    std::promise<std::string> receiver;
    auto lines = std::async(std::launch::async, [&] {
        receiver.set_value("/proc/self/task/" + std::to_string(::syscall(SYS_gettid)) + "/stat");
        return std::vector{connection.receive(connection.deadline()), connection.receive(connection.deadline())};
    });
    const std::string status = receiver.get_future().get();
    for (const std::string line : {"late", "later"}) {
        std::string state;
        for (std::string ignored; state != "S";) {
            std::this_thread::yield();
            ASSERT_TRUE(std::ifstream(status) >> ignored >> ignored >> state) << "it waited without sleep";
        }
        host.sendLine(line);
    }
    EXPECT_EQ(lines.get(), (std::vector<std::string>{"late", "later"}));
}

TEST_F(ClientConnection, ReceivesLinesSentBeforeTheHostClosedAfterAFailedSend) {
    const ListeningSocket listener(path);
    Connection connection(at(path), waitTimeout);
    Peer host = listener.accept();
    host.send("last line\n");
    host.close();
    connection.send({"x"});
    EXPECT_EQ(connection.receive(connection.deadline()), "last line");
    EXPECT_EQ(errorOf([&] { connection.receive(connection.deadline()); }),
              "the host at " + path + " closed the connection");
}

TEST_F(ClientConnection, ReportsThatTheHostClosed) {
    const ListeningSocket listener(path);
    Connection connection(at(path), waitTimeout);
    Peer host = listener.accept();
    host.send("whole\nhalf");
    host.close();
    EXPECT_EQ(connection.receive(connection.deadline()), "whole");
    const std::string closed = "the host at " + path + " closed the connection";
    EXPECT_EQ(errorOf([&] { connection.receive(connection.deadline()); }), closed);
    connection.send({"x"});
    EXPECT_EQ(errorOf([&] { connection.receive(connection.deadline()); }), closed);
}

TEST_F(ClientConnection, FailsToSendWhenTheHostDoesNotRead) {
    const ListeningSocket listener(path);
    Connection connection(at(path), 10ms);
    EXPECT_EQ(errorOf([&] { connection.send({std::string(4000000, 'a')}); }),
              "the host at " + path + " does not read requests");
}

TEST_F(ClientConnection, ContinuesToSendAfterASignal) {
    static std::atomic<int> interruptions{0};
    struct sigaction counting {};
    counting.sa_handler = [](int) { ++interruptions; };
    struct sigaction before {};
    ::sigaction(SIGUSR1, &counting, &before);
    const ListeningSocket listener(path);
    std::optional<Connection> connection(std::in_place, at(path), waitTimeout);
    Peer host = listener.accept();
    auto received = std::async(std::launch::async, [&host, sender = ::pthread_self()] {
        // After the first ones the socket is full and nothing is read, so a signal interrupts a send that waits.
        while (interruptions < 100) {
            ::pthread_kill(sender, SIGUSR1);
            std::this_thread::yield();
        }
        return host.receiveLine();
    });
    const std::string frame(1000000, 'a');
    EXPECT_EQ(errorOf([&] { connection->send({frame}); }), "nothing was thrown");
    connection.reset();
    EXPECT_TRUE(received.get() == frame);
    ::sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(ClientConnection, FailsToConnectWhenTheHostDoesNotAccept) {
    const ListeningSocket listener(path, 0);
    const Connection waiting(at(path), 10ms);
    EXPECT_EQ(errorOf([&] { const Connection connection(at(path), 10ms); }),
              "cannot reach the host at " + path + ": Resource temporarily unavailable (is settings-host running?)");
}

TEST_F(ClientConnection, ReportsWhyNoHostCanBeReached) {
    const auto reach = [&] { const Connection connection(at(path), waitTimeout); };
    EXPECT_EQ(errorOf(reach),
              "cannot reach the host at " + path + ": No such file or directory (is settings-host running?)");
    std::ofstream(path) << "a file";
    EXPECT_EQ(errorOf(reach), "cannot reach the host at " + path + ": Connection refused (is settings-host running?)");
}

TEST_F(ClientConnection, ReportsThatNoSocketCanBeCreated) {
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    const auto candidates = at(path);
    std::exception_ptr error;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    try {
        const Connection connection(candidates, waitTimeout);
    } catch (const ConnectionError&) {
        // Looked at later: to look, sanitizers need descriptors, too.
        error = std::current_exception();
    }
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(errorOf([&] { std::rethrow_exception(error); }),
              "cannot reach the host at " + path + ": Too many open files (is settings-host running?)");
}

TEST_F(ClientConnection, RejectsAPathThatASocketCannotHave) {
    const std::string longPath = "/" + std::string(sizeof(sockaddr_un::sun_path) - 1, 'a');
    EXPECT_EQ(errorOf<InvalidSocketPath>([&] { const Connection connection(at(longPath), waitTimeout); }),
              "the socket path is empty or too long: '" + longPath + "'");
    EXPECT_EQ(errorOf<InvalidSocketPath>([&] { const Connection connection(at(""), waitTimeout); }),
              "the socket path is empty or too long: ''");
    EXPECT_EQ(
        errorOf([&] { const Connection connection(at(longPath.substr(1)), waitTimeout); }),
        "cannot reach the host at " + longPath.substr(1) + ": No such file or directory (is settings-host running?)");
}

TEST_F(ClientConnection, ReadsWhatHasArrivedWithoutWaiting) {
    const ListeningSocket listener(path);
    Connection connection(at(path), waitTimeout);
    Peer host = listener.accept();
    connection.readAvailable();
    EXPECT_EQ(connection.takeLine(), std::nullopt);
    host.send("one\ntwo\nhalf");
    connection.readAvailable();
    EXPECT_EQ(connection.takeLine(), "one");
    EXPECT_EQ(connection.takeLine(), "two");
    EXPECT_EQ(connection.takeLine(), std::nullopt);
    host.close();
    EXPECT_EQ(errorOf([&] { connection.readAvailable(); }), "the host at " + path + " closed the connection");
}

TEST_F(ClientConnection, MayGiveUpAtOnceWhenTheHostDoesNotAccept) {
    const ListeningSocket listener(path, 0);
    const Connection waiting(at(path), waitTimeout);
    EXPECT_EQ(errorOf([&] { const Connection connection(at(path), 24h, Connection::WhenBusy::GIVE_UP); }),
              "cannot reach the host at " + path + ": Resource temporarily unavailable (is settings-host running?)");
}

namespace {

/// The sockets of two hosts; each test opens those that it needs.
class ClientHosts : public ClientConnection {
protected:
    std::vector<SocketCandidate> candidates(const std::string& distrust = "") const {
        return {{folder / "own", folder / "own-companion", distrust},
                {folder / "other", folder / "other-companion", ""}};
    }
    /// The socket that is used.
    std::string taken(const std::vector<SocketCandidate>& from) const {
        return Connection(from, waitTimeout).socketPath();
    }
    /// Why none is used.
    std::string refusal(const std::vector<SocketCandidate>& from) const {
        return errorOf([&] { taken(from); });
    }
    std::string own() const { return "cannot reach the host at " + (folder / "own") + ": "; }
    std::string other() const { return ", nor at " + (folder / "other") + ": "; }

    const std::string missing = "No such file or directory";
    const std::string hint = " (is settings-host running?)";
};

}  // namespace

TEST_F(ClientHosts, TheFirstRunningOneIsUsed) {
    EXPECT_EQ(refusal(candidates()), own() + missing + other() + missing + hint);
    const ListeningSocket second(folder / "other");
    EXPECT_EQ(taken(candidates()), folder / "other");
    const ListeningSocket first(folder / "own");
    EXPECT_EQ(taken(candidates()), folder / "own");
}

TEST_F(ClientHosts, ADeadOneIsSkipped) {
    { const ListeningSocket dead(folder / "own"); }
    { const ListeningSocket dead(folder / "own-companion"); }
    EXPECT_EQ(refusal(candidates()), own() + "Connection refused" + other() + missing + hint);
    const ListeningSocket second(folder / "other");
    EXPECT_EQ(taken(candidates()), folder / "other");
}

TEST_F(ClientHosts, BothSocketsBelongToTheSameHost) {
    const ListeningSocket companion(folder / "own-companion");
    const ListeningSocket second(folder / "other");
    EXPECT_EQ(refusal(candidates()), own() + missing + hint) << "the socket of the other host was used";
}

TEST_F(ClientHosts, OneThatDoesNotAcceptInTimeIsRunning) {
    const ListeningSocket first(folder / "own", 0);
    const Connection waiting(at(folder / "own"), waitTimeout);
    const ListeningSocket second(folder / "other");
    EXPECT_EQ(errorOf([&] { const Connection connection(candidates(), 10ms); }),
              own() + "Resource temporarily unavailable" + hint);
}

TEST_F(ClientHosts, AnUntrustedOneIsNotTried) {
    const ListeningSocket first(folder / "own");
    const ListeningSocket companion(folder / "own-companion");
    EXPECT_EQ(refusal(candidates("its folder belongs to another user")),
              own() + "its folder belongs to another user" + other() + missing + hint);
    const ListeningSocket second(folder / "other");
    EXPECT_EQ(taken(candidates("its folder belongs to another user")), folder / "other");
}
