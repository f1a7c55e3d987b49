#include "connection/WakeUp.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace SettingsClient {

WakeUp::WakeUp()
    : waiter(::epoll_create1(EPOLL_CLOEXEC)),
      timer(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC)),
      alarm(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (waiter < 0 || timer < 0 || alarm < 0) {
        const int error = errno;
        closeAll();
        throw std::system_error(error, std::generic_category(), "a client cannot be made");
    }
    watch(timer);
    watch(alarm);
}

WakeUp::~WakeUp() {
    closeAll();
}

void WakeUp::closeAll() const {
    ::close(waiter);
    ::close(timer);
    ::close(alarm);
}

void WakeUp::watch(int socket) const {
    epoll_event wanted{};
    wanted.events = EPOLLIN;
    ::epoll_ctl(waiter, EPOLL_CTL_ADD, socket, &wanted);
}

void WakeUp::setTime(const std::optional<Time>& time) {
    // A timer whose time has come costs an interrupt.
    const bool isDue = time && *time <= std::chrono::steady_clock::now();
    if (isDue != hasAlarm) {
        eventfd_t ignored = 0;
        isDue ? ::eventfd_write(alarm, 1) : ::eventfd_read(alarm, &ignored);
        hasAlarm = isDue;
    }
    const std::optional<Time> later = isDue ? std::nullopt : time;
    if (later != timerTime) {
        setTimer(later);
        timerTime = later;
    }
}

void WakeUp::setTimer(const std::optional<Time>& time) const {
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
