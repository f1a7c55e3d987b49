#include "server/loop/Deadline.h"

#include <utility>

#include "server/loop/UvHandle.h"

namespace SettingsHandlerKit {

class Deadline::Handle : public UvHandle<uv_timer_t, Handle> {
public:
    explicit Handle(std::function<void()> whatToDo) : action(std::move(whatToDo)) {}

    void start(std::chrono::milliseconds time) {
        startTimer(
            get(), [](uv_timer_t* timer) { ownerOf(timer).action(); }, time);
    }

private:
    std::function<void()> action;
};

Deadline::Deadline(EventLoop& loop, std::function<void()> action)
    : handle(std::make_shared<Handle>(std::move(action))) {
    uv_timer_init(loop.handle(), handle->get());
    handle->opened(handle);
}

Deadline::~Deadline() {
    handle->closeHandle();
}

void Deadline::set(std::chrono::milliseconds time) {
    handle->start(time);
}

}  // namespace SettingsHandlerKit
