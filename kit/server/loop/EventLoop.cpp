#include "server/loop/EventLoop.h"

#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

#include <uv.h>

#include "server/loop/UvHandle.h"

namespace SettingsHandlerKit {

class EventLoop::SignalWatch {
public:
    SignalWatch(uv_loop_t* loop, int number, std::function<void()> onSignal) : action(std::move(onSignal)) {
        uv_signal_init(loop, &watch);
        watch.data = this;
        uv_signal_start(
            &watch, [](uv_signal_t* arrived, int) { static_cast<SignalWatch*>(arrived->data)->action(); }, number);
        // A signal handle alone does not keep the loop running.
        uv_unref(asHandle());
    }

    uv_handle_t* asHandle() { return reinterpret_cast<uv_handle_t*>(&watch); }

private:
    uv_signal_t watch{};
    std::function<void()> action;
};

class EventLoop::Posts : public UvHandle<uv_async_t, Posts> {
public:
    static int init(uv_loop_t* loop, uv_async_t* handle) {
        return uv_async_init(loop, handle, [](uv_async_t* arrived) { ownerOf(arrived).runAll(); });
    }

    void add(std::function<void()> action) {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            actions.push_back(std::move(action));
        }
        uv_async_send(get());
    }

private:
    void runAll() {
        std::vector<std::function<void()>> due;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            due.swap(actions);
        }
        for (const auto& action : due) {
            action();
        }
    }

    std::mutex mutex;
    std::vector<std::function<void()>> actions;
};

class EventLoop::DrainTimer : public UvHandle<uv_timer_t, DrainTimer> {
public:
    explicit DrainTimer(std::function<void()> whatToDo) : giveUp(std::move(whatToDo)) {}

    void start(unsigned milliseconds) {
        startTimer(
            get(), [](uv_timer_t* expired) { ownerOf(expired).giveUp(); }, std::chrono::milliseconds(milliseconds));
    }

    const std::function<void()> giveUp;
};

EventLoop::EventLoop() : loop(std::make_unique<uv_loop_t>()), posts(std::make_shared<Posts>()) {
    int error = uv_loop_init(loop.get());
    if (error == 0) {
        error = Posts::init(loop.get(), posts->get());
    }
    if (error != 0) {
        throw std::runtime_error(std::string("cannot create an event loop: ") + uv_strerror(error));
    }
    posts->opened(posts);
    uv_unref(posts->generic());
}

EventLoop::~EventLoop() {
    posts->closeHandle();
    for (const auto& watch : signalWatches) {
        uv_close(watch->asHandle(), nullptr);
    }
    end();
    uv_loop_close(loop.get());
}

void EventLoop::onSignals(const std::vector<int>& signals, std::function<void()> action) {
    for (const int number : signals) {
        signalWatches.push_back(std::make_unique<SignalWatch>(loop.get(), number, action));
    }
}

void EventLoop::run() {
    uv_run(loop.get(), UV_RUN_DEFAULT);
}

void EventLoop::stop() {
    uv_stop(loop.get());
}

void EventLoop::keepOpen(bool open) {
    (open ? uv_ref : uv_unref)(posts->generic());
}

namespace {

class Later : public UvHandle<uv_timer_t, Later> {
public:
    explicit Later(std::function<void()> whatToDo) : action(std::move(whatToDo)) {}

    void start() {
        uv_timer_start(
            get(),
            [](uv_timer_t* timer) {
                ownerOf(timer).closeHandle();
                ownerOf(timer).action();
            },
            0, 0);
    }

private:
    std::function<void()> action;
};

}  // namespace

void EventLoop::later(std::function<void()> action) {
    const auto task = std::make_shared<Later>(std::move(action));
    uv_timer_init(loop.get(), task->get());
    task->opened(task);
    task->start();
}

void EventLoop::post(std::function<void()> action) {
    posts->add(std::move(action));
}

bool EventLoop::turn() {
    return uv_run(loop.get(), UV_RUN_NOWAIT) != 0;
}

int EventLoop::fileDescriptor() const {
    return uv_backend_fd(loop.get());
}

std::optional<std::chrono::milliseconds> EventLoop::timeout() {
    // Timers count from the time of the last turn. What was opened since then is not watched yet: the timeout is 0.
    uv_update_time(loop.get());
    const int milliseconds = uv_backend_timeout(loop.get());
    return milliseconds < 0 ? std::nullopt : std::optional(std::chrono::milliseconds(milliseconds));
}

void EventLoop::drain(unsigned milliseconds, std::function<void()> giveUp) {
    beginDrain(milliseconds, std::move(giveUp));
    uv_run(loop.get(), UV_RUN_DEFAULT);
    endDrain();
}

void EventLoop::beginDrain(unsigned milliseconds, std::function<void()> giveUp) {
    drainTimer = std::make_shared<DrainTimer>(std::move(giveUp));
    uv_timer_init(loop.get(), drainTimer->get());
    drainTimer->opened(drainTimer);
    drainTimer->start(milliseconds);
}

void EventLoop::endDrain() {
    drainTimer->giveUp();
    drainTimer->closeHandle();
    drainTimer.reset();
    end();
}

void EventLoop::end() {
    // A `stop` outside of a run ends the next one at once.
    while (uv_run(loop.get(), UV_RUN_DEFAULT) != 0) {
    }
}

}  // namespace SettingsHandlerKit
