#include <array>

#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "server/loop/UvHandle.h"
#include "server/sockets/Acceptor.h"
#include "server/sockets/SocketFile.h"
#include "support/LineClient.h"
#include "support/Sanitizers.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

namespace {

/// Would the loop be woken at once if it slept now?
bool hasSomethingToDo(uv_loop_t* loop) {
    pollfd events{uv_backend_fd(loop), POLLIN, 0};
    return uv_backend_timeout(loop) == 0 || ::poll(&events, 1, 0) == 1;
}

}  // namespace

TEST(Acceptor, PausesWhileThereIsNotEvenTheSpareDescriptor) {
    if (TestSupport::sanitizersNeedDescriptors) {
        GTEST_SKIP();
    }
    TestSupport::TemporaryDirectory folder;
    SocketFile file(folder / "run/listener.sock");
    EventLoop loop;
    Acceptor acceptor{Descriptor(file.takeDescriptor())};
    int taken = 0;
    acceptor.start(
        loop,
        [&](int descriptor) {
            ::close(descriptor);
            ++taken;
        },
        [](int) { ADD_FAILURE() << "no connection can be refused"; });
    TestSupport::LineClient waits(file.path());
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    uv_run(loop.handle(), UV_RUN_NOWAIT);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_FALSE(hasSomethingToDo(loop.handle())) << "the connection that cannot be taken keeps the loop awake";
    EXPECT_EQ(taken, 0);
    while (taken == 0) {
        uv_run(loop.handle(), UV_RUN_ONCE);
    }
    EXPECT_EQ(taken, 1);
    acceptor.close();
    file.remove();
}

}  // namespace SettingsHandlerKit
