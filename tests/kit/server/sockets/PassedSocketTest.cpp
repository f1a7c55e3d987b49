#include <csignal>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "SettingsHandlerKit/ListenerError.h"
#include "server/sockets/PassedSocket.h"
#include "server/sockets/SocketFile.h"
#include "server/sockets/TcpListener.h"
#include "support/LineClient.h"
#include "support/ListeningSocket.h"
#include "support/TemporaryDirectory.h"
#include "support/WebClient.h"

namespace SettingsHandlerKit {

using TestSupport::boundUnixSocket;
using TestSupport::listeningTcpSocket;
using TestSupport::listeningUnixSocket;

class PassedSocketTest : public ::testing::Test {
protected:
    template <typename Action>
    static std::string refusal(const Action& action) {
        try {
            action();
            return "(none)";
        } catch (const ListenerError& error) {
            return error.what();
        }
    }
    static std::string refusalOfUnix(int descriptor) {
        return refusal([descriptor] { checkPassedUnixSocket(descriptor); });
    }
    static std::string refusalOfLoopback(int descriptor) {
        return refusal([descriptor] { checkPassedLoopbackSocket(descriptor); });
    }

    TestSupport::TemporaryDirectory folder;
    std::string path = folder / "passed.sock";
};

TEST_F(PassedSocketTest, OfUnixSocketsOnlyListeningStreamsWithAPathAreAccepted) {
    const std::string noListener = "the passed socket is not a listening Unix stream socket";
    EXPECT_EQ(refusalOfUnix(boundUnixSocket(folder / "datagrams", SOCK_DGRAM).get()), noListener);
    EXPECT_EQ(refusalOfUnix(boundUnixSocket(folder / "deaf", SOCK_STREAM).get()), noListener);
    EXPECT_EQ(refusalOfUnix(listeningTcpSocket("127.0.0.1").get()), noListener);
    EXPECT_EQ(refusalOfUnix(STDIN_FILENO), noListener);
    EXPECT_EQ(refusalOfUnix(-1), noListener);
    const std::string abstractName = std::string(1, '\0') + "settings-host-test-" + std::to_string(::getpid());
    EXPECT_EQ(refusalOfUnix(listeningUnixSocket(abstractName).get()),
              "the passed socket is abstract: abstract sockets have no access control");
    const auto good = listeningUnixSocket(path);
    ::fcntl(good.get(), F_SETFD, 0);
    EXPECT_EQ(checkPassedUnixSocket(good.get()), path);
    EXPECT_NE(::fcntl(good.get(), F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(::fcntl(good.get(), F_GETFD), FD_CLOEXEC);
}

TEST_F(PassedSocketTest, OfTcpSocketsOnlyListenersAtLoopbackAddressesAreAccepted) {
    const std::string noListener = "the passed socket is not a listening TCP socket";
    EXPECT_EQ(refusalOfLoopback(listeningUnixSocket(path).get()), noListener);
    EXPECT_EQ(refusalOfLoopback(TestSupport::PlainSocket(::socket(AF_INET, SOCK_STREAM, 0)).get()), noListener);
    EXPECT_EQ(refusalOfLoopback(TestSupport::PlainSocket(::socket(AF_INET, SOCK_DGRAM, 0)).get()), noListener);
    const std::string tooOpen = "the passed socket does not listen at a loopback address";
    EXPECT_EQ(refusalOfLoopback(listeningTcpSocket("0.0.0.0").get()), tooOpen);
    EXPECT_EQ(refusalOfLoopback(listeningTcpSocket("::").get()), tooOpen);
    EXPECT_EQ(refusalOfLoopback(listeningTcpSocket("::ffff:127.0.0.1").get()), tooOpen);
    for (const auto* address : {"127.0.0.1", "127.1.2.3", "::1"}) {
        const auto good = listeningTcpSocket(address);
        EXPECT_EQ(refusalOfLoopback(good.get()), "(none)") << address;
        EXPECT_NE(::fcntl(good.get(), F_GETFL) & O_NONBLOCK, 0);
    }
}

TEST_F(PassedSocketTest, TheFileOfAPassedSocketStays) {
    {
        SocketFile file(Descriptor(::dup(listeningUnixSocket(path).get())));
        EXPECT_EQ(file.path(), path);
        EXPECT_NO_THROW(TestSupport::LineClient{path});
        file.remove();
        EXPECT_EQ(::access(path.c_str(), F_OK), 0);
    }
    EXPECT_EQ(::access(path.c_str(), F_OK), 0);
    EXPECT_THROW(TestSupport::LineClient{path}, std::runtime_error) << "the descriptor was not closed";
}

TEST_F(PassedSocketTest, AListenerKnowsTheAddressOfItsPassedSocket) {
    for (const std::string address : {"127.0.0.1", "::1"}) {
        const auto made = listeningTcpSocket(address);
        const TcpListener listener{Descriptor(::dup(made.get()))};
        EXPECT_EQ(listener.address(), address);
        EXPECT_EQ(listener.port(), made.port());
    }
    EXPECT_THROW(TcpListener{Descriptor(::dup(listeningTcpSocket("0.0.0.0").get()))}, ListenerError);
}

}  // namespace SettingsHandlerKit
