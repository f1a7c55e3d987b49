#include "connection/WakeUp.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <sys/epoll.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace SettingsClient {

WakeUp::WakeUp() : waiter(::epoll_create1(EPOLL_CLOEXEC)), timer(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC)) {
    if (waiter < 0 || timer < 0) {
        const int error = errno;
        ::close(waiter);
        ::close(timer);
        throw std::system_error(error, std::generic_category(), "a client cannot be made");
    }
    watch(timer);
}

WakeUp::~WakeUp() {
    ::close(waiter);
    ::close(timer);
}

void WakeUp::watch(int socket) const {
    epoll_event wanted{};
    wanted.events = EPOLLIN;
    ::epoll_ctl(waiter, EPOLL_CTL_ADD, socket, &wanted);
}

void WakeUp::setTime(std::optional<std::chrono::steady_clock::time_point> time) const {
    using namespace std::chrono;
    itimerspec wanted{};
    if (time) {
        // The clock is that of CLOCK_MONOTONIC; the time 0 would be none.
        const auto since = std::max<nanoseconds>(time->time_since_epoch(), nanoseconds(1));
        wanted.it_value.tv_sec = duration_cast<seconds>(since).count();
        wanted.it_value.tv_nsec = (since - duration_cast<seconds>(since)).count();
    }
    ::timerfd_settime(timer, TFD_TIMER_ABSTIME, &wanted, nullptr);
}

}  // namespace SettingsClient
