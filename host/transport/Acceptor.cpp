#include "transport/Acceptor.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "transport/UvHandle.h"

namespace SettingsHost {

namespace {

int openSpare() {
    return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
}

void closeOnce(int& descriptor) {
    if (descriptor >= 0) {
        ::close(std::exchange(descriptor, -1));
    }
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

/// Ends the time in which nobody looks at who waits.
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

Acceptor::Acceptor(int descriptor) : listening(descriptor), spare(openSpare()) {}

Acceptor::~Acceptor() {
    close();
}

void Acceptor::start(EventLoop& loop, Taker taker, Refuser refuser) {
    take = std::move(taker);
    refuse = std::move(refuser);
    pause = std::make_shared<Pause>(*this);
    pause->open(loop.handle(), pause);
    watch = std::make_shared<Watch>(*this);
    watch->open(loop.handle(), listening, watch);
}

void Acceptor::accept() {
    const int accepted = ::accept4(listening, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (accepted >= 0) {
        take(accepted);
    } else if (errno == EMFILE || errno == ENFILE) {
        turnAway();
    }
}

void Acceptor::turnAway() {
    closeOnce(spare);
    const int accepted = ::accept4(listening, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (accepted >= 0) {
        refuse(accepted);
        ::close(accepted);
    } else if (errno == EMFILE || errno == ENFILE) {
        rest();
    }
    spare = openSpare();
}

void Acceptor::rest() {
    uv_poll_stop(watch->get());
    pause->start();
}

void Acceptor::close() {
    if (watch) {
        watch->closeHandle();
        pause->closeHandle();
    }
    closeOnce(listening);
    closeOnce(spare);
}

}  // namespace SettingsHost
