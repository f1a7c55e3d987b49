#include "server/loop/EventLoop.h"

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

EventLoop::EventLoop() : loop(std::make_unique<uv_loop_t>()) {
    if (const int error = uv_loop_init(loop.get()); error != 0) {
        throw std::runtime_error(std::string("cannot make an event loop: ") + uv_strerror(error));
    }
}

EventLoop::~EventLoop() {
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

void EventLoop::drain(unsigned milliseconds, std::function<void()> giveUp) {
    uv_timer_t timer;
    uv_timer_init(loop.get(), &timer);
    timer.data = &giveUp;
    uv_timer_start(
        &timer, [](uv_timer_t* expired) { (*static_cast<std::function<void()>*>(expired->data))(); }, milliseconds, 0);
    uv_unref(reinterpret_cast<uv_handle_t*>(&timer));
    uv_run(loop.get(), UV_RUN_DEFAULT);
    giveUp();
    uv_close(reinterpret_cast<uv_handle_t*>(&timer), nullptr);
    end();
}

void EventLoop::end() {
    uv_run(loop.get(), UV_RUN_DEFAULT);
    for (const auto& action : std::exchange(endActions, {})) {
        action();
    }
    uv_run(loop.get(), UV_RUN_DEFAULT);
}

}  // namespace SettingsHandlerKit
