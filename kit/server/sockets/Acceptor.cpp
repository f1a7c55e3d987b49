#include "server/sockets/Acceptor.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/socket.h>

#include "server/loop/UvHandle.h"

namespace SettingsHandlerKit {

namespace {

Descriptor openSpare() {
    return Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
}

}  // namespace

/// Reports that connections wait.
class Acceptor::Watch : public UvHandle<uv_poll_t, Watch> {
public:
    explicit Watch(Acceptor& itsAcceptor) : acceptor(&itsAcceptor) {}

    void open(uv_loop_t* loop, int descriptor, const std::shared_ptr<Watch>& self) {
        uv_poll_init(loop, get(), descriptor);
        opened(self);
        start();
    }
    void start() {
        uv_poll_start(get(), UV_READABLE, [](uv_poll_t* poll, int, int) { ownerOf(poll).acceptor->accept(); });
    }

private:
    Acceptor* acceptor;
};

/// Ends a pause of accepting.
class Acceptor::Pause : public UvHandle<uv_timer_t, Pause> {
public:
    explicit Pause(Acceptor& itsAcceptor) : acceptor(&itsAcceptor) {}

    void open(uv_loop_t* loop, const std::shared_ptr<Pause>& self) {
        uv_timer_init(loop, get());
        opened(self);
    }
    void start() {
        uv_timer_start(
            get(), [](uv_timer_t* timer) { ownerOf(timer).acceptor->watch->start(); }, pauseMilliseconds, 0);
    }

private:
    Acceptor* acceptor;
};

Acceptor::Acceptor(Descriptor descriptor, std::chrono::microseconds turnLimit)
    : listening(std::move(descriptor)), longestTurn(turnLimit), spare(openSpare()) {}

Acceptor::~Acceptor() {
    close();
}

void Acceptor::start(EventLoop& loop, OnConnection connected, OnRefused refused) {
    onConnection = std::move(connected);
    onRefused = std::move(refused);
    pause = std::make_shared<Pause>(*this);
    pause->open(loop.handle(), pause);
    watch = std::make_shared<Watch>(*this);
    watch->open(loop.handle(), listening.get(), watch);
}

void Acceptor::accept() {
    const auto end = std::chrono::steady_clock::now() + longestTurn;
    int accepted = -1;
    do {
        accepted = ::accept4(listening.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (accepted >= 0) {
            onConnection(accepted);
        } else if (errno == EMFILE || errno == ENFILE) {
            refuseNext();
        }
    } while (accepted >= 0 && std::chrono::steady_clock::now() < end);
}

void Acceptor::refuseNext() {
    spare = Descriptor();
    if (const Descriptor accepted(::accept4(listening.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        accepted.get() >= 0) {
        onRefused(accepted.get());
    } else if (errno == EMFILE || errno == ENFILE) {
        pauseAccepting();
    }
    // Only after the refused connection is closed.
    spare = openSpare();
}

void Acceptor::pauseAccepting() {
    uv_poll_stop(watch->get());
    pause->start();
}

Descriptor Acceptor::duplicate() {
    spare = Descriptor();
    return Descriptor(::fcntl(listening.get(), F_DUPFD_CLOEXEC, 0));
}

void Acceptor::close() {
    if (watch) {
        watch->closeHandle();
        pause->closeHandle();
    }
    listening = Descriptor();
    spare = Descriptor();
}

}  // namespace SettingsHandlerKit
